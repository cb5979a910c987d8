// Entry points and the SDK object: find cameras and get hold of them.
//
//     ZelSDK* sdk = zel_create_sdk();
//     sdk->Open();
//     for (int n = sdk->GetNumberOfCameras(), i = 0; i < n; ++i) { ZelCamera* camera = sdk->GetCamera(i); ... }
//     zel_destroy_sdk(sdk);
//
// Nothing here throws. Creation and destruction of the SDK object are expected from one thread; everything else may be
// called on any thread, also inside every callback of the library (ZelCallbacks.h).
#ifndef ZEL_SDK_H
#define ZEL_SDK_H

#include "ZelCallbacks.h"
#include "ZelPlatform.h"

class ZelCamera;
class ZelUtil;

class ZelSDK {
  public:
    // Creates the camera manager. A second call does nothing. While Close() is under way elsewhere this waits for its
    // end. Result: false when memory ran out, and inside a callback in which Close() was called.
    virtual bool Open();

    // Closes every camera, destroys the camera objects, unloads the interface libraries that can shut themselves down
    // and destroys the camera manager. True also when nothing was open.
    //
    // Calls that are under way end: exchanges with cameras within half a second, searches and callbacks when they
    // return. This waits for them, so a callback must not wait for a thread that is in here. From the moment it is
    // called every ZelCamera pointer is invalid for new calls. Inside a callback it returns at once; a thread of the
    // library does the rest when the callbacks have returned.
    virtual bool Close();

    // Looks for cameras anew. Result: how many were found, 0 to 8; 0 before Open(). A camera found again keeps its
    // object, running or not, also after it was unplugged. Takes the manager's lock (at most 5 s).
    //
    // A camera that was closed while it was unplugged and plugged in again has a new object, made when the camera came
    // back: take it with GetCamera(). The one from before answers false from then on; it stays valid until Close(). An
    // open camera keeps its object.
    virtual int GetNumberOfCameras();

    // The camera object with this number (0 to 7) or null. It belongs to the SDK: close it, never delete it.
    virtual ZelCamera* GetCamera(int camera_number);

    // Descriptions from the last camera search, or null when there is none (number outside 0 to 7, empty text). The
    // texts belong to the SDK and change with the next search.
    virtual const char* GetCameraInterfaceTypeStr(int camera_number);
    // address_select: 0, 1 and 2 are the camera's addresses, 3 asks a USB camera for its port type.
    virtual const char* GetCameraAddressStr(int camera_number, int address_select);
    virtual const char* GetCameraName(int camera_number);
    virtual const char* GetCameraSerialNumStr(int camera_number);

    // Reserved; they keep the places of the operations around them. Results 0, 0, 0, true, true.
    virtual long long Reserved1(int, int);
    virtual int Reserved2();
    virtual int Reserved3();
    virtual bool Reserved4();
    virtual bool Reserved5(int, int, int);

    // The process-wide utility object (image files). Never null, never deleted by the application.
    virtual ZelUtil* GetUtil();

    ZEL_INTERFACE_DESTRUCTOR(ZelSDK)
};

extern "C" {

// The SDK object, created on the first call; later calls return the same one. Null when memory ran out.
ZelSDK* ZEL_CALL zel_create_sdk();

// Closes and deletes the SDK object for everyone who holds it. Null is allowed.
void ZEL_CALL zel_destroy_sdk(ZelSDK* sdk);

// Sets the function that is told of cameras being plugged in and unplugged; null switches it off. Result: 1, or 0 when
// the SDK is not open (nothing is stored then). The callback is lost with ZelSDK::Close().
int ZEL_CALL zel_set_camera_connect_callback(ZelCameraConnectCallback callback, void* context);

// One line for this library and one for each interface library that answers, separated by line feeds. The text lives in
// one static buffer, which the next call writes again.
char* ZEL_CALL get_version_str();
}

#endif
