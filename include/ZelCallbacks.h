/// @file
/// Types of the functions that the library calls back. Unless it says otherwise below, they are called on a thread of
/// the camera's transport, never on the application's. The library holds no lock meanwhile.
///
/// Inside a callback every operation may be called, on its camera, on others and on the SDK. Stop() and Close() of the
/// camera take effect at once: the callback is the last one, and the frame in it stays readable until it returns; when
/// another thread is in Open(), Start(), Stop() or Close() of that camera, that operation does it. Open() and Start()
/// are false then. ZelSDK::Close() and zel_destroy_sdk() are finished after the callback has returned (ZelSDK.h). A
/// callback must not wait for a thread that is in Stop() or Close(), and callbacks of two cameras must not stop or
/// close each other's camera. A callback that is replaced or switched off may still be running on another thread.
///
/// Every callback gets the `context` back that it was set with; the library never looks at it.
#ifndef ZEL_CALLBACKS_H
#define ZEL_CALLBACKS_H

#include "ZelPlatform.h"

class ZelImage;
class ZelColorImage;

/// @name Hot-plug events
/// `event_id` of the camera-connect callback.
/// @{
#define ZEL_CAMERA_CONNECT 1     ///< A camera was plugged in.
#define ZEL_CAMERA_DISCONNECT 2  ///< A camera was unplugged.
/// @}

/// @name Camera events
/// Event codes of the camera control callbacks; 0 to 5 are passed on from the camera unchanged.
/// @{
#define ZEL_CAMERA_CONTROL_DISCONNECT 6  ///< The link to an open camera was lost.
#define ZEL_CAMERA_CONTROL_RECONNECT 7   ///< The link to an open camera is back.
/// @}

/// @name Image notifications
/// `kind` of the image notification callback.
/// @{
#define ZEL_IMAGE_NOTIFICATION_PENDING 0  ///< A frame is pending.
#define ZEL_IMAGE_NOTIFICATION_EVENT 1    ///< The transport reported an image event.
/// @}

/// A camera was plugged in or unplugged; called on a thread of the plug-in. Searching, opening and closing cameras,
/// closing and destroying the SDK and setting another callback are all right inside. The texts stay valid until the
/// camera list is built again. Set with zel_set_camera_connect_callback().
/// @param event_id       ZEL_CAMERA_CONNECT or ZEL_CAMERA_DISCONNECT
/// @param camera_index   the number that ZelSDK::GetCamera() takes
/// @param name           the camera's name
/// @param serial_number  its serial number
/// @param interface_type the kind of link as a text
/// @param context        what the callback was set with
typedef void(ZEL_CALL* ZelCameraConnectCallback)(int event_id, int camera_index, const char* name,
                                                 const char* serial_number, const char* interface_type, void* context);

/// A camera event. Set with ZelCamera::SetCameraControlCallback().
/// @param event_code 0 to 5 from the camera, ZEL_CAMERA_CONTROL_DISCONNECT or ZEL_CAMERA_CONTROL_RECONNECT
/// @param context    what the callback was set with
typedef void(ZEL_CALL* ZelCameraControlCallback)(int event_code, void* context);

/// What the extended camera control callback is handed beside the event code: nine 32-bit values, valid for the call.
struct ZelCameraControlRecord {
    int value;      ///< The event's value.
    int values[8];  ///< Eight more, whose meaning is the camera's.
};
/// A camera event with its values. Only the camera's own events come this way, and behind the plain callback of the
/// same event. Set with ZelCamera::SetCameraControlCallbackEx().
/// @param event_code 0 to 5
/// @param record     the event's values, valid for the call
/// @param context    what the callback was set with; shared with ZelCameraControlCallback
typedef void(ZEL_CALL* ZelCameraControlCallbackEx)(int event_code, const ZelCameraControlRecord* record, void* context);

/// A frame is pending, or an image event came. The frame is fetched with ZelCamera::GetPendingImage(), inside or later.
/// Set with ZelCamera::SetImageNotificationCallback().
/// @param kind    ZEL_IMAGE_NOTIFICATION_PENDING or ZEL_IMAGE_NOTIFICATION_EVENT
/// @param context what the callback was set with
typedef void(ZEL_CALL* ZelImageNotificationCallback)(int kind, void* context);

/// A finished, post-processed frame. The record is in the pool's pending list while the callback runs: FreeImage()
/// answers false until the application has taken the record with GetPendingImage() or GetLastPendingImage(). It stays
/// readable until the callback returns, also after Close() inside it. Set with ZelCamera::SetImageCallback().
/// @param image   the frame; of a color camera with its color picture
/// @param context what the callback was set with
typedef void(ZEL_CALL* ZelImageCallback)(ZelImage* image, void* context);

/// The camera's reply to ZelCamera::SetTextCommand(). Called inside that operation, on the application's thread. Set
/// with ZelCamera::SetTextCommandCallback().
/// @param reply   the text, zero-terminated, valid for the call
/// @param context what the callback was set with
typedef void(ZEL_CALL* ZelTextCommandCallback)(const char* reply, void* context);

/// Called for each color frame between demosaicing and the color transform, on the thread that processes the frame: the
/// transport's when an image callback is set, else the application's inside GetPendingColorImage() or
/// GetLastPendingColorImage(). Set with ZelCameraInternal::SetScratchpadCallback().
///
/// `pixels` holds the mosaic, which may be changed; `color_pixels` the picture that the scratchpad's own transform and
/// tables make of it, which the main pipeline's picture replaces afterwards. Geometry and pointers of the record are
/// not to be changed.
///
/// The camera object may be used inside: color settings, which hold for this very frame; other frames; Stop(), after
/// which no image callback follows; Close() or a start with another pool, after which the frame is not handed over: the
/// operation that was to do it answers null. The record stays readable until the callback returns, whoever closes the
/// camera meanwhile, and must not be freed inside. A thread that wants this frame, and Stop() and Close() on another
/// thread, wait until the callback returns, so it must not wait for them.
/// @param image   the frame
/// @param context what the callback was set with
/// @return non-zero asks for `pixels` to be demosaiced again
typedef int(ZEL_CALL* ZelScratchpadCallback)(ZelColorImage* image, void* context);

#endif
