/// @file
/// The exports of a camera interface library (a plug-in), bound by name. Texts are zero-terminated and stay the
/// library's.
///
/// Life-times. A transport lives from create_camera_interface, which answers the same one for a camera until then, to
/// destroy_camera_interface: whatever lib_unload and unplugging do in between. lib_unload shuts the library down when a
/// search finds no camera in it, and when the SDK is closed. It ends the connection events, and must not wait for one
/// that is under way. Every export works again when the library is asked again after it.
///
/// Threads. The SDK calls the exports from one search at a time and from inside connection events, on any thread.
/// Connection events come from a thread of the library's own, one after the other, while the library holds no lock: the
/// application may search, open, close and destroy inside them. destroy_camera_interface and the last lib_unload come
/// after all events have returned.
#ifndef LINK_CAMERAINTERFACELIBRARY_H
#define LINK_CAMERAINTERFACELIBRARY_H

#include "ZelPlatform.h"

class ICameraInterface;

/// @name Hot-plug events of a library
/// @{
#define ICAMERA_INTERFACE_EVENT_ID_CONNECT 1     ///< a camera was plugged in
#define ICAMERA_INTERFACE_EVENT_ID_DISCONNECT 2  ///< a camera was unplugged
/// @}

extern "C" {
/// What a library calls for each hot-plug event, on a thread of its own, with none of its locks held.
/// @param event_id  ICAMERA_INTERFACE_EVENT_ID_...
/// @param cam_index the camera's number within the library, from 0
/// @param context   the number given at registration
typedef void(ZEL_CALL* ConnectionEventCallback)(int event_id, int cam_index, int context);

// Required.

/// `get_num_cameras`: looks for cameras.
/// @return how many there are; numbers run from 0. Negative: the search failed
typedef int(ZEL_CALL* GetNumCamerasFunction)();
/// `create_camera_interface`: the transport of a camera. The first argument is the camera's number within the library,
/// the second a text buffer with the camera's name, which may be left alone.
/// @return the transport, the same one until it is destroyed; null when the camera can't be had
typedef ICameraInterface*(ZEL_CALL* CreateCameraInterfaceFunction)(int, char*);
/// `destroy_camera_interface`: ends the transport given.
typedef void(ZEL_CALL* DestroyCameraInterfaceFunction)(ICameraInterface*);

// Optional.

/// `get_camera_interface_type_str` (the kind of link) and `get_version_str` (the library's version).
/// @return the text
typedef const char*(ZEL_CALL* GetLibraryTextFunction)();
/// `get_camera_name`, `get_camera_serial_num_str` and `get_camera_port_type` of the camera with this number.
/// @return the text
typedef const char*(ZEL_CALL* GetCameraTextFunction)(int);
/// `get_camera_address_str` of the camera with this number: its address 0, 1 or 2, the second argument.
/// @return the text
typedef const char*(ZEL_CALL* GetCameraAddressFunction)(int, int);
/// `lib_unload`: shuts the library down.
typedef void(ZEL_CALL* LibUnloadFunction)();
/// `set_camera_connection_event_callback`: the function to tell of hot-plug events, null for none, and the number it
/// gets as its context.
typedef void(ZEL_CALL* SetConnectionEventCallbackFunction)(ConnectionEventCallback, int);
}

#endif
