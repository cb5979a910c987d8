#include "tests/campaign/FaultyLink.h"

#include <cstring>
#include <thread>

#include "link/CameraInterfaceLibrary.h"
#include "platform/UserTexts.h"
#include "tests/campaign/FailingMemory.h"
#include "tests/campaign/FaultyTransport.h"

// Other names for the linker, see CMakeLists.txt: the system's half, and what the SDK's search for an export leads to.
extern "C" {
void* SystemFindExport(zel::platform::LibraryHandle library, const char* name);
void* FaultyFindExport(zel::platform::LibraryHandle library, const char* name);
}

namespace zel::campaign {

namespace {

// The exports of the plug-in that has the camera under test; the SDK gets others in their place.
struct Exports {
    GetNumCamerasFunction count;
    CreateCameraInterfaceFunction create;
    DestroyCameraInterfaceFunction destroy;
    LibUnloadFunction unload;
    SetConnectionEventCallbackFunction set_callback;
    GetLibraryTextFunction type;
    GetCameraAddressFunction address;
    GetCameraTextFunction name, serial, port;
} s_Exports;
FaultyTransport* s_Transport = nullptr;
std::atomic<ConnectionEventCallback> s_ConnectionCallback{nullptr};

int ZEL_CALL CountCameras() {
    const Crossing crossing(Side::kAround);
    const FaultKind* const fault = FaultyLink::Current()->Next(Occasion::kOperation);
    return fault && fault->effect != Effect::kUnplug ? -1 : s_Exports.count();
}

ICameraInterface* ZEL_CALL CreateTransport(int camera, char* name) {
    const Crossing crossing(Side::kAround);
    FaultyLink& link = *FaultyLink::Current();
    if (camera != link.Camera()) return s_Exports.create(camera, name);
    const FaultKind* const fault = link.Next(Occasion::kOperation);
    if (link.dead || (fault && fault->effect != Effect::kUnplug)) return nullptr;
    if (fault) link.Unplug("connect", fault->amount);
    ICameraInterface* const next = s_Exports.create(camera, name);
    if (!s_Transport && next) s_Transport = new FaultyTransport(*next, link);
    return next ? s_Transport : nullptr;
}

void ZEL_CALL DestroyTransport(ICameraInterface* transport) {
    const Crossing crossing(Side::kAround);
    if (transport != s_Transport) return s_Exports.destroy(transport);
    s_Exports.destroy(&s_Transport->Next());
    delete std::exchange(s_Transport, nullptr);
}

void ZEL_CALL OnConnection(int event, int camera, int context) noexcept {
    const Crossing crossing(Side::kSdk);
    s_ConnectionCallback.load()(event, camera, context);
}

void ZEL_CALL SetConnectionCallback(ConnectionEventCallback callback, int context) {
    const Crossing crossing(Side::kAround);
    if (callback) s_ConnectionCallback = callback;
    s_Exports.set_callback(callback ? OnConnection : nullptr, context);
}

// An export that only has to be known as the plug-in's side.
template <auto export_slot>
struct Around;
template <class Result, class... Parameters, Result (*Exports::*export_slot)(Parameters...)>
struct Around<export_slot> {
    static Result ZEL_CALL Call(Parameters... parameters) {
        const Crossing crossing(Side::kAround);
        return (s_Exports.*export_slot)(parameters...);
    }
};

template <class Function>
void* Replace(void* found, Function& kept, Function replacement) {
    kept = reinterpret_cast<Function>(found);
    return reinterpret_cast<void*>(replacement);
}
template <auto export_slot>
void* ReplaceAround(void* found) {
    return Replace(found, s_Exports.*export_slot, &Around<export_slot>::Call);
}

}  // namespace

FaultyLink::FaultyLink(const LinkUnderTest& link) : m_Link(link) {
    static constexpr const char* kCounts[] = {"ZEL_SIM_CL_CAMERAS", "ZEL_SIM_EBUS_CAMERAS", "ZEL_SIM_USB_CAMERAS"};
    for (int i = 0; i < 3; ++i) platform::SetEnvironment(kCounts[i], link.counts[i]);
    s_Current = this;
    m_Library = platform::LoadSharedLibrary(link.library);
    m_Control = platform::FindFunction<ZelSimControlFunction>(m_Library, "zel_sim_control");
}

FaultyLink::~FaultyLink() { platform::UnloadSharedLibrary(m_Library); }

void FaultyLink::Plan(const FaultKind* kind, int at) {
    for (std::atomic<int>& count : m_Counts) count = 0;
    m_Kind = kind;
    m_At = at;
    m_Happened = false;
    const bool frame = kind && kind->occasion == Occasion::kFrame;
    if (frame) {
        Control(std::string("fault # ") + (kind->effect == Effect::kLose ? "lose" : "unplug-frame") +
                " after=" + std::to_string(at - 1));
        m_PlugIn = kind->amount == 1;
        m_Happened = true;
    }
    const bool memory = kind && kind->occasion == Occasion::kAllocation;
    PlanAllocationFailure(memory ? at : 0, memory ? kind->amount : 0);
}

void FaultyLink::Mend() {
    m_Counts[static_cast<int>(Occasion::kAllocation)] = AllocationCount();
    PlanAllocationFailure(0, 0);
    m_Mending = true;
    if (m_Other.joinable()) m_Other.join();
    m_Mending = false;
    m_Kind = nullptr;
    m_PlugIn = dead = false;
    silent = 0;
    Control("fault # clear");
    Control("plug #");
}

void FaultyLink::BetweenCalls() {
    if (m_Happened && m_PlugIn && Control("plug #")) m_PlugIn = false;
}

bool FaultyLink::Happened() const {
    return m_Happened || (m_Kind && m_Kind->occasion == Occasion::kAllocation && AllocationCount() >= m_At);
}

const FaultKind* FaultyLink::Next(Occasion occasion) {
    const int count = ++m_Counts[static_cast<int>(occasion)];
    if (!m_Kind || m_Kind->occasion != occasion || count != m_At) return nullptr;
    m_Happened = true;
    return m_Kind;
}

void FaultyLink::Unplug(const char* operation, int plug_in_again) {
    Control(std::string("fault # unplug") + (*operation ? "-" : "") + operation);
    m_PlugIn = plug_in_again == 1;
    if (plug_in_again != 2 || m_Other.joinable()) return;
    m_Other = std::thread([this] {
        while (!Control("plug #") && !m_Mending) std::this_thread::yield();
    });
}

bool FaultyLink::Control(std::string command) {
    command.replace(command.find('#'), 1, std::to_string(m_Link.camera));
    char reply[256];
    return m_Control(command.c_str(), reply, sizeof reply) >= 0;
}

}  // namespace zel::campaign

