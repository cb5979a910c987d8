/// @file
/// Entry points and the SDK object: find cameras and get hold of them.
///
///     ZelSDK* sdk = zel_create_sdk();
///     sdk->Open();
///     for (int n = sdk->GetNumberOfCameras(), i = 0; i < n; ++i) { ZelCamera* camera = sdk->GetCamera(i); ... }
///     zel_destroy_sdk(sdk);
///
/// Nothing here throws. Creation and destruction of the SDK object are expected from one thread; everything else may be
/// called on any thread, also inside every callback of the library (ZelCallbacks.h).
#ifndef ZEL_SDK_H
#define ZEL_SDK_H

#include "ZelCallbacks.h"
#include "ZelPlatform.h"

class ZelCamera;
class ZelUtil;

/// The SDK object: it finds cameras and owns the camera objects. From zel_create_sdk().
class ZelSDK {
  public:
    /// Creates the camera manager. A second call does nothing. While Close() is under way elsewhere this waits for its
    /// end.
    /// @return false when memory ran out, and inside a callback in which Close() was called
    virtual bool Open();

    /// Closes every camera, destroys the camera objects, unloads the interface libraries that can shut themselves down
    /// and destroys the camera manager.
    ///
    /// Calls that are under way end: exchanges with cameras within half a second, searches and callbacks when they
    /// return. This waits for them, so a callback must not wait for a thread that is in here. From the moment it is
    /// called every ZelCamera pointer is invalid for new calls. Inside a callback it returns at once; a thread of the
    /// library does the rest when the callbacks have returned.
    /// @return true, also when nothing was open
    virtual bool Close();

    /// Looks for cameras anew. A camera found again keeps its object, running or not, also after it was unplugged.
    /// Takes the manager's lock (at most 5 s).
    ///
    /// A camera that was closed while it was unplugged and plugged in again has a new object, made when the camera came
    /// back: take it with GetCamera(). The one from before answers false from then on; it stays valid until Close(). An
    /// open camera keeps its object.
    /// @return how many were found, 0 to 8; 0 before Open()
    virtual int GetNumberOfCameras();

    /// A camera object. It belongs to the SDK: close it, never delete it.
    /// @param camera_number 0 to 7, as the last search counted them
    /// @return the object, or null when there is none
    virtual ZelCamera* GetCamera(int camera_number);

    /// Kind of link of a camera, from the last search. This text and the next ones belong to the SDK and change with
    /// the next search.
    /// @param camera_number 0 to 7
    /// @return the text, or null when there is none (number outside 0 to 7, empty text)
    virtual const char* GetCameraInterfaceTypeStr(int camera_number);
    /// Where a camera is attached, from the last search.
    /// @param camera_number  0 to 7
    /// @param address_select 0, 1 and 2 are the camera's addresses, 3 asks a USB camera for its port type
    /// @return the text, or null when there is none
    virtual const char* GetCameraAddressStr(int camera_number, int address_select);
    /// A camera's name, from the last search.
    /// @param camera_number 0 to 7
    /// @return the text, or null when there is none
    virtual const char* GetCameraName(int camera_number);
    /// A camera's serial number, from the last search.
    /// @param camera_number 0 to 7
    /// @return the text, or null when there is none
    virtual const char* GetCameraSerialNumStr(int camera_number);

    /// Reserved, as the next ones; they keep the places of the operations around them.
    /// @return 0
    virtual long long Reserved1(int, int);
    /// Reserved.
    /// @return 0
    virtual int Reserved2();
    /// Reserved.
    /// @return 0
    virtual int Reserved3();
    /// Reserved.
    /// @return true
    virtual bool Reserved4();
    /// Reserved.
    /// @return true
    virtual bool Reserved5(int, int, int);

    /// The process-wide utility object (image files).
    /// @return never null; never deleted by the application
    virtual ZelUtil* GetUtil();

    ZEL_INTERFACE_DESTRUCTOR(ZelSDK)
};

extern "C" {

/// The SDK object, created on the first call; later calls return the same one.
/// @return null when memory ran out
ZelSDK* ZEL_CALL zel_create_sdk();

/// Closes and deletes the SDK object for everyone who holds it.
/// @param sdk the object; null is allowed
void ZEL_CALL zel_destroy_sdk(ZelSDK* sdk);

/// Sets the function that is told of cameras being plugged in and unplugged. It is lost with ZelSDK::Close().
/// @param callback the function; null switches it off
/// @param context  handed to it with each call
/// @return 1, or 0 when the SDK is not open (nothing is stored then)
int ZEL_CALL zel_set_camera_connect_callback(ZelCameraConnectCallback callback, void* context);

/// One line for this library and one for each interface library that answers, separated by line feeds.
/// @return a text in one static buffer, which the next call writes again
char* ZEL_CALL get_version_str();
}

#endif
