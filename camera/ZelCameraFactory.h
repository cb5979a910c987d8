// Makes and deletes camera objects. The camera manager knows them through these functions alone.
#ifndef CAMERA_ZELCAMERAFACTORY_H
#define CAMERA_ZELCAMERAFACTORY_H

class ICameraInterface;
class ZelCamera;

// A camera object around a transport, which it holds and never owns. `instance_name` tells this camera's loggers apart;
// null counts as "". Null for a null transport or when memory ran out.
ZelCamera* zel_camera_control_create(ICameraInterface* camera, const char* instance_name);

// Deletes a camera object, after other threads that are inside have left. The transport is not closed. Null is allowed.
// Must not be called from inside the camera object.
void zel_camera_control_destroy(ZelCamera* camera);

// The rest takes a camera object made by zel_camera_control_create(), waits for nobody and never touches the transport.

// Whether the calling thread is inside one of its operations or callbacks.
bool zel_camera_control_inside(ZelCamera* camera);
// The SDK is being closed: operations answer false from now on, those under way are told to end, no callback begins.
void zel_camera_control_begin_end(ZelCamera* camera);
// Another object is about to get the transport: operations answer false for good, and this one never touches the
// transport again. False, and nothing done, when the camera is open or somebody is inside.
bool zel_camera_control_retire(ZelCamera* camera);
// The library was shut down, perhaps with the transport: operations answer false until resume, or until a call from the
// transport shows that it lives.
void zel_camera_control_suspend(ZelCamera* camera);
void zel_camera_control_resume(ZelCamera* camera);
bool zel_camera_control_suspended(ZelCamera* camera);
// The transport is about to be destroyed: the object never touches it again, whatever the transport still calls.
void zel_camera_control_forget_transport(ZelCamera* camera);

#endif
