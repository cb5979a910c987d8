/// @file
/// Events of cameras that are plugged in and unplugged, and of open cameras.
#ifndef ZEL_LAYER_HOTPLUG_H
#define ZEL_LAYER_HOTPLUG_H

#include <array>
#include <functional>

#include "zel/CameraInfo.h"

namespace zel {

/// A camera was plugged in or unplugged.
struct HotPlugEvent {
    bool connected = false;  ///< false: unplugged
    CameraInfo camera;       ///< without addresses; after a connect Sdk::open(camera.number) opens it
};

/// Called on a thread of the plug-in, which goes on when it returns; the library holds no lock. Everything may be
/// called inside. An exception that leaves it is dropped.
using HotPlugHandler = std::function<void(const HotPlugEvent&)>;

/// What happened to an open camera.
struct CameraEvent {
    /// What happened.
    enum class Kind {
        link_lost,  ///< it was unplugged or switched off
        link_back,  ///< it is there again, stopped, with the settings that it wakes up with
        camera,     ///< an event of the camera itself
    };
    Kind kind = Kind::camera;     ///< what happened
    int code = 0;                 ///< of the camera's own event, 0 to 5
    int value = 0;                ///< sent with it
    std::array<int, 8> values{};  ///< sent with it
};

/// Called on a thread of the camera's transport; the library holds no lock. Everything may be called inside. An
/// exception that leaves it is dropped.
using CameraEventHandler = std::function<void(const CameraEvent&)>;

}  // namespace zel

#endif
