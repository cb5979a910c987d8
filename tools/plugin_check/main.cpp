// Checks a camera interface library (a plug-in) against what the SDK expects of one.
#include <cstdio>
#include <cstring>

#include "tools/plugin_check/Checks.h"

namespace {

using namespace zel::plugin_check;

void CheckCamera(const PluginLibrary& library, int camera, Report& report) {
    std::printf("camera %d\n", camera);
    char name[64] = "";
    if (library.get_camera_name) std::snprintf(name, sizeof(name), "%s", library.get_camera_name(camera));
    ICameraInterface* const transport = library.create_camera_interface(camera, name);
    if (!report.Check(transport != nullptr, "create_camera_interface", name)) return;
    report.Check(library.create_camera_interface(camera, name) == transport, "create gives the same object",
                 "until it is destroyed");
    {
        HostCamera host(*transport);
        CheckLink(library, *transport, host, report);
        CheckAcquisition(*transport, host, report);
        transport->SetCameraCommon(nullptr);
    }
    library.destroy_camera_interface(transport);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 || std::strcmp(argv[1], "--help") == 0) {
        std::fprintf(stderr, "usage: zel_plugin_check FILE\nFILE: a plug-in, such as zel_usb.dll or a path\n");
        return 2;
    }
    Report report;
    const PluginLibrary library(argv[1]);
    const int count = CheckLibrary(library, report);
    for (int camera = 0; camera < count; ++camera) CheckCamera(library, camera, report);
    report.Check(count > 0, "cameras", count > 0 ? std::to_string(count) + " checked" : "none attached");
    if (library.lib_unload) library.lib_unload();
    std::printf("%d checks passed, %d failed\n", report.Passed(), report.Failed());
    return report.Failed() == 0 ? 0 : 1;
}
