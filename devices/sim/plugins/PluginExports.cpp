// The exports of a plug-in made of simulated cameras. The bus is made when the library is first asked about its cameras
// and ends with the lib_unload that finds no transport alive; until then cameras stay as they are, plugged or not.
#include <cstdio>
#include <memory>
#include <string_view>

#include "devices/sim/link/Complaints.h"
#include "devices/sim/link/NeverDestroyed.h"
#include "devices/sim/link/SimCommands.h"
#include "devices/sim/link/SimControl.h"
#include "devices/sim/plugins/Plugin.h"
#include "platform/DynamicLibrary.h"
#include "platform/Mutex.h"

namespace zel::sim {

namespace {

platform::Mutex s_Lock;

// Shared with whoever is inside an export. Never destroyed: a process may end without lib_unload.
std::shared_ptr<SimBus>& TheBus() ZEL_REQUIRES(s_Lock) {
    static NeverDestroyed<std::shared_ptr<SimBus>> s_Bus;
    return s_Bus.Get();
}

std::shared_ptr<SimBus> Bus() {
    const platform::ScopedLock lock(s_Lock);
    std::shared_ptr<SimBus>& bus = TheBus();
    try {
        if (!bus) bus = std::make_shared<SimBus>(kThisPlugin);
    } catch (const std::exception&) {
    }
    return bus;
}

// Runs an operation on the bus; `failed` when there is none or it threw.
template <class Result, class Operation>
Result OnBus(Result failed, Operation operation) {
    const std::shared_ptr<SimBus> bus = Bus();
    if (!bus) return failed;
    try {
        return operation(*bus);
    } catch (const std::exception&) {
        return failed;
    }
}

}  // namespace

}  // namespace zel::sim

using zel::sim::kThisPlugin;
using zel::sim::OnBus;
using zel::sim::SimBus;

ZEL_PLUGIN_EXPORT int ZEL_CALL get_num_cameras() {
    zel::platform::KeepThisLibraryLoaded();
    return OnBus(-1, [](SimBus& bus) { return bus.CameraCount(); });
}

// The camera's name in `name` is the one that get_camera_name gave.
ZEL_PLUGIN_EXPORT ICameraInterface* ZEL_CALL create_camera_interface(int cam_index, char* /*name*/) {
    return OnBus<ICameraInterface*>(nullptr, [=](SimBus& bus) { return bus.CreateTransport(cam_index); });
}

ZEL_PLUGIN_EXPORT void ZEL_CALL destroy_camera_interface(ICameraInterface* camera) {
    OnBus(0, [=](SimBus& bus) {
        bus.DestroyTransport(camera);
        return 0;
    });
}

ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_interface_type_str() { return kThisPlugin.interface_type_text; }

ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_address_str(int cam_index, int address_select) {
    return OnBus("", [=](SimBus& bus) { return bus.AddressText(cam_index, address_select); });
}

ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_name(int cam_index) {
    return OnBus("", [=](SimBus& bus) { return bus.NameText(cam_index); });
}

ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_serial_num_str(int cam_index) {
    return OnBus("", [=](SimBus& bus) { return bus.SerialText(cam_index); });
}

ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_camera_port_type(int cam_index) {
    return OnBus("", [=](SimBus& bus) { return bus.Camera(cam_index) ? kThisPlugin.port_type_text : ""; });
}

ZEL_PLUGIN_EXPORT void ZEL_CALL lib_unload() {
    std::shared_ptr<SimBus> ended;  // destroyed after the lock is given back
    const zel::platform::ScopedLock lock(zel::sim::s_Lock);
    std::shared_ptr<SimBus>& bus = zel::sim::TheBus();
    if (bus && bus->ShutDown()) ended.swap(bus);
}

ZEL_PLUGIN_EXPORT void ZEL_CALL set_camera_connection_event_callback(ConnectionEventCallback callback, int context) {
    OnBus(0, [=](SimBus& bus) {
        bus.SetConnectionCallback(callback, context);
        return 0;
    });
}

ZEL_PLUGIN_EXPORT const char* ZEL_CALL get_version_str() { return kThisPlugin.version_text; }

ZEL_PLUGIN_EXPORT int ZEL_CALL zel_sim_control(const char* command, char* reply, int reply_size) {
    if (!command) return -1;
    if (const std::string_view text = command; text.starts_with("told ")) {
        return zel::sim::HasTold(std::string(text.substr(5))) ? 0 : -1;  // without the lock, which the asker may hold
    }
    return OnBus(-1, [=](SimBus& bus) {
        std::string answer;
        const bool done = zel::sim::RunSimCommand(bus, command, answer);
        if (reply && reply_size > 0) std::snprintf(reply, static_cast<std::size_t>(reply_size), "%s", answer.c_str());
        return done ? static_cast<int>(answer.size()) : -1;
    });
}