// The other plug-ins are none.
void* FaultyFindExport(zel::platform::LibraryHandle library, const char* name) {
    using namespace zel::campaign;
    void* const found = SystemFindExport(library, name);
    const auto is = [&](const char* other) { return std::strcmp(name, other) == 0; };
    const FaultyLink* const link = FaultyLink::Current();
    if (!found || !link || !link->Has(library)) return is("get_num_cameras") ? nullptr : found;
    if (is("get_num_cameras")) return Replace(found, s_Exports.count, &CountCameras);
    if (is("create_camera_interface")) return Replace(found, s_Exports.create, &CreateTransport);
    if (is("destroy_camera_interface")) return Replace(found, s_Exports.destroy, &DestroyTransport);
    if (is("set_camera_connection_event_callback"))
        return Replace(found, s_Exports.set_callback, &SetConnectionCallback);
    if (is("lib_unload")) return ReplaceAround<&Exports::unload>(found);
    if (is("get_camera_interface_type_str")) return ReplaceAround<&Exports::type>(found);
    if (is("get_camera_address_str")) return ReplaceAround<&Exports::address>(found);
    if (is("get_camera_name")) return ReplaceAround<&Exports::name>(found);
    if (is("get_camera_serial_num_str")) return ReplaceAround<&Exports::serial>(found);
    if (is("get_camera_port_type")) return ReplaceAround<&Exports::port>(found);
    return found;
}
