// The SDK: finding cameras, what is told of them, and the log.
#include "ZelProgress.h"
#include "bindings/c/Call.h"
#include "bindings/c/CameraInfo.h"
#include "platform/DynamicLibrary.h"
#include "platform/UserTexts.h"
#include "zel/Plugins.h"

using zel::c::Call;
using zel::c::Failure;
using zel::c::Guard;

zel_status zel_use_plugins(const char* folder) {
    return Guard(__func__, [&](Call&) {
        zel::c::RequirePointer(folder, "folder");
        zel::use_plugins(zel::platform::Utf8FromSystem(folder));
    });
}

zel_status zel_sdk_open(zel_sdk** sdk) {
    return Guard(__func__, [&](Call&) {
        zel::c::RequirePointer(sdk, "sdk");
        *sdk = nullptr;
        // As the SDK's library: a host may load and free it any number of times.
        zel::platform::KeepThisLibraryLoaded();
        *sdk = zel::c::Sdks::Add(std::make_shared<zel::c::SdkObject>());
    });
}

zel_status zel_sdk_close(zel_sdk* sdk) {
    return Guard(__func__, [&](Call& call) {
        if (sdk) call.TakeSdk(sdk).End();
    });
}

zel_status zel_sdk_find_cameras(zel_sdk* sdk, int32_t* count) {
    return Guard(__func__, [&](Call& call) {
        const auto& object = call.FindSdk(sdk);
        zel::c::RequirePointer(count, "count");
        *count = static_cast<int32_t>(object->sdk().cameras().size());
    });
}

zel_status zel_sdk_get_camera_info(zel_sdk* sdk, int32_t number, zel_camera_info* info) {
    return Guard(__func__, [&](Call& call) {
        const auto& object = call.FindSdk(sdk);
        zel::c::RequireStruct(info, "info");
        const zel::CameraInfo found = object->sdk().info(number);
        if (found.name.empty() && found.interface_type.empty()) {
            throw Failure(ZEL_STATUS_NO_CAMERA, "no camera " + std::to_string(number), "the last search found none",
                          "look for cameras with zel_sdk_find_cameras()");
        }
        zel::c::FillStruct(info, zel::c::ToStruct(found));
    });
}

zel_status zel_sdk_on_hot_plug(zel_sdk* sdk, zel_hot_plug_callback callback, void* user) {
    return Guard(__func__, [&](Call& call) { call.FindSdk(sdk)->SetHotPlugCallback(callback, user); });
}

zel_status zel_sdk_wait_hot_plug(zel_sdk* sdk, int32_t timeout_ms, zel_hot_plug_event* event) {
    return Guard(__func__,
                 [&](Call& call) { zel::c::AnswerEvent(call.FindSdk(sdk)->HotPlugEvents(), timeout_ms, event); });
}

zel_status zel_sdk_on_message(zel_sdk* sdk, zel_message_callback callback, void* user) {
    return Guard(__func__, [&](Call& call) { call.FindSdk(sdk)->SetMessageCallback(callback, user); });
}

zel_status zel_sdk_on_progress(zel_sdk* sdk, zel_progress_callback callback, void* user) {
    return Guard(__func__, [&](Call& call) {
        call.FindSdk(sdk);
        zel_set_progress_callback(callback, user);
    });
}

zel_status zel_sdk_write_log(zel_sdk* sdk, int32_t level, const char* where, const char* text, int32_t* written) {
    return Guard(__func__, [&](Call& call) {
        zel::Logger& log = call.FindSdk(sdk)->application_log();
        zel::c::RequirePointer(text, "text");
        const int known = zel::c::TakeEnum(level, ZEL_LOG_LEVEL_TRACE, "level");
        const bool taken = log.Enabled() && log.Log(known, "", 0, where ? where : "", "%s", text);
        if (written) *written = taken;
    });
}
