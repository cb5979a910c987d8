#include "devices/sim/link/SimBus.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <system_error>

#include "devices/sim/link/Player.h"

namespace zel::sim {

namespace {

const SimLibrary& LibraryOf(const PluginDescription& plugin) {
    return *std::ranges::find(SimLibraries(), plugin.interface_type, &SimLibrary::interface_type);
}

}  // namespace

SimBus::SimBus(const PluginDescription& plugin)
    : m_Cameras(CamerasOf(LibraryOf(plugin))), m_Slots(static_cast<std::size_t>(std::max(m_Cameras, 0))) {
    const Settings common = ReadSettings();
    for (int i = 0; i < static_cast<int>(m_Slots.size()); ++i) {
        Slot& slot = m_Slots[static_cast<std::size_t>(i)];
        Settings settings = common;
        if (common.recording && !Plays(common.recording->facts, plugin.interface_type, i)) settings.recording.reset();
        LookAtRecording(settings, LookAtFrames);
        settings.seed += static_cast<std::uint64_t>(plugin.interface_type) * 1000 + static_cast<std::uint64_t>(i);
        slot.camera = std::make_unique<SimCamera>(ModelOfLink(plugin.interface_type, i), settings);
        slot.camera->SetVanished([this, i] { Enqueue({i, true, false, {}}); });
        for (std::size_t n = 0; n < 3; ++n) {
            std::string text = plugin.address_formats[n];
            const std::size_t number = text.find('#');
            if (number != std::string::npos) text.replace(number, 1, std::to_string(i + 1));
            std::snprintf(slot.addresses[n].data(), slot.addresses[n].size(), "%s", text.c_str());
        }
    }
    if (!common.faults.empty()) m_Script = std::make_unique<FaultScript>(*this, common.faults, plugin.interface_type);
}

SimBus::~SimBus() {
    m_Script.reset();
    {
        const platform::ScopedLock lock(m_Lock);
        m_Callback = nullptr;
    }
    for (const Slot& slot : m_Slots) DestroyTransport(slot.transport.get());
    platform::ScopedLock lock(m_Lock);
    m_ReportsDone.wait(lock, [this]() ZEL_REQUIRES(m_Lock) { return !m_Reporting; });
    lock.unlock();
    if (m_Reporter.joinable()) m_Reporter.join();
}

bool SimBus::ShutDown() {
    {
        const platform::ScopedLock lock(m_Lock);
        m_Callback = nullptr;
        if (std::ranges::any_of(m_Slots, [](const Slot& slot) { return slot.transport != nullptr; })) return false;
    }
    m_Script.reset();  // whose reports are over then
    const platform::ScopedLock lock(m_Lock);
    return !m_Reporting;
}

SimBus::Slot* SimBus::Find(int camera) {
    return camera >= 0 && camera < static_cast<int>(m_Slots.size()) ? &m_Slots[static_cast<std::size_t>(camera)]
                                                                    : nullptr;
}

int SimBus::CameraCount() {
    if (m_Cameras < 0) return -1;
    int count = static_cast<int>(m_Slots.size());
    while (count > 0 && !Camera(count - 1)->Plugged()) --count;
    return count;
}

ICameraInterface* SimBus::CreateTransport(int camera) {
    Slot* const slot = Find(camera);
    if (!slot || !slot->camera->Plugged()) return nullptr;
    const platform::ScopedLock lock(m_Lock);
    if (!slot->transport) slot->transport = std::make_unique<SimCameraTransport>(*slot->camera);
    return slot->transport.get();
}

// An object that this library did not make, or destroyed already, is left alone.
void SimBus::DestroyTransport(ICameraInterface* transport) {
    std::unique_ptr<SimCameraTransport> destroyed;
    {
        const platform::ScopedLock lock(m_Lock);
        for (Slot& slot : m_Slots) {
            if (transport && slot.transport.get() == transport) destroyed = std::move(slot.transport);
        }
    }
    if (destroyed) m_ReportCalls.WaitForCalls();
}

const char* SimBus::NameText(int camera) {
    Slot* const slot = Find(camera);
    if (!slot) return "";
    const std::string name = slot->camera->Name();
    const platform::ScopedLock lock(m_Lock);
    return slot->names.insert(name).first->c_str();
}

const char* SimBus::SerialText(int camera) {
    Slot* const slot = Find(camera);
    return slot ? slot->camera->Model().serial.c_str() : "";
}

const char* SimBus::AddressText(int camera, int select) {
    Slot* const slot = Find(camera);
    return slot && select >= 0 && select < 3 ? slot->addresses[static_cast<std::size_t>(select)].data() : "";
}

void SimBus::SetConnectionCallback(ConnectionEventCallback callback, int context) {
    const platform::ScopedLock lock(m_Lock);
    m_Callback = callback;
    m_CallbackContext = context;
}

SimCamera* SimBus::Camera(int camera) {
    Slot* const slot = Find(camera);
    return slot ? slot->camera.get() : nullptr;
}

bool SimBus::ChangePlug(int camera, bool plugged) {
    if (!Camera(camera)->SetPlugged(plugged)) return false;
    Enqueue({camera, true, plugged, {}});
    WaitForReports();
    return true;
}

void SimBus::ReportEvent(int camera, const ZelCameraEvent& event) {
    Enqueue({camera, false, false, event});
    WaitForReports();
}

void SimBus::Enqueue(const Report& report) {
    const platform::ScopedLock lock(m_Lock);
    m_Reports.push_back(report);
    if (m_Reporting) return;
    if (m_Reporter.joinable()) m_Reporter.join();
    try {
        m_Reporter = std::thread([this] { ReportLoop(); });
        m_Reporting = true;
    } catch (const std::system_error&) {
        m_Reports.clear();
    }
}

// A thread that the SDK may be waiting for does not wait for the reports itself.
void SimBus::WaitForReports() {
    if (m_ReportCalls.CurrentThreadInside()) return;
    platform::ScopedLock lock(m_Lock);
    for (const Slot& slot : m_Slots) {
        if (slot.transport && slot.transport->InsideCall()) return;
    }
    m_ReportsDone.wait(lock, [this]() ZEL_REQUIRES(m_Lock) { return !m_Reporting; });
}

void SimBus::ReportLoop() {
    platform::ScopedLock lock(m_Lock);
    while (!m_Reports.empty()) {
        const Report report = m_Reports.front();
        m_Reports.pop_front();
        const GatedCall call(m_ReportCalls);
        lock.unlock();
        Deliver(report);
        lock.lock();
    }
    m_Reporting = false;
    m_ReportsDone.notify_all();
}

// The open camera hears of it through its transport. The library's own connect event makes the SDK build a new camera
// object, so a camera that is still open comes back without one.
void SimBus::Deliver(const Report& report) {
    SimCameraTransport* transport = nullptr;
    ConnectionEventCallback callback = nullptr;
    int context = 0;
    {
        const platform::ScopedLock lock(m_Lock);
        transport = Find(report.camera)->transport.get();
        callback = m_Callback;
        context = m_CallbackContext;
    }
    const bool open = transport && transport->Connected();
    if (!report.hot_plug) {
        if (transport) transport->ReportEvent(report.event);
        return;
    }
    if (open) {
        const unsigned id = report.plugged ? CAMERA_EVENT_RECONNECT : CAMERA_EVENT_DISCONNECT;
        transport->ReportEvent({id, 0, {}});
    }
    if (!callback || (open && report.plugged)) return;
    callback(report.plugged ? ICAMERA_INTERFACE_EVENT_ID_CONNECT : ICAMERA_INTERFACE_EVENT_ID_DISCONNECT, report.camera,
             context);
}

}  // namespace zel::sim
