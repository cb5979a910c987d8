#include "tools/zelcam/view/CameraHub.h"

#include <algorithm>
#include <utility>

#include "tools/zelcam/camera/CameraFacts.h"
#include "tools/zelcam/camera/ColorArguments.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/TextTools.h"
#include "tools/zelcam/view/ViewMessages.h"

namespace zelcam {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kIdle{100};
constexpr std::chrono::milliseconds kPollPeriod{500};
// How often cameras are looked for while there is none: a library without a camera is unloaded, and sees none come.
constexpr std::chrono::seconds kSearchPeriod{2};
// Requests that may wait; a page that asks for more than a camera can do is told so.
constexpr std::size_t kMostWaiting = 256;
constexpr int kProtocol = 1;

constexpr unsigned kWatched[] = {ZEL_PARAM_TEMPERATURE, ZEL_PARAM_DROPPED_FRAMES, ZEL_PARAM_CAMSTATE};

std::optional<long long> NumberOf(const zel::Camera& camera, unsigned id) {
    const auto value = camera.parameter(id).try_value();
    return value ? std::optional(value->integer()) : std::nullopt;
}

}  // namespace

CameraHub::CameraHub(const HubOptions& options, PageOutlet& pages, FrameTaker& taker, NewestFrame& newest,
                     FrameLoans& loans)
    : m_Options(options),
      m_Pages(pages),
      m_Taker(taker),
      m_Newest(newest),
      m_Recording(taker, [this](const std::string& reason) { m_Jobs.Post([this, reason] { EndRecording(reason); }); }),
      m_Camera(m_Sdk, taker, newest, loans) {
    m_Camera.OnStop([this] { EndRecording(m_Camera.Camera().link_lost() ? "link lost" : "the camera was stopped"); });
}

CameraHub::~CameraHub() { End(); }

void CameraHub::End() {
    m_Sdk.on_hot_plug(nullptr);
    m_Ending = true;
    m_Jobs.Post([] {});
    if (m_Thread.joinable()) m_Thread.join();
    m_Camera.Close();
}

void CameraHub::Begin() {
    m_Sdk.on_hot_plug([this](const zel::HotPlugEvent& event) { m_Jobs.Post([this, event] { Plugged(event); }); });
    Search();
    if (!m_Cameras.empty()) {
        std::vector<zel::CameraInfo> found;
        for (const KnownCamera& camera : m_Cameras) found.push_back(camera.info);
        OpenNumber(m_Options.camera.empty() ? m_Cameras.front().info.number
                                            : zel::select_camera(found, m_Options.camera));
        FirstSettings();
        try {
            m_Camera.Start();
        } catch (const zel::Error& error) {
            Announce("error", error.what());
        }
    }
    m_Thread = std::thread([this] { Work(); });
}

void CameraHub::FirstSettings() {
    if (!std::exchange(m_SettingsDue, false)) return;
    zel::Camera& camera = m_Camera.Camera();
    for (const zel::SetResult& result : m_Options.settings.Apply(camera)) m_Camera.Remember(result);
    m_Camera.SetAveraging(m_Options.settings.processing.average);
    const ColorArguments& color = m_Options.settings.color;
    if (color.color) {
        const auto name = std::find(kColorSpaces.begin(), kColorSpaces.end(), color.space);
        m_Camera.SetColor(static_cast<zel::ColorSpace>(name - kColorSpaces.begin()));
    }
    m_Parameters.Read(camera);
}

void CameraHub::Work() {
    while (!m_Ending) {
        try {
            if (const JobQueue::Job job =
                    m_Jobs.Next(m_Parameters.IsExpecting() ? std::chrono::milliseconds(0) : kIdle)) {
                job();
            } else {
                Idle();
            }
        } catch (const std::exception& error) {
            Announce("error", error.what());
        }
    }
}

