// A camera maker's USB interface library that has no camera yet.
#include <link/CameraInterfaceLibrary.h>
#include <link/ICameraInterface.h>

ZEL_PLUGIN_EXPORT int ZEL_CALL get_num_cameras() { return 0; }
ZEL_PLUGIN_EXPORT ICameraInterface* ZEL_CALL create_camera_interface(int, char*) { return nullptr; }
ZEL_PLUGIN_EXPORT void ZEL_CALL destroy_camera_interface(ICameraInterface*) {}
ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_version_str() { return "a maker's library"; }
