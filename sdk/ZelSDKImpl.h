// The SDK object: a thin front of the camera manager.
#ifndef SDK_ZELSDKIMPL_H
#define SDK_ZELSDKIMPL_H

#include "include/ZelSDK.h"

namespace zel {

class ZelSDKImpl final : public ZelSDK {
  public:
    ZEL_IMPLEMENTATION_DESTRUCTOR(ZelSDKImpl)

    // The one SDK object of this process, made on the first call. Null when memory ran out.
    static ZelSDK* CreateZelSDK();
    // That object; null when there is none.
    static ZelSDK* CurrentZelSDK();
    // Closes and deletes `sdk`, whoever else holds it, and forgets the one SDK object. Null is allowed.
    static void DestroyZelSDK(ZelSDK* sdk);

    bool Open() override;
    bool Close() override;
    int GetNumberOfCameras() override;
    ZelCamera* GetCamera(int camera_number) override;
    const char* GetCameraInterfaceTypeStr(int camera_number) override;
    const char* GetCameraAddressStr(int camera_number, int address_select) override;
    const char* GetCameraName(int camera_number) override;
    const char* GetCameraSerialNumStr(int camera_number) override;

  private:
    [[maybe_unused]] unsigned m_Reserved = 0;
};

}  // namespace zel

#endif
