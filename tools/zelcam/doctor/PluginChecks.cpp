// The plug-ins, each loaded and asked by itself. The SDK keeps no record of them yet, so that nobody else asks.
#include "link/CameraInterfaceLibrary.h"
#include "sdk/InterfaceLibrary.h"
#include "tools/zelcam/camera/PluginSet.h"
#include "tools/zelcam/doctor/Checks.h"
#include "tools/zelcam/doctor/LibrarySearch.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

// Whether the SDK can do without the export.
constexpr struct {
    const char* name;
    bool required;
} kExports[] = {
    {"get_num_cameras", true},
    {"create_camera_interface", true},
    {"destroy_camera_interface", true},
    {"get_camera_interface_type_str", false},
    {"get_version_str", false},
    {"get_camera_name", false},
    {"get_camera_serial_num_str", false},
    {"get_camera_address_str", false},
    {"lib_unload", false},
    {"set_camera_connection_event_callback", false},
};

std::string Lacking(zel::platform::LibraryHandle library, bool required) {
    std::string names;
    for (const auto& entry : kExports) {
        if (entry.required != required || zel::platform::FindExport(library, entry.name)) continue;
        names += (names.empty() ? "" : ", ") + std::string(entry.name);
    }
    return names;
}

std::string VersionOf(zel::platform::LibraryHandle library) {
    const auto tell = zel::platform::FindFunction<GetLibraryTextFunction>(library, "get_version_str");
    return tell ? VersionIn(zel::detail::text_or_empty(tell())) : "";
}

// Result: the number of cameras, or -1: the library says that it failed. Such a one stays loaded, as the SDK has it.
int AskForCameras(zel::platform::LibraryHandle library) {
    const int count = zel::platform::FindFunction<GetNumCamerasFunction>(library, "get_num_cameras")();
    if (count < 0) return -1;
    const auto unload = zel::platform::FindFunction<LibUnloadFunction>(library, "lib_unload");
    if (unload) unload();
    zel::platform::UnloadSharedLibrary(library);
    return count;
}

// name: the canonical one without its ending.
void CheckLoaded(const std::string& name, const FoundLibrary& library, PluginCounts& counts, Examination& examination) {
    const std::string version = VersionOf(library.handle);
    Json facts{{"plugin", name}, {"path", library.path}, {"version", version}};
    const std::string lacking = Lacking(library.handle, true);
    if (!lacking.empty()) {
        zel::platform::UnloadSharedLibrary(library.handle);
        return examination.Add(
            State::kProblem, "plugin", name + " is no plug-in: it lacks " + lacking + ", " + library.path,
            "another library has its name; put the right one there (zel_plugin_check looks closer)", facts);
    }
    const std::string optional = Lacking(library.handle, false);
    ++counts.loaded;
    const int cameras = AskForCameras(library.handle);
    facts["cameras"] = cameras;
    if (cameras < 0) {
        return examination.Add(State::kProblem, "plugin", name + " says that it failed, " + library.path,
                               "check the driver of its hardware and the rights to use it", facts);
    }
    counts.cameras += cameras;
    const std::string text = name + (version.empty() ? "" : " " + version) + ", " +
                             Counted(static_cast<unsigned>(cameras), "camera") + ", " + library.path;
    examination.Add(State::kOk, "plugin", text, "", facts);
    if (optional.empty()) return;
    examination.Add(State::kNote, "plugin_exports", name + " does without " + optional,
                    "texts or hot-plug events are missing", {{"plugin", name}});
}

}  // namespace

PluginCounts CheckPlugins(const SdkFile& sdk, Examination& examination) {
    examination.Begin("plug-ins");
    PluginCounts counts;
    const PluginSet& set = ChosenPlugins();
    const bool chosen = !set.folder.empty();
    examination.Add(State::kOk, "plugin_set",
                    chosen ? "chosen set: " + set.Text() : "no set is chosen: each where the SDK finds it by name",
                    chosen ? "" : "--plugins gige has GigE Vision cameras, docs/install.md tells of others",
                    {{"plugins", ToJson(set)}});
    for (const zel::InterfaceLibrary& entry : zel::kInterfaceLibraries) {
        const std::string file = entry.file_name;
        const std::string name = file.substr(0, file.rfind('.'));
        const FoundLibrary library = FindPlugin(entry.file_name, sdk);
        if (library.handle) {
            CheckLoaded(name, library, counts, examination);
        } else if (!library.path.empty()) {
            examination.Add(State::kProblem, "plugin", name + " " + library.why,
                            "install what is missing, of this program's kind of processor",
                            {{"plugin", name}, {"path", library.path}});
        } else if (chosen) {
            examination.Add(State::kOk, "plugin", name + " " + library.why, "", {{"plugin", name}});
        } else {
            examination.Add(State::kNote, "plugin", name + " " + library.why,
                            "cameras of this link need it; put it into one of these folders",
                            {{"plugin", name}, {"looked_in", sdk.places}});
        }
    }
    if (counts.loaded == 0) {
        examination.Add(State::kProblem, "plugins", "no plug-in can be loaded: no camera will ever be found",
                        "put the plug-in of your link into one of these folders");
    }
    return counts;
}

}  // namespace zelcam