void CameraHub::Idle() {
    const Clock::time_point now = Clock::now();
    const bool present =
        std::any_of(m_Cameras.begin(), m_Cameras.end(), [](const KnownCamera& camera) { return camera.present; });
    if (!present && !m_Camera.IsOpen() && now >= m_NextSearch) {
        m_NextSearch = now + kSearchPeriod;
        Search();
        if (!m_Cameras.empty() && m_Cameras.front().present) {
            Plugged({true, m_Cameras.front().info});
        }
    }
    if (!m_Camera.IsOpen() || m_Camera.Camera().link_lost()) return m_Parameters.ExpectNothing();
    if (m_Parameters.IsExpecting()) {
        const Json changed = m_Parameters.ReadNext(m_Camera.Camera());
        if (changed.is_null()) return;
        Json message{{"type", "parameter"}};
        message.update(changed);
        m_Pages.SendTextToAll(MessageText(message));
    } else if (now >= m_NextPoll) {
        m_NextPoll = now + kPollPeriod;
        Poll();
    }
}

void CameraHub::Poll() {
    const zel::Camera& camera = m_Camera.Camera();
    for (const unsigned id : kWatched) AnnounceParameter(id);
    CameraCondition condition;
    condition.running = m_Camera.Runs();
    condition.link_lost = camera.link_lost();
    condition.lost_on_link = camera.link_drops();
    if (const auto tenths = NumberOf(camera, ZEL_PARAM_TEMPERATURE))
        condition.temperature_c = static_cast<double>(*tenths) / 10.0;
    condition.exposure_us = NumberOf(camera, ZEL_PARAM_EXPOSURE_TIME_US);
    condition.frame_time_us = NumberOf(camera, ZEL_PARAM_FRAME_TIME);
    condition.gain = NumberOf(camera, ZEL_PARAM_GAIN);
    // A camera that takes a number of frames stops by itself.
    if (condition.running && m_Camera.Trigger() == zel::Trigger::as_set &&
        NumberOf(camera, ZEL_PARAM_FRAME_COUNT).value_or(0) > 0 && NumberOf(camera, ZEL_PARAM_CAMSTATE) == 0) {
        m_Camera.Stop();
        condition.running = false;
        Announce("info", "the sequence is over");
    }
    TellLosses(condition);
    const std::lock_guard lock(m_ConditionMutex);
    m_Condition = condition;
}

void CameraHub::TellLosses(const CameraCondition& condition) {
    const std::uint64_t missing = m_Taker.Taken().missing;
    const std::uint64_t lost = std::max(missing, condition.lost_on_link);
    if (lost > m_ToldLost) {
        const std::uint64_t no_buffer = missing > condition.lost_on_link ? missing - condition.lost_on_link : 0;
        Announce("warning", Counted(lost - m_ToldLost, "frame") + " lost; since the start " +
                                std::to_string(condition.lost_on_link) + " on the link, " + std::to_string(no_buffer) +
                                " without a free buffer");
    }
    m_ToldLost = lost;
    const std::uint64_t of_disk = m_Recording.NewlyLost();
    if (of_disk > 0) Announce("warning", "the disk is too slow: " + Counted(of_disk, "frame") + " not recorded");
}

CameraCondition CameraHub::Condition() const {
    CameraCondition condition;
    {
        const std::lock_guard lock(m_ConditionMutex);
        condition = m_Condition;
    }
    condition.recording = m_Recording.State();
    return condition;
}

std::string CameraHub::EndRecording(const std::string& reason) {
    std::string text = m_Recording.End(reason);
    if (!text.empty()) Announce(m_Recording.WentWrong() ? "warning" : "info", text);
    return text;
}

// ---- which cameras there are ----

void CameraHub::Search() {
    m_Cameras.clear();
    for (const zel::CameraInfo& info : m_Sdk.cameras()) m_Cameras.push_back({info, true});
    AnnounceCameras();
}

