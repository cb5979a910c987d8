// The libraries of this process that use the SDK together.
#ifndef SDK_SDKUSERS_H
#define SDK_SDKUSERS_H

class ZelCamera;
class ZelSDK;

namespace zel {

// Null: it can't be opened, and nobody was counted.
ZelSDK* RetainSdk();
// The last user destroys the SDK object.
void ReleaseSdk();

// False: somebody has it.
bool ClaimCamera(const ZelCamera* camera);
void ReleaseCamera(const ZelCamera* camera);

}  // namespace zel

#endif
