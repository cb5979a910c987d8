#include "tools/plugin_check/Checks.h"

namespace zel::plugin_check {

void CheckLifetime(const PluginLibrary& library, int count, int camera, ICameraInterface& transport, Report& report) {
    if (!library.lib_unload) return;
    const int type = transport.GetInterfaceType();
    auto* const mark = reinterpret_cast<ZelCamera*>(&report);  // only stored and answered
    transport.SetCameraObject(mark);
    library.lib_unload();
    report.Check(transport.GetInterfaceType() == type && transport.GetCameraObject() == mark,
                 "the transport outlives lib_unload", "interface type and camera object");
    transport.SetCameraObject(nullptr);
    report.Check(library.get_num_cameras() == count, "the library works again after lib_unload", "get_num_cameras");
    char name[64] = "";
    report.Check(library.create_camera_interface(camera, name) == &transport,
                 "create gives the same object after lib_unload", "until it is destroyed");
}

}  // namespace zel::plugin_check
