// The exports of a camera interface library (a plug-in), bound by name. Texts are zero-terminated and stay the
// library's.
#ifndef LINK_CAMERAINTERFACELIBRARY_H
#define LINK_CAMERAINTERFACELIBRARY_H

#include "include/ZelPlatform.h"

class ICameraInterface;

// Hot-plug events of a library.
#define ICAMERA_INTERFACE_EVENT_ID_CONNECT 1
#define ICAMERA_INTERFACE_EVENT_ID_DISCONNECT 2

extern "C" {
typedef void(ZEL_CALL* ConnectionEventCallback)(int event_id, int cam_index, int context);

// Required.
typedef int(ZEL_CALL* GetNumCamerasFunction)();                                  // get_num_cameras
typedef ICameraInterface*(ZEL_CALL* CreateCameraInterfaceFunction)(int, char*);  // create_camera_interface
typedef void(ZEL_CALL* DestroyCameraInterfaceFunction)(ICameraInterface*);       // destroy_camera_interface
// Optional.
typedef const char*(ZEL_CALL* GetLibraryTextFunction)();            // get_camera_interface_type_str, get_version_str
typedef const char*(ZEL_CALL* GetCameraTextFunction)(int);          // get_camera_name, .._serial_num_str, .._port_type
typedef const char*(ZEL_CALL* GetCameraAddressFunction)(int, int);  // get_camera_address_str
typedef void(ZEL_CALL* LibUnloadFunction)();                        // lib_unload
typedef void(ZEL_CALL* SetConnectionEventCallbackFunction)(ConnectionEventCallback, int);
// set_camera_connection_event_callback
}

#endif
