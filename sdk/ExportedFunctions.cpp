// The exported entry points with C names.
#include <cstdio>
#include <exception>

#include "include/ZelPlugins.h"
#include "include/ZelProgress.h"
#include "include/ZelSDK.h"
#include "include/ZelUsers.h"
#include "platform/DynamicLibrary.h"
#include "sdk/Logger.h"
#include "sdk/ManagerUse.h"
#include "sdk/PluginChoice.h"
#include "sdk/SdkUsers.h"
#include "sdk/VersionText.h"
#include "sdk/ZelSDKImpl.h"
#include "util/ProgressReporter.h"

namespace {

// While the library is loaded, before any call: a host that loads and frees it without one would run out of
// thread-local slots, too. The system allows this much under its loader lock.
[[maybe_unused]] const bool s_KeptLoaded = (zel::platform::KeepThisLibraryLoaded(), true);

}  // namespace

extern "C" {

ZelSDK* ZEL_CALL zel_create_sdk() { return zel::ZelSDKImpl::CreateZelSDK(); }

void ZEL_CALL zel_destroy_sdk(ZelSDK* sdk) { zel::ZelSDKImpl::DestroyZelSDK(sdk); }

int ZEL_CALL zel_set_camera_connect_callback(ZelCameraConnectCallback callback, void* context) {
    const zel::ManagerUse manager;
    if (!manager) return 0;
    ZEL_LOG(zel::SdkLogger().Get(), zel::kLogTrace, "zel_set_camera_connect_callback",
            "zel_sdk.dll - calling _zel_camera_manager->SetCameraConnectCallback()");
    manager->SetCameraConnectCallback(callback, context);
    return 1;
}

void ZEL_CALL zel_set_progress_callback(ZelProgressCallback callback, void* context) {
    zel::ProgressReporter::SetCallback(callback, context);
}

int ZEL_CALL zel_set_plugin_folder(const char* folder, char* answer, int size) {
    zel::PluginChoice::Answer given{ZEL_PLUGINS_NOT_LOADED, ""};
    try {
        given = zel::Plugins().Use(folder ? folder : "");
    } catch (const std::exception&) {
        // Memory ran out: there is no sentence to it.
    }
    if (answer && size > 0) std::snprintf(answer, static_cast<std::size_t>(size), "%s", given.text.c_str());
    return given.result;
}

ZelSDK* ZEL_CALL zel_retain_sdk() { return zel::RetainSdk(); }
void ZEL_CALL zel_release_sdk() { zel::ReleaseSdk(); }
int ZEL_CALL zel_claim_camera(const ZelCamera* camera) { return zel::ClaimCamera(camera) ? 1 : 0; }
void ZEL_CALL zel_release_camera(const ZelCamera* camera) { zel::ReleaseCamera(camera); }

char* ZEL_CALL get_version_str() { return zel::ComposeVersionText(); }
}
