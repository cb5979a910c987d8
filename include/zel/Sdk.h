/// The SDK: finding cameras and opening them.
#ifndef ZEL_LAYER_SDK_H
#define ZEL_LAYER_SDK_H

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ZelSDK.h"
#include "zel/Camera.h"
#include "zel/CameraInfo.h"
#include "zel/HotPlug.h"
#include "zel/detail/SdkState.h"

namespace zel {

/// How a camera is opened.
struct OpenOptions {
    /// With the tables that even out its taps: from files of this computer, or from the camera, which takes a while.
    /// Without tables it opens all the same, and Camera::set_calibration(true) answers false.
    bool calibrated = false;
};

/// The opened SDK. Several may exist; cameras and frames keep it open, too. It ends with the last of them, which
/// destroys the SDK object for the whole program: a program that uses zel_create_sdk() itself does so for as long as an
/// Sdk lives. Not to be created inside a callback while the last one is just ending.
class Sdk {
  public:
    /// Opens the SDK. Throws Error when memory ran out.
    Sdk() : m_State(detail::SdkState::shared()) {}

    /// Looks for cameras: as many as there are, 0 to 8. Running cameras are not disturbed.
    std::vector<CameraInfo> cameras() const {
        std::vector<CameraInfo> found;
        const int count = native()->GetNumberOfCameras();
        for (int number = 0; number < count; ++number) found.push_back(m_State->describe(number));
        return found;
    }
    /// The description of a camera as the last search has it.
    CameraInfo info(int number) const { return m_State->describe(number); }

    /// Opens a camera by the number or the serial number that a user gave: "0", "300101". Looks for cameras first.
    /// Throws Error (no_camera), which names the cameras there are, and Error (refused) when this program has it open.
    Camera open(std::string_view wanted, const OpenOptions& options = {}) {
        return open_found(select_camera(cameras(), wanted), options);
    }
    /// Opens a camera by number; without one the first.
    Camera open(int number = 0, const OpenOptions& options = {}) { return open(std::to_string(number), options); }
    /// Opens a camera by number without a search, for the number of a hot-plug event.
    Camera open_found(int number, const OpenOptions& options = {}) {
        return Camera(detail::CameraState::open(m_State, number, options.calibrated));
    }

    /// Calls a function when a camera is plugged in or unplugged; null switches it off. One for all Sdk objects.
    void on_hot_plug(HotPlugHandler handler) { m_State->on_hot_plug(std::move(handler)); }

    /// One line for the SDK and one for each interface library. One call at a time.
    std::string version() const { return detail::text_or_empty(get_version_str()); }
    ZelSDK* native() const { return m_State->native(); }

  private:
    std::shared_ptr<detail::SdkState> m_State;
};

}  // namespace zel

#endif
