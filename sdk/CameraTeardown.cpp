#include "sdk/CameraTeardown.h"

#include <algorithm>

#include "camera/ZelCameraFactory.h"
#include "include/ZelCamera.h"
#include "sdk/CameraTables.h"
#include "sdk/Logger.h"

namespace zel {

namespace {

void Delete(ZelCamera* camera) {
    {
        CameraTables& tables = Tables();
        const platform::ScopedLock guard(tables.lock);
        tables.cameras.Forget(camera);
    }
    ZEL_LOG(CameraControlLogger().Get(), kLogTrace, "ZelSDKImpl::Close", "Destroying a ZelCameraControl object!");
    zel_camera_control_destroy(camera);
    CameraControlLogger().Destroy();
}

}  // namespace

void DestroyCameras() {
    const std::vector<RegisteredCamera>& cameras = Tables().TakeCameras();
    for (auto entry = cameras.begin(); entry != cameras.end(); ++entry) {
        const auto shares = [&](const RegisteredCamera& other) {
            return other.camera_interface == entry->camera_interface;
        };
        if (std::any_of(cameras.begin(), entry, shares)) continue;  // destroyed together with an earlier one

        const bool gone = std::any_of(entry, cameras.end(), [&](const RegisteredCamera& other) {
            return shares(other) && other.camera && zel_camera_control_suspended(other.camera);
        });
        for (auto other = entry; other != cameras.end(); ++other) {
            if (!shares(*other) || !other->camera) continue;
            if (gone) zel_camera_control_forget_transport(other->camera);
            other->camera->Close();
        }
        if (gone) entry->destroy_camera_interface(entry->camera_interface);
        for (auto other = entry; other != cameras.end(); ++other) {
            if (shares(*other) && other->camera) Delete(other->camera);
        }
        if (!gone) entry->destroy_camera_interface(entry->camera_interface);
    }
}

}  // namespace zel
