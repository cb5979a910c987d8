// What lives how long: transports, the library in memory, the process.
#include <fmt/format.h>

#include "tools/zelcam/check/CameraSession.h"
#include "tools/zelcam/check/SteadyUse.h"

namespace zelcam::check {

namespace {

const PluginLibrary& WithUnload(CheckedPlugin& plugin) {
    if (!plugin.Library().lib_unload) throw Skipped("it does not export lib_unload");
    return plugin.Library();
}

std::string CheckOutlives(CheckedPlugin& plugin, int camera) {
    WithUnload(plugin);
    CameraSession session(plugin, camera);
    session.Open();
    const int type = session.transport.GetInterfaceType();
    auto* const mark = reinterpret_cast<ZelCamera*>(&session);  // only stored and answered
    session.transport.SetCameraObject(mark);
    plugin.LibUnload();
    Require(session.transport.GetInterfaceType() == type, "its interface type is another one");
    Require(session.transport.GetCameraObject() == mark, "its camera object is gone");
    Require(!session.host.GetText(HW_MODEL).empty(), "the camera does not answer");
    session.transport.SetCameraObject(nullptr);
    session.Launch();
    session.WaitForFrames(1);
    session.StopAndLook();
    return "exchanges and frames";
}

std::string CheckSameAfterUnload(CheckedPlugin& plugin, int camera) {
    WithUnload(plugin);
    CameraSession session(plugin, camera);
    plugin.LibUnload();
    plugin.LibUnload();
    Require(plugin.Create(camera) == &session.Raw(), "create_camera_interface answers another one");
    return "after lib_unload twice";
}

std::string CheckWorksAgain(CheckedPlugin& plugin, int camera) {
    const PluginLibrary& library = WithUnload(plugin);
    const int count = plugin.Cameras();
    std::string serial;
    for (int i = 0; i < 3; ++i) {
        plugin.LibUnload();
        const int now = plugin.CountCameras();
        Require(now == count, fmt::format("{} cameras, {} before", now, count));
        const char* const text = library.get_camera_serial_num_str ? library.get_camera_serial_num_str(camera) : "";
        if (i == 0) serial = text ? text : "";
        Require(serial == (text ? text : ""), "the serial number is another one");
        CameraSession(plugin, camera).Open();
    }
    return "three times";
}

std::string CheckRounds(CheckedPlugin& plugin, int camera) {
    SteadyUse use;
    for (int i = 0; i < SteadyUse::kRounds; ++i) {
        use.Round(i);
        CameraSession session(plugin, camera);
        session.Open();
        session.Launch();
        session.WaitForFrames(1);
    }
    use.Require();
    return fmt::format("{} times", SteadyUse::kRounds);
}

std::string CheckReload(CheckedPlugin& plugin, int camera) {
    const int count = plugin.Cameras();
    SteadyUse use;
    for (int i = 0; i < SteadyUse::kRounds; ++i) {
        plugin.Release();
        use.Round(i);
        const int now = plugin.CountCameras();
        Require(now == count, fmt::format("{} cameras at load {}, {} before", now, i + 2, count));
        CameraSession(plugin, camera).Open();
    }
    plugin.Release();
    use.Require();
    return fmt::format("{} times", SteadyUse::kRounds);
}

constexpr Clause kLifetimeClauses[] = {
    {"lifetime", "outlives-unload", "a transport works on after lib_unload", true, CheckOutlives},
    {"lifetime", "same-after-unload", "a camera has the same transport after lib_unload", true, CheckSameAfterUnload},
    {"lifetime", "works-after-unload", "the exports work again after lib_unload", true, CheckWorksAgain},
    {"lifetime", "create-rounds", "create and destroy again and again take no threads and handles along", true,
     CheckRounds},
    {"lifetime", "reload", "the library is loaded and unloaded again and again, and takes nothing along", true,
     CheckReload},
    {"lifetime", "process-end", "the program ends in peace after the library was unloaded", false, nullptr},
};

}  // namespace

std::span<const Clause> LifetimeClauses() { return kLifetimeClauses; }

}  // namespace zelcam::check
