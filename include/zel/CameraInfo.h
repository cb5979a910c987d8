/// @file
/// How the search describes a camera, without opening it.
#ifndef ZEL_LAYER_CAMERAINFO_H
#define ZEL_LAYER_CAMERAINFO_H

#include <string>
#include <string_view>
#include <vector>

#include "zel/Error.h"
#include "zel/detail/NearestWords.h"
#include "zel/detail/Texts.h"

namespace zel {

/// One camera as the last search found it.
struct CameraInfo {
    int number = 0;                      ///< 0 to 7, what Sdk::open() takes
    std::string name;                    ///< the name kept in the camera, or its model
    std::string serial;                  ///< serial number; empty when the camera tells none
    std::string interface_type;          ///< kind of link: "Camera Link", "GigE", "USB 3.0", ...
    std::vector<std::string> addresses;  ///< where it hangs, at most three texts
};

namespace detail {
inline std::string known_cameras(const std::vector<CameraInfo>& cameras) {
    std::string text = "known cameras are ";
    for (std::size_t i = 0; i < cameras.size(); ++i) {
        text += (i ? ", " : "") + std::to_string(cameras[i].number);
        if (!cameras[i].serial.empty()) text += " (serial " + cameras[i].serial + ")";
    }
    return text;
}
}  // namespace detail

/// The number of the camera that `wanted` names: a camera number or a serial number. A camera number goes before an
/// equal serial number; serial numbers are compared without regard to case. Throws Error (no_camera), which names the
/// cameras there are, when there is no such camera or more than one.
inline int select_camera(const std::vector<CameraInfo>& cameras, std::string_view wanted) {
    if (cameras.empty()) {
        throw Error(ErrorKind::no_camera, "no camera found", "no interface library beside zel_sdk reports one",
                    "check cable, power and driver, then run 'zelcam list'");
    }
    for (const CameraInfo& camera : cameras) {
        if (wanted == std::to_string(camera.number)) return camera.number;
    }
    std::vector<std::string> serials;
    std::vector<int> matches;
    for (const CameraInfo& camera : cameras) {
        if (camera.serial.empty()) continue;
        if (detail::upper_case(camera.serial) == detail::upper_case(wanted)) matches.push_back(camera.number);
        serials.push_back(camera.serial);
    }
    if (matches.size() == 1) return matches.front();
    const std::string name = "'" + std::string(wanted) + "'";
    if (matches.size() > 1) {
        throw Error(ErrorKind::no_camera, "camera " + name, "more than one camera has this serial number",
                    "use its number; " + detail::known_cameras(cameras));
    }
    const std::vector<std::string> nearest = detail::nearest_words(wanted, serials, 1);
    throw Error(ErrorKind::no_camera, "no camera " + name, "it is neither a camera number nor a serial number",
                (nearest.empty() ? "" : "did you mean " + nearest.front() + "? ") + detail::known_cameras(cameras));
}

}  // namespace zel

#endif
