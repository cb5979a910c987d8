// Checks a camera interface library (a plug-in) against what the SDK expects of one.
#include <cstdio>
#include <cstring>
#include <string>

#include "tools/plugin_check/Checks.h"
#include "tools/plugin_check/RawFrame.h"

namespace {

using namespace zel::plugin_check;

void CheckCamera(const PluginLibrary& library, int count, int camera, Report& report) {
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
    CheckLifetime(library, count, camera, *transport, report);
    library.destroy_camera_interface(transport);
}

}  // namespace

namespace {

constexpr const char* kUsage =
    "usage: zel_plugin_check FILE\n"
    "       zel_plugin_check FILE --bytes PICTURE [TAPS]\n"
    "       zel_plugin_check FILE --samples PICTURE [TAPS]\n"
    "FILE: a plug-in, such as zel_usb.dll or a path. PICTURE: no checks; a PGM file that gets one frame of the first\n"
    "camera as the link delivers it (--bytes), or its samples unpacked, in the order of the taps (--samples). TAPS: 1, "
    "2\n"
    "or 4.\n";

int SaveFrame(int argc, char** argv) {
    const bool bytes = std::strcmp(argv[2], "--bytes") == 0;
    const std::string taps = argc == 5 ? argv[4] : "0";
    const bool known_taps = argc == 4 || taps == "1" || taps == "2" || taps == "4";
    if (argc > 5 || !known_taps || (!bytes && std::strcmp(argv[2], "--samples") != 0)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    const PluginLibrary library(argv[1]);
    const bool saved =
        SaveRawFrame(library, bytes ? RawFrameKind::kBytes : RawFrameKind::kSamples, taps[0] - '0', argv[3]);
    if (library.lib_unload) library.lib_unload();
    return saved ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc >= 4) return SaveFrame(argc, argv);
    if (argc != 2 || std::strcmp(argv[1], "--help") == 0) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    Report report;
    const PluginLibrary library(argv[1]);
    const int count = CheckLibrary(library, report);
    for (int camera = 0; camera < count; ++camera) CheckCamera(library, count, camera, report);
    report.Check(count > 0, "cameras", count > 0 ? std::to_string(count) + " checked" : "none attached");
    if (library.lib_unload) library.lib_unload();
    std::printf("%d checks passed, %d failed\n", report.Passed(), report.Failed());
    return report.Failed() == 0 ? 0 : 1;
}
