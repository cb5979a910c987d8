#include "sdk/ZelSDKImpl.h"

#include <atomic>
#include <new>

#include "sdk/Logger.h"
#include "sdk/ManagerUse.h"
#include "sdk/SdkSession.h"

namespace zel {

namespace {

std::atomic<ZelSDK*> s_ZelSDK{nullptr};

}  // namespace

ZelSDK* ZelSDKImpl::CreateZelSDK() {
    Logger& log = SdkLogger().Get();
    ZEL_LOG(log, kLogTrace, "ZelSDKImpl::CreateZelSDK", "Creating Kestrane SDK");
    if (!s_ZelSDK) s_ZelSDK = new (std::nothrow) ZelSDKImpl;
    if (!s_ZelSDK) ZEL_LOG(log, kLogError, "ZelSDKImpl::CreateZelSDK", "ZelSDKImpl::CreateZelSDK() failed");
    return s_ZelSDK;
}

ZelSDK* ZelSDKImpl::CurrentZelSDK() { return s_ZelSDK; }

void ZelSDKImpl::DestroyZelSDK(ZelSDK* sdk) {
    ZEL_LOG(SdkLogger().Get(), kLogTrace, "ZelSDKImpl::DestroyZelSDK", "Destroying Kestrane SDK");
    if (sdk) {
        sdk->Close();
        ZelDelete(sdk);
        s_ZelSDK = nullptr;
    }
    SdkLogger().Destroy();
}

bool ZelSDKImpl::Open() {
    Logger& log = SdkLogger().Get();
    ZEL_LOG(log, kLogTrace, "ZelSDKImpl::Open", "Calling ZelSDKImpl::Open");
    return Session().Open();
}

bool ZelSDKImpl::Close() {
    ZEL_LOG(SdkLogger().Get(), kLogTrace, "ZelSDKImpl::Close", "Calling ZelSDKImpl::Close");
    Session().Close();
    return true;
}

int ZelSDKImpl::GetNumberOfCameras() {
    ZEL_LOG(SdkLogger().Get(), kLogTrace, "ZelSDKImpl::GetNumberOfCameras", "Calling GetNumberOfCameras");
    const ManagerUse manager;
    return manager ? manager->GetNumberOfCameras(0, 0, 0) : 0;
}

ZelCamera* ZelSDKImpl::GetCamera(int camera_number) {
    Logger& log = SdkLogger().Get();
    ZEL_LOG(log, kLogTrace, "ZelSDKImpl::GetCamera", "ZelSDK::GetCamera() - camera_number:%d\n", camera_number);
    const ManagerUse manager;
    if (!manager) return nullptr;
    ZelCamera* camera = manager->GetCamera(camera_number);
    ZEL_LOG(log, kLogTrace, "ZelSDKImpl::GetCamera", "returning camera:%s", PointerText(camera).text);
    return camera;
}

const char* ZelSDKImpl::GetCameraInterfaceTypeStr(int camera_number) {
    const ManagerUse manager;
    return manager ? manager->GetCameraInterfaceTypeStr(camera_number) : nullptr;
}

const char* ZelSDKImpl::GetCameraAddressStr(int camera_number, int address_select) {
    const ManagerUse manager;
    return manager ? manager->GetCameraAddressStr(camera_number, address_select) : nullptr;
}

const char* ZelSDKImpl::GetCameraName(int camera_number) {
    const ManagerUse manager;
    return manager ? manager->GetCameraName(camera_number) : nullptr;
}

const char* ZelSDKImpl::GetCameraSerialNumStr(int camera_number) {
    const ManagerUse manager;
    return manager ? manager->GetCameraSerialNumStr(camera_number) : nullptr;
}

}  // namespace zel
