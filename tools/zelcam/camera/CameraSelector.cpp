#include "tools/zelcam/camera/CameraSelector.h"

#include <algorithm>

#include "tools/zelcam/text/EditDistance.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

std::string KnownCameras(const std::vector<CameraEntry>& cameras) {
    std::string text = "known cameras are ";
    for (std::size_t i = 0; i < cameras.size(); ++i) {
        text += (i ? ", " : "") + std::to_string(cameras[i].number);
        if (!cameras[i].serial.empty()) text += " (serial " + cameras[i].serial + ")";
    }
    return text;
}

}  // namespace

int SelectCamera(const std::vector<CameraEntry>& cameras, const std::string& wanted) {
    if (cameras.empty()) {
        throw Failure("no camera found", "no interface library beside zel_sdk reports one",
                      "check cable, power and driver, then run 'zelcam list'", kNoCamera);
    }
    for (const CameraEntry& camera : cameras) {
        if (wanted == std::to_string(camera.number)) return camera.number;
    }
    std::vector<std::string> serials;
    std::vector<int> matches;
    for (const CameraEntry& camera : cameras) {
        if (camera.serial.empty()) continue;
        if (UpperCase(camera.serial) == UpperCase(wanted)) matches.push_back(camera.number);
        serials.push_back(camera.serial);
    }
    if (matches.size() == 1) return matches.front();
    if (matches.size() > 1) {
        throw Failure("camera '" + wanted + "'", "more than one camera has this serial number",
                      "use its number; " + KnownCameras(cameras), kNoCamera);
    }
    const std::vector<std::string> near = NearestWords(wanted, serials, 1);
    throw Failure("no camera '" + wanted + "'", "it is neither a camera number nor a serial number",
                  (near.empty() ? "" : "did you mean " + near.front() + "? ") + KnownCameras(cameras), kNoCamera);
}

}  // namespace zelcam
