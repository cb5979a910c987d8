/// @file
/// The SDK: finding cameras and opening them.
#ifndef ZEL_LAYER_SDK_H
#define ZEL_LAYER_SDK_H

#include <memory>
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

/// The opened SDK. Several may exist, also in several libraries of a program; cameras and frames keep it open, too. It
/// ends with the last of them all, which destroys the SDK object for the whole program: a program that uses
/// zel_create_sdk() itself does so for as long as an Sdk lives, or counts itself as well (ZelUsers.h). May be made and
/// destroyed on any thread, also inside every handler of this layer, but not inside a callback that was set at
/// native(). Any thread may call its operations.
class Sdk {
  public:
    /// Opens the SDK. Throws Error when memory ran out.
    Sdk() : m_Use(std::make_unique<detail::SdkUse>()) {}

    /// Looks for cameras: as many as there are, 0 to 8. Running cameras are not disturbed.
    std::vector<CameraInfo> cameras() const { return m_Use->state()->search(); }
    /// The description of a camera as the last search has it.
    CameraInfo info(int number) const { return m_Use->state()->info(number); }

    /// Opens a camera by the number or the serial number that a user gave: "0", "300101". Looks for cameras first.
    /// Throws Error (no_camera), which names the cameras there are, and Error (refused) when this program has it open,
    /// in whichever of its libraries.
    /// Waits for a handler in which its Camera has just ended, except inside a handler.
    Camera open(std::string_view wanted, const OpenOptions& options = {}) {
        return open_found(select_camera(cameras(), wanted), options);
    }
    /// Opens a camera by number; without one the first.
    Camera open(int number = 0, const OpenOptions& options = {}) { return open(std::to_string(number), options); }
    /// Opens a camera by number without a search, for the number of a hot-plug event.
    Camera open_found(int number, const OpenOptions& options = {}) {
        return Camera(detail::CameraState::open(m_Use->state(), number, options.calibrated));
    }

    /// Calls a function when a camera is plugged in or unplugged; null switches it off. There is one for all Sdk
    /// objects of the whole program, the one set last, and it goes with its Sdk: when that is destroyed it does not run
    /// any more, unless it is destroyed inside a handler. Throws Error (refused) when the SDK does not take it.
    void on_hot_plug(HotPlugHandler handler) { m_Use->on_hot_plug(std::move(handler)); }

    /// One line for the SDK and one for each interface library. One call at a time.
    std::string version() const { return detail::text_or_empty(get_version_str()); }
    /// The SDK's object, for what this layer leaves out.
    ZelSDK* native() const { return m_Use->state()->native(); }

  private:
    std::unique_ptr<detail::SdkUse> m_Use;
};

}  // namespace zel

#endif
