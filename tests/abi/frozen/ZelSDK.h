#ifndef ZEL_SDK_H
#define ZEL_SDK_H

#include "ZelCallbacks.h"
#include "ZelPlatform.h"

class ZelCamera;
class ZelUtil;

class ZelSDK {
  public:
    virtual bool Open();

    virtual bool Close();

    virtual int GetNumberOfCameras();

    virtual ZelCamera* GetCamera(int camera_number);

    virtual const char* GetCameraInterfaceTypeStr(int camera_number);
    virtual const char* GetCameraAddressStr(int camera_number, int address_select);
    virtual const char* GetCameraName(int camera_number);
    virtual const char* GetCameraSerialNumStr(int camera_number);

    virtual long long Reserved1(int, int);
    virtual int Reserved2();
    virtual int Reserved3();
    virtual bool Reserved4();
    virtual bool Reserved5(int, int, int);

    virtual ZelUtil* GetUtil();

    ZEL_INTERFACE_DESTRUCTOR(ZelSDK)
};

extern "C" {

ZelSDK* ZEL_CALL zel_create_sdk();

void ZEL_CALL zel_destroy_sdk(ZelSDK* sdk);

int ZEL_CALL zel_set_camera_connect_callback(ZelCameraConnectCallback callback, void* context);

char* ZEL_CALL get_version_str();
}

#endif
