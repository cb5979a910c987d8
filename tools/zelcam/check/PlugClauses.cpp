// Plugging and unplugging. Cameras that can be unplugged by command are (simulated ones); others are left alone.
#include <fmt/format.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "tools/zelcam/check/CameraSession.h"

namespace zelcam::check {

namespace {

// What the library reported.
struct HotPlug {
    int id;
    int camera;
    int context;
};

std::mutex s_Lock;
std::condition_variable s_Changed;
std::vector<HotPlug> s_Reports;
std::function<void()> s_OnReport;

void ZEL_CALL NoteReport(int id, int camera, int context) {
    std::unique_lock lock(s_Lock);
    const std::function<void()> also = s_OnReport;
    lock.unlock();
    if (also) also();
    lock.lock();
    s_Reports.push_back({id, camera, context});
    s_Changed.notify_all();
}

// Listens for the library's events while it lives.
class Listener {
  public:
    explicit Listener(CheckedPlugin& plugin, std::function<void()> on_report = nullptr)
        : m_Set(plugin.Library().set_camera_connection_event_callback) {
        if (!m_Set) throw Skipped("it does not export set_camera_connection_event_callback");
        {
            const std::lock_guard lock(s_Lock);
            s_Reports.clear();
            s_OnReport = std::move(on_report);
        }
        m_Set(NoteReport, kContext);
    }
    ~Listener() { m_Set(nullptr, 0); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    void Require(std::size_t count, int id, int camera) const {
        std::unique_lock lock(s_Lock);
        const bool came = s_Changed.wait_for(lock, std::chrono::milliseconds(kEventTimeMs),
                                             [&] { return s_Reports.size() >= count; });
        const char* const name = id == ICAMERA_INTERFACE_EVENT_ID_CONNECT ? "connect" : "disconnect";
        check::Require(came, fmt::format("the library's {} event did not come", name));
        const HotPlug& last = s_Reports[count - 1];
        check::Require(last.id == id && last.camera == camera && last.context == kContext,
                       fmt::format("the {} event came with id {}, camera {}, context {}", name, last.id, last.camera,
                                   last.context));
    }
    static std::size_t Count() {
        const std::lock_guard lock(s_Lock);
        return s_Reports.size();
    }

  private:
    static constexpr int kContext = 4711;
    SetConnectionEventCallbackFunction m_Set;
};

// Unplugged while it lives.
class Unplugged {
  public:
    Unplugged(CheckedPlugin& plugin, int camera) : m_Plugin(plugin), m_Camera(camera) {
        plugin.Control("unplug", camera);
    }
    ~Unplugged() {
        try {
            m_Plugin.Control("plug", m_Camera);
        } catch (const Skipped&) {
        }
    }
    Unplugged(const Unplugged&) = delete;
    Unplugged& operator=(const Unplugged&) = delete;

