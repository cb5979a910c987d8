#include "sdk/SdkUsers.h"

#include <algorithm>
#include <exception>
#include <vector>

#include "platform/Mutex.h"
#include "sdk/ZelSDKImpl.h"

namespace zel {

namespace {

// Held while the object is destroyed: who comes meanwhile waits for that.
platform::Mutex s_UsersLock;
int s_Users ZEL_GUARDED_BY(s_UsersLock) = 0;

// Held for moments, also inside callbacks.
platform::Mutex s_ClaimsLock;
// Null while nobody has a camera. Without a destructor: a program may end before its cameras.
std::vector<const ZelCamera*>* s_Claims ZEL_GUARDED_BY(s_ClaimsLock) = nullptr;

}  // namespace

// The lock is not held while the SDK opens: that may wait for a callback which asks for the SDK as well.
ZelSDK* RetainSdk() {
    ZelSDK* sdk = nullptr;
    bool made = false;
    {
        const platform::ScopedLock lock(s_UsersLock);
        made = !ZelSDKImpl::CurrentZelSDK();
        sdk = ZelSDKImpl::CreateZelSDK();
        if (!sdk) return nullptr;
        ++s_Users;
    }
    if (sdk->Open()) return sdk;
    const platform::ScopedLock lock(s_UsersLock);
    if (--s_Users == 0 && made) ZelSDKImpl::DestroyZelSDK(ZelSDKImpl::CurrentZelSDK());
    return nullptr;
}

void ReleaseSdk() {
    const platform::ScopedLock lock(s_UsersLock);
    if (s_Users == 0 || --s_Users > 0) return;
    if (ZelSDK* const sdk = ZelSDKImpl::CurrentZelSDK()) ZelSDKImpl::DestroyZelSDK(sdk);
}

bool ClaimCamera(const ZelCamera* camera) {
    const platform::ScopedLock lock(s_ClaimsLock);
    try {
        if (!s_Claims) s_Claims = new std::vector<const ZelCamera*>;
        if (std::ranges::count(*s_Claims, camera) > 0) return false;
        s_Claims->push_back(camera);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

void ReleaseCamera(const ZelCamera* camera) {
    const platform::ScopedLock lock(s_ClaimsLock);
    if (!s_Claims) return;
    std::erase(*s_Claims, camera);
    if (!s_Claims->empty()) return;
    delete s_Claims;
    s_Claims = nullptr;
}

}  // namespace zel
