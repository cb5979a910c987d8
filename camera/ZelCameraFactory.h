// Makes and deletes camera objects. The camera manager knows them through these functions alone.
#ifndef CAMERA_ZELCAMERAFACTORY_H
#define CAMERA_ZELCAMERAFACTORY_H

class ICameraInterface;
class ZelCamera;

// A camera object around a transport, which it holds and never owns. `instance_name` tells this camera's loggers apart;
// null counts as "". Null for a null transport or when memory ran out.
ZelCamera* zel_camera_control_create(ICameraInterface* camera, const char* instance_name);

// Deletes a camera object. The transport is not closed. Null is allowed.
void zel_camera_control_destroy(ZelCamera* camera);

// The transport of a camera object made by zel_camera_control_create().
ICameraInterface* zel_camera_control_interface(ZelCamera* camera);

#endif
