#include "tools/zelcam/check/CheckedPlugin.h"

#include <algorithm>

namespace zelcam::check {

namespace {

// The export of this project's simulated cameras beside those of the contract (devices/sim/link/SimControl.h).
using ControlFunction = int(ZEL_CALL*)(const char* command, char* reply, int reply_size);

}  // namespace

const PluginLibrary& CheckedPlugin::Library() {
    if (!m_Library) m_Library = m_Watch.Run("loading", [&] { return std::make_unique<PluginLibrary>(m_File); });
    if (!m_Library->Loaded()) throw Skipped("the library can't be loaded: " + m_Library->Why());
    if (!m_Library->Complete()) throw Skipped("a required export is missing");
    return *m_Library;
}

int CheckedPlugin::Cameras() {
    if (m_Cameras < 0) m_Cameras = std::clamp(CountCameras(), 0, kMostCameras);
    return m_Cameras;
}

void CheckedPlugin::Release() {
    if (!m_Library) return;
    if (m_Library->Complete()) LibUnload();
    m_Watch.Run("unloading", [&] { m_Library.reset(); });
}

int CheckedPlugin::CountCameras() {
    const PluginLibrary& library = Library();
    return m_Watch.Run("get_num_cameras", [&] { return library.get_num_cameras(); });
}

ICameraInterface* CheckedPlugin::Create(int camera) {
    const PluginLibrary& library = Library();
    char name[kTextSlot] = "";
    return m_Watch.Run("create_camera_interface", [&] { return library.create_camera_interface(camera, name); });
}

void CheckedPlugin::Destroy(ICameraInterface* transport) {
    const PluginLibrary& library = Library();
    m_Watch.Run("destroy_camera_interface", [&] { library.destroy_camera_interface(transport); });
}

void CheckedPlugin::LibUnload() {
    if (m_Library->lib_unload) m_Watch.Run("lib_unload", [&] { m_Library->lib_unload(); });
}

void CheckedPlugin::Control(const std::string& command, int camera, const std::string& arguments) {
    Library();
    ControlFunction control = nullptr;
    m_Library->Bind(control, "zel_sim_control");
    if (!control) throw Skipped("it takes a camera that can be unplugged by command, and this plug-in has none");
    const std::string line = command + " " + std::to_string(camera) + " " + arguments;
    char answer[200] = "";
    if (control(line.c_str(), answer, sizeof answer) < 0) throw Skipped("'" + line + "' was not taken: " + answer);
}

}  // namespace zelcam::check
