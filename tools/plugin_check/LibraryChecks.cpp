#include <cstring>

#include "tools/plugin_check/Checks.h"

namespace zel::plugin_check {

namespace {

constexpr std::size_t kSlotSize = 64;  // bytes of the SDK's slot for a text
constexpr int kMostCameras = 8;

// A text that the SDK can keep whole, and that is the same when asked for again.
void CheckText(const char* first, const char* again, const std::string& name, Report& report) {
    if (!report.Check(first && again, name, first && again ? "answers" : "null")) return;
    const bool fits = std::strlen(first) < kSlotSize;
    report.Check(fits && std::strcmp(first, again) == 0, name + " is steady",
                 std::string("\"") + first + (fits ? "\"" : "\" is longer than 63 characters"));
}

void CheckCameraTexts(const PluginLibrary& library, int camera, Report& report) {
    const std::string label = "camera " + std::to_string(camera) + ' ';
    const struct {
        const char* name;
        GetCameraTextFunction function;
    } kTexts[] = {{"get_camera_name", library.get_camera_name},
                  {"get_camera_serial_num_str", library.get_camera_serial_num_str},
                  {"get_camera_port_type", library.get_camera_port_type}};
    for (const auto& text : kTexts) {
        if (text.function) CheckText(text.function(camera), text.function(camera), label + text.name, report);
    }
    for (int select = 0; library.get_camera_address_str && select < 3; ++select) {
        CheckText(library.get_camera_address_str(camera, select), library.get_camera_address_str(camera, select),
                  label + "get_camera_address_str " + std::to_string(select), report);
    }
}

}  // namespace

int CheckLibrary(const PluginLibrary& library, Report& report) {
    if (!report.Check(library.Loaded(), "load", library.Loaded() ? "loaded" : "the library can't be loaded")) return 0;
    if (!report.Check(library.Complete(), "required exports",
                      "get_num_cameras, create_camera_interface, destroy_camera_interface")) {
        return 0;
    }
    const int count = library.get_num_cameras();
    report.Check(count >= 0 && count <= kMostCameras, "number of cameras", std::to_string(count));
    report.Check(library.get_num_cameras() == count, "number of cameras is steady", std::to_string(count));
    if (library.get_camera_interface_type_str) {
        CheckText(library.get_camera_interface_type_str(), library.get_camera_interface_type_str(),
                  "get_camera_interface_type_str", report);
    }
    if (library.get_version_str) {
        CheckText(library.get_version_str(), library.get_version_str(), "get_version_str", report);
    }
    char name[kSlotSize] = "";
    report.Check(!library.create_camera_interface(-1, name) && !library.create_camera_interface(count, name),
                 "create refuses unknown cameras", "-1 and " + std::to_string(count));
    for (int camera = 0; camera < count; ++camera) CheckCameraTexts(library, camera, report);
    return count;
}

}  // namespace zel::plugin_check