void CameraHub::Plugged(const zel::HotPlugEvent& event) {
    const auto known = std::find_if(m_Cameras.begin(), m_Cameras.end(), [&](const KnownCamera& camera) {
        return camera.info.number == event.camera.number && camera.info.serial == event.camera.serial;
    });
    if (known == m_Cameras.end()) {
        m_Cameras.push_back({event.camera, event.connected});
    } else {
        known->present = event.connected;
    }
    AnnounceCameras();
    const std::string name = event.camera.name + " (" + event.camera.serial + ")";
    Announce(event.connected ? "info" : "warning", name + (event.connected ? " was plugged in" : " was unplugged"));
    if (!event.connected) return;
    const bool ours = IsWanted(event.camera);
    if (m_Camera.IsOpen() && (!m_Camera.Camera().link_lost() || !ours)) return;
    if (m_Camera.IsOpen()) {
        // There is another object for it now than the one that is open.
        m_Camera.OpenAgain(event.camera.number, m_Camera.HasCalibration());
        return LinkBack();
    }
    if (!ours) return;
    OpenNumber(event.camera.number);
    FirstSettings();
    m_Camera.Start();
    AnnounceCamera();
}

bool CameraHub::IsWanted(const zel::CameraInfo& camera) const {
    if (!m_WantedSerial.empty()) return camera.serial == m_WantedSerial;
    const std::string& wanted = m_Options.camera;
    return wanted.empty() || wanted == camera.serial || wanted == std::to_string(camera.number);
}

void CameraHub::CameraChanged(const zel::CameraEvent& event) {
    if (!m_Camera.IsOpen()) return;
    switch (event.kind) {
        case zel::CameraEvent::Kind::link_lost: {
            const auto ours = std::find_if(m_Cameras.begin(), m_Cameras.end(), [&](const KnownCamera& camera) {
                return camera.info.serial == m_WantedSerial;
            });
            if (ours != m_Cameras.end()) ours->present = false;
            AnnounceCameras();
            Announce("warning", m_Camera.Camera().info().name + ": the link is lost");
            EndRecording("link lost");
            const std::lock_guard lock(m_ConditionMutex);
            m_Condition.link_lost = true;
            return;
        }
        case zel::CameraEvent::Kind::link_back:
            return LinkBack();
        case zel::CameraEvent::Kind::camera:
            return Announce("info",
                            "camera event " + std::to_string(event.code) + ", value " + std::to_string(event.value));
    }
}

void CameraHub::LinkBack() {
    for (KnownCamera& camera : m_Cameras) camera.present = camera.present || camera.info.serial == m_WantedSerial;
    AnnounceCameras();
    for (const std::string& refused : m_Camera.Restore()) Announce("error", refused);
    m_Parameters.Expect();
    Announce("info", m_Camera.Camera().info().name + " is back with its settings" +
                         (m_Camera.Runs() ? ", and runs again" : ""));
    AnnounceCamera();
}

void CameraHub::OpenNumber(int number) {
    m_Camera.Open(number,
                  [this](const zel::CameraEvent& event) { m_Jobs.Post([this, event] { CameraChanged(event); }); });
    m_WantedSerial = m_Camera.Camera().info().serial;
    m_ToldLost = 0;
    m_Parameters.Read(m_Camera.Camera());
}

// ---- what is told ----

void CameraHub::Announce(const char* level, const std::string& text) {
    m_Pages.SendTextToAll(MessageText(EventMessage(level, text)));
}

void CameraHub::AnnounceCameras() { m_Pages.SendTextToAll(MessageText(CamerasMessage())); }

Json CameraHub::CamerasMessage() const {
    Json list = Json::array();
    for (const KnownCamera& camera : m_Cameras) {
        list.push_back({{"number", camera.info.number},
                        {"name", camera.info.name},
                        {"serial", camera.info.serial},
                        {"interface", camera.info.interface_type},
                        {"present", camera.present}});
    }
    return {{"type", "cameras"}, {"cameras", std::move(list)}};
}

