#ifndef ZEL_CALLBACKS_H
#define ZEL_CALLBACKS_H

#include "ZelPlatform.h"

class ZelImage;
class ZelColorImage;

#define ZEL_CAMERA_CONNECT 1
#define ZEL_CAMERA_DISCONNECT 2

#define ZEL_CAMERA_CONTROL_DISCONNECT 6
#define ZEL_CAMERA_CONTROL_RECONNECT 7

#define ZEL_IMAGE_NOTIFICATION_PENDING 0
#define ZEL_IMAGE_NOTIFICATION_EVENT 1

typedef void(ZEL_CALL* ZelCameraConnectCallback)(int event_id, int camera_index, const char* name,
                                                 const char* serial_number, const char* interface_type, void* context);

typedef void(ZEL_CALL* ZelCameraControlCallback)(int event_code, void* context);

struct ZelCameraControlRecord {
    int value;
    int values[8];
};
typedef void(ZEL_CALL* ZelCameraControlCallbackEx)(int event_code, const ZelCameraControlRecord* record, void* context);

typedef void(ZEL_CALL* ZelImageNotificationCallback)(int kind, void* context);

typedef void(ZEL_CALL* ZelImageCallback)(ZelImage* image, void* context);

typedef void(ZEL_CALL* ZelTextCommandCallback)(const char* reply, void* context);

typedef int(ZEL_CALL* ZelScratchpadCallback)(ZelColorImage* image, void* context);

#endif
