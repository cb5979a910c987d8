#include "devices/kit/Bus.h"

#include <algorithm>
#include <exception>
#include <system_error>

namespace zel::kit {

Bus::~Bus() {
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

bool Bus::ShutDown() {
    platform::ScopedLock lock(m_Lock);
    m_Callback = nullptr;
    if (std::ranges::any_of(m_Slots, [](const Slot& slot) { return slot.transport != nullptr; })) return false;
    // Reports that nobody hears are over soon; an event that is under way may be what asks.
    m_ReportsDone.wait(lock, [this]() ZEL_REQUIRES(m_Lock) { return !m_Reporting || m_InEvent; });
    return !m_Reporting;
}

Bus::Slot* Bus::Find(int camera) {
    return camera >= 0 && camera < m_Count ? &m_Slots[static_cast<std::size_t>(camera)] : nullptr;
}

Camera* Bus::At(int camera) const {
    return camera >= 0 && camera < m_Count ? m_Slots[static_cast<std::size_t>(camera)].camera.get() : nullptr;
}

int Bus::Add(std::unique_ptr<BackEnd> camera) {
    try {
        return AddCamera(std::make_unique<Camera>(std::move(camera)));
    } catch (const std::exception&) {
        return -1;
    }
}

int Bus::AddCamera(std::unique_ptr<Camera> camera) {
    int number = 0;
    {
        const platform::ScopedLock lock(m_Lock);
        number = m_Count;
        if (number >= kMostCameras) return -1;
        camera->SetVanished([this, number] { Enqueue({number, true, false, {}}); });
        m_Slots[static_cast<std::size_t>(number)].camera = std::move(camera);
        ++m_Count;
    }
    Enqueue({number, true, true, {}});
    return number;
}

void Bus::SetPlugged(int camera, bool plugged) {
    Camera* const found = At(camera);
    if (found && found->SetPlugged(plugged)) Enqueue({camera, true, plugged, {}});
}

bool Bus::Plugged(int camera) const {
    const Camera* const found = At(camera);
    return found && found->Plugged();
}

int Bus::PluggedCount() const {
    int count = m_Count;
    while (count > 0 && !Plugged(count - 1)) --count;
    return count;
}

ICameraInterface* Bus::CreateTransport(int camera) {
    Slot* const slot = Find(camera);
    if (!slot || !slot->camera->Plugged()) return nullptr;
    const platform::ScopedLock lock(m_Lock);
    if (!slot->transport) {
        const double rate = slot->camera->Describe().link_bytes_per_second;
        slot->transport = std::make_unique<Transport>(*slot->camera, m_InterfaceType, rate);
    }
    return slot->transport.get();
}

// An object that this library did not make, or destroyed already, is left alone.
void Bus::DestroyTransport(ICameraInterface* transport) {
    std::unique_ptr<Transport> destroyed;
    {
        const platform::ScopedLock lock(m_Lock);
        for (Slot& slot : m_Slots) {
            if (transport && slot.transport.get() == transport) destroyed = std::move(slot.transport);
        }
    }
    if (destroyed) m_ReportCalls.WaitForCalls();
}

const char* Bus::Keep(int camera, const std::string& text) {
    const platform::ScopedLock lock(m_Lock);
    return Find(camera)->texts.insert(text.substr(0, 63)).first->c_str();
}

void Bus::SetConnectionCallback(ConnectionEventCallback callback, int context) {
    const platform::ScopedLock lock(m_Lock);
    m_Callback = callback;
    m_CallbackContext = context;
}

bool Bus::ChangePlug(int camera, bool plugged) {
    if (!At(camera)->SetPlugged(plugged)) return false;
    Enqueue({camera, true, plugged, {}});
    WaitForReports();
    return true;
}

void Bus::ReportEvent(int camera, const ZelCameraEvent& event) {
    Enqueue({camera, false, false, event});
    WaitForReports();
}

void Bus::Enqueue(const Report& report) {
    const platform::ScopedLock lock(m_Lock);
    if (!m_Callback && !m_Slots[static_cast<std::size_t>(report.camera)].transport) return;  // nobody listens
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
void Bus::WaitForReports() {
    if (m_ReportCalls.CurrentThreadInside()) return;
    platform::ScopedLock lock(m_Lock);
    for (const Slot& slot : m_Slots) {
        if (slot.transport && slot.transport->InsideCall()) return;
    }
    m_ReportsDone.wait(lock, [this]() ZEL_REQUIRES(m_Lock) { return !m_Reporting; });
}

void Bus::ReportLoop() {
    platform::ScopedLock lock(m_Lock);
    while (!m_Reports.empty()) {
        const Report report = m_Reports.front();
        m_Reports.pop_front();
        const GatedCall call(m_ReportCalls);
        lock.unlock();
        Deliver(report);
        lock.lock();
        m_InEvent = false;
    }
    m_Reporting = false;
    m_ReportsDone.notify_all();
}

// The open camera hears of it through its transport. The library's own connect event makes the SDK build a new camera
// object, so a camera that is still open comes back without one.
void Bus::Deliver(const Report& report) {
    Transport* transport = nullptr;
    ConnectionEventCallback callback = nullptr;
    int context = 0;
    {
        const platform::ScopedLock lock(m_Lock);
        transport = Find(report.camera)->transport.get();
        callback = m_Callback;
        context = m_CallbackContext;
        m_InEvent = transport || callback;
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

}  // namespace zel::kit