void CameraHub::AnnounceCamera() {
    if (m_Camera.IsOpen()) {
        Poll();
    } else {
        const std::lock_guard lock(m_ConditionMutex);
        m_Condition = {};
    }
    m_Pages.SendTextToAll(MessageText(CameraMessage()));
}

Json CameraHub::CameraMessage() {
    Json json{{"type", "camera"}, {"serial", nullptr}};
    if (!m_Camera.IsOpen()) return json;
    const zel::Camera& camera = m_Camera.Camera();
    const CameraFacts facts = ReadFacts(camera);
    const ZelRoiBin region =
        camera.parameter(ZEL_PARAM_ROI_BIN).try_value().value_or(zel::ParameterValue(zel::ValueKind::region)).region();
    const bool monochrome = camera.is_monochrome();
    const auto color = m_Camera.Color();
    json["serial"] = facts.info.serial;
    json["name"] = facts.info.name;
    json["model"] = facts.model;
    json["firmware"] = facts.firmware;
    json["interface"] = facts.info.interface_type;
    json["monochrome"] = monochrome;
    json["bits"] = camera.number(ZEL_PARAM_BITS_PER_PIXEL);
    json["sensor"] = {{"width", camera.number(ZEL_PARAM_HSIZE)}, {"height", camera.number(ZEL_PARAM_VSIZE)}};
    json["cfa_phase"] = monochrome ? Json() : Json(camera.number(ZEL_PARAM_COLOR_FILTER_PHASE));
    json["taps"] = 1 << std::clamp(camera.number(ZEL_PARAM_TAPS_INDEX), 0LL, 2LL);
    json["calibration"] = {{"available", !m_Camera.LacksCalibration()}, {"on", m_Camera.IsCalibrated()}};
    json["color"] = {{"on", color.has_value()},
                     {"space", color ? Json(kColorSpaces[static_cast<std::size_t>(*color)]) : Json()},
                     {"spaces", monochrome ? Json::array() : Json(kColorSpaces)}};
    json["region"] = {
        {"x", region.XOrigin}, {"y", region.YOrigin}, {"width", region.XPixels}, {"height", region.YPixels}};
    json["binning"] = {{"x", region.XBin}, {"y", region.YBin}};
    json["averaging"] = m_Camera.Averaging();
    json["trigger_mode"] = m_Camera.Trigger() == zel::Trigger::software   ? "software"
                           : m_Camera.Trigger() == zel::Trigger::hardware ? "hardware"
                                                                          : "free";
    json["parameters"] = m_Parameters.ToJson();
    return json;
}

void CameraHub::AnnounceParameter(unsigned id) {
    const Json changed = m_Parameters.ReadOne(m_Camera.Camera(), id);
    if (changed.is_null()) return;
    Json message{{"type", "parameter"}};
    message.update(changed);
    m_Pages.SendTextToAll(MessageText(message));
}

void CameraHub::Welcome(int client) {
    m_Jobs.Post([this, client] {
        const Json hello{{"type", "hello"},
                         {"version", ZELCAM_VERSION},
                         {"protocol", kProtocol},
                         {"client", client},
                         {"folder", m_Options.folder}};
        for (const Json& message : {hello, CamerasMessage(), CameraMessage()}) {
            m_Pages.SendText(client, MessageText(message));
        }
    });
}

void CameraHub::Request(int client, Json message) {
    const Json number = Has(message, "request") ? message["request"] : Json();
    const auto answer = [this, client, number](const char* type, const std::string& text, const Json& result) {
        Json json{{"type", type}, {"request", number}, {"message", text}};
        if (!result.is_null()) json["result"] = result;
        m_Pages.SendText(client, MessageText(json));
    };
    if (m_Jobs.Waiting() >= kMostWaiting) return answer("failed", "too many requests wait for the camera", nullptr);
    m_Jobs.Post([this, answer, request = std::move(message)] {
        try {
            const Answer done = Carry(request);
            answer("done", done.message, done.result);
        } catch (const std::exception& error) {
            answer("failed", error.what(), nullptr);
        }
    });
}

}  // namespace zelcam
