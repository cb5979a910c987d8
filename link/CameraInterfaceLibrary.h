// The exports of a camera interface library (a plug-in), bound by name. Texts are zero-terminated and stay the
// library's.
//
// Life-times. A transport lives from create_camera_interface, which answers the same one for a camera until then, to
// destroy_camera_interface: whatever lib_unload and unplugging do in between. lib_unload shuts the library down when a
// search finds no camera in it, and when the SDK is closed. It ends the connection events, and must not wait for one
// that is under way. Every export works again when the library is asked again after it.
//
// Threads. The SDK calls the exports from one search at a time and from inside connection events, on any thread.
// Connection events come from a thread of the library's own, one after the other, while the library holds no lock: the
// application may search, open, close and destroy inside them. destroy_camera_interface and the last lib_unload come
// after all events have returned.
#ifndef LINK_CAMERAINTERFACELIBRARY_H
#define LINK_CAMERAINTERFACELIBRARY_H

#include "ZelPlatform.h"

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
