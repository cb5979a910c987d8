// A library that has the layer compiled into it, beside a program that has it as well.
#include <optional>

#include "zel/Zel.h"

namespace {
std::optional<zel::Sdk> s_Sdk;
std::optional<zel::Camera> s_Camera;
}  // namespace

ZEL_PLUGIN_EXPORT void ZEL_CALL other_open_sdk() { s_Sdk.emplace(); }
ZEL_PLUGIN_EXPORT void ZEL_CALL other_close_sdk() { s_Sdk.reset(); }
ZEL_PLUGIN_EXPORT void ZEL_CALL other_close_camera() { s_Camera.reset(); }

// Whether the camera could be opened; what refuses it must say so.
ZEL_PLUGIN_EXPORT bool ZEL_CALL other_open_camera(int number) {
    try {
        s_Camera.emplace(s_Sdk->open_found(number));
        return true;
    } catch (const zel::Error& error) {
        if (error.kind() != zel::ErrorKind::refused) throw;
        return false;
    }
}

// Takes a frame.
ZEL_PLUGIN_EXPORT bool ZEL_CALL other_snap() { return static_cast<bool>(s_Camera->snap()); }