  private:
    CheckedPlugin& m_Plugin;
    int m_Camera;
};

std::string CheckHotPlug(CheckedPlugin& plugin, int camera) {
    const Listener listener(plugin);
    {
        const Unplugged unplugged(plugin, camera);
        listener.Require(1, ICAMERA_INTERFACE_EVENT_ID_DISCONNECT, camera);
    }
    listener.Require(2, ICAMERA_INTERFACE_EVENT_ID_CONNECT, camera);
    return "disconnect, connect";
}

std::string CheckLinkEvents(CheckedPlugin& plugin, int camera) {
    const Listener listener(plugin);
    CameraSession session(plugin, camera);
    session.Open();
    session.host.Forget();
    {
        const Unplugged unplugged(plugin, camera);
        Require(session.host.WaitForEvent(CAMERA_EVENT_DISCONNECT, kEventTimeMs), "event 8 did not come");
        listener.Require(1, ICAMERA_INTERFACE_EVENT_ID_DISCONNECT, camera);
    }
    Require(session.host.WaitForEvent(CAMERA_EVENT_RECONNECT, kEventTimeMs), "event 9 did not come");
    return "event 8 and the library's, event 9";
}

std::string CheckUnplugged(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    {
        const Unplugged unplugged(plugin, camera);
        ICameraInterface& transport = session.transport;
        const std::pair<const char*, int> codes[] = {{"Connect", transport.Connect()},
                                                     {"Start", transport.Start()},
                                                     {"StartTrigger", transport.StartTrigger()},
                                                     {"Stop", transport.Stop()}};
        for (const auto& [name, code] : codes) Require(code != 0, std::string(name) + " answers 0");
        std::uint8_t bytes[10] = {0, 0, 7, SYNC_TABLE_CMD_GET, 0, 4, H_SIZE};
        Require(transport.SendData(10, bytes) == 0, "SendData answers more than 0");
        Require(transport.RecvData(10, bytes, 50) == 0, "RecvData answers more than 0");
    }
    session.Open();
    Require(!session.host.GetText(HW_MODEL).empty(), "it does not answer when it is back");
    return "error codes, no bytes; it works when it is back";
}

std::string CheckUnplugInRun(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    session.Launch();
    session.WaitForFrames(1);
    {
        const Unplugged unplugged(plugin, camera);
        Require(session.host.WaitForEvent(CAMERA_EVENT_DISCONNECT, kEventTimeMs), "event 8 did not come");
        session.transport.Stop();
        session.RequireSilence("of a camera that is gone");
        const HostCamera::Seen seen = session.host.Snapshot();
        Require(seen.taken == seen.returned, "a record is still out");
    }
    session.transport.Disconnect();
    session.Open();
    session.Launch();
    session.WaitForFrames(1);
    return "event 8, silence; frames when it is back";
}

std::string CheckNoListener(CheckedPlugin& plugin, int camera) {
    { const Listener ended(plugin); }
    { const Unplugged unplugged(plugin, camera); }
    std::this_thread::sleep_for(kShortestSilence);
    Require(Listener::Count() == 0, fmt::format("{} events", Listener::Count()));
    return "unplugged and plugged";
}

std::string CheckUnloadEnds(CheckedPlugin& plugin, int camera) {
    if (!plugin.Library().lib_unload) throw Skipped("it does not export lib_unload");
    const Listener listener(plugin);
    CameraSession session(plugin, camera);
    plugin.LibUnload();
    { const Unplugged unplugged(plugin, camera); }
    std::this_thread::sleep_for(kShortestSilence);
    Require(Listener::Count() == 0, fmt::format("{} events", Listener::Count()));
    return "unplugged and plugged";
}

// The application may search inside an event, and close the SDK.
std::string CheckExportsInside(CheckedPlugin& plugin, int camera) {
    if (!plugin.Library().lib_unload) throw Skipped("it does not export lib_unload");
    std::atomic<int> returned{0};
    const CameraSession keeps_it_alive(plugin, camera);
    const Listener listener(plugin, [&] {
        plugin.CountCameras();
        plugin.Create(camera);
        plugin.LibUnload();
        ++returned;
    });
    {
        const Unplugged unplugged(plugin, camera);
        listener.Require(1, ICAMERA_INTERFACE_EVENT_ID_DISCONNECT, camera);
    }
    Require(returned == 1, fmt::format("{} events", returned.load()));
    return "a search, create and lib_unload";
}

constexpr Clause kPlugClauses[] = {
    {"plug", "hot-plug-events", "the library reports the camera that went and came, with the context given", true,
     CheckHotPlug},
    {"plug", "link-events", "a connected camera reports event 8, then 9, and the library its disconnect", true,
     CheckLinkEvents},
    {"plug", "unplugged-operations", "without its camera a transport answers error codes and no bytes", true,
     CheckUnplugged},
    {"plug", "unplug-in-run", "unplugging ends a run with event 8, and the camera works when it is back", true,
     CheckUnplugInRun},
    {"plug", "no-listener", "no event is reported once the callback is null", true, CheckNoListener},
    {"plug", "unload-ends-events", "no event is reported after lib_unload", true, CheckUnloadEnds},
    {"plug", "exports-inside-event", "exports work inside an event, and lib_unload does not wait for it", true,
     CheckExportsInside},
};

}  // namespace

std::span<const Clause> PlugClauses() { return kPlugClauses; }

}  // namespace zelcam::check
