// What the pages can ask for; docs/viewer-protocol.md has the members of each request.
#include <algorithm>
#include <iterator>
#include <utility>

#include "tools/zelcam/camera/Assignments.h"
#include "tools/zelcam/camera/ColorArguments.h"
#include "tools/zelcam/frames/PictureSaver.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/view/CameraHub.h"
#include "tools/zelcam/view/ViewMessages.h"

namespace zelcam {

namespace {

constexpr std::size_t kLongestName = 64;
constexpr std::size_t kLongestValue = 128;
constexpr const char* kRestarted = "; the camera was started again for it";

[[noreturn]] void Refuse(const std::string& what, const std::string& why, const std::string& advice = "") {
    throw Failure(what, why, advice, kRefused);
}

}  // namespace

CameraHub::Answer CameraHub::Carry(const Json& message) {
    static constexpr std::pair<const char*, Handler> kHandlers[] = {
        {"open", &CameraHub::Open},
        {"start", &CameraHub::Start},
        {"stop", &CameraHub::Stop},
        {"trigger", &CameraHub::SoftwareTrigger},
        {"trigger_mode", &CameraHub::TriggerMode},
        {"set", &CameraHub::Set},
        {"region", &CameraHub::Region},
        {"binning", &CameraHub::Binning},
        {"averaging", &CameraHub::Averaging},
        {"calibration", &CameraHub::Calibration},
        {"color", &CameraHub::Color},
        {"auto_exposure", &CameraHub::ExposeAutomatically},
        {"snapshot", &CameraHub::Snapshot},
        {"record", &CameraHub::Record},
        {"quit", &CameraHub::Quit},
    };
    const std::string type = TextIn(message, "type", kLongestName);
    const auto entry =
        std::find_if(std::begin(kHandlers), std::end(kHandlers), [&](const auto& row) { return row.first == type; });
    if (entry == std::end(kHandlers)) Refuse("'" + type + "'", "there is no such request");
    return (this->*entry->second)(message);
}

zel::Camera& CameraHub::Needed() const {
    if (!m_Camera.IsOpen()) Refuse("this can't be done", "no camera is open", "plug one in");
    if (m_Camera.Camera().link_lost()) Refuse("this can't be done", "the link to the camera is lost", "plug it in");
    return m_Camera.Camera();
}

CameraHub::Answer CameraHub::Open(const Json& message) {
    const std::string wanted = TextIn(message, "camera", kLongestName);
    const auto found = std::find_if(m_Cameras.begin(), m_Cameras.end(), [&](const KnownCamera& camera) {
        return camera.present && camera.info.serial == wanted;
    });
    if (found == m_Cameras.end()) Refuse("camera '" + wanted + "' can't be opened", "it is not there");
    const int number = found->info.number;
    try {
        OpenNumber(number);
        FirstSettings();
        m_Camera.Start();
    } catch (...) {
        AnnounceCamera();
        throw;
    }
    AnnounceCamera();
    return {m_Camera.Camera().info().name + " is open and runs", {}};
}

CameraHub::Answer CameraHub::Start(const Json&) {
    Needed();
    if (m_Camera.Runs()) return {"the camera runs already", {}};
    m_Camera.Start();
    m_ToldLost = 0;
    m_Parameters.Expect();
    Poll();
    return {"the camera runs", {}};
}

CameraHub::Answer CameraHub::Stop(const Json&) {
    Needed();
    m_Camera.Stop();
    Poll();
    return {"the camera is stopped", {}};
}

CameraHub::Answer CameraHub::SoftwareTrigger(const Json&) {
    zel::Camera& camera = Needed();
    if (!m_Camera.Runs() || m_Camera.Trigger() != zel::Trigger::software) {
        Refuse("no trigger was sent", "the camera does not wait for one", "choose the software trigger and start it");
    }
    camera.trigger();
    return {"a trigger was sent", {}};
}

CameraHub::Answer CameraHub::TriggerMode(const Json& message) {
    Needed();
    const std::string mode = TextIn(message, "mode", kLongestName);
    if (mode != "free" && mode != "software" && mode != "hardware") Refuse("mode '" + mode + "'", "there is none");
    const zel::Trigger trigger = mode == "free"       ? zel::Trigger::as_set
                                 : mode == "software" ? zel::Trigger::software
                                                      : zel::Trigger::hardware;
    const bool restarted = m_Camera.ChangeStopped([&] { m_Camera.SetTrigger(trigger); });
    m_Parameters.Expect();
    AnnounceCamera();
    return {"frames start " + std::string(mode == "free" ? "by themselves" : "with the " + mode + " trigger") +
                (restarted ? kRestarted : ""),
            {}};
}

CameraHub::Answer CameraHub::Set(const Json& message) {
    Needed();
    const zel::ParameterInfo& info = zel::find_parameter(TextIn(message, "name", kLongestName));
    const std::string value = TextIn(message, "value", kLongestValue);
    zel::SetResult result;
    bool restarted = false;
    const auto write = [&] { result = m_Camera.Set(info.id, value); };
    if (NeedsRestart(info.id)) {
        restarted = m_Camera.ChangeStopped(write);
    } else {
        write();
    }
    AnnounceParameter(info.id);
    m_Parameters.Expect();
    if (NeedsRestart(info.id)) AnnounceCamera();
    if (!result) throw Failure(result.text(), result.reason, "", kRefused);
    Json json = ToJson(result);
    json["range"] = result.range.known ? Json(result.range.text()) : Json();
    return {result.text() + (restarted ? kRestarted : ""), std::move(json)};
}

CameraHub::Answer CameraHub::RegionAnswer(const zel::SetResult& result, bool restarted) {
    m_Camera.Remember(result);
    m_Parameters.Expect();
    AnnounceCamera();
    return {result.text() + (restarted ? kRestarted : ""), ToJson(result)};
}

CameraHub::Answer CameraHub::Region(const Json& message) {
    zel::Camera& camera = Needed();
    zel::Region region{0, 0, camera.get(zel::settings::sensor_width), camera.get(zel::settings::sensor_height)};
    if (!Has(message, "full") || !FlagIn(message, "full")) {
        const Area area = AreaIn(message);
        region = {area.x, area.y, area.width, area.height};
    }
    zel::SetResult result;
    const bool restarted = m_Camera.ChangeStopped([&] { result = camera.set_region(region); });
    return RegionAnswer(result, restarted);
}

CameraHub::Answer CameraHub::Binning(const Json& message) {
    zel::Camera& camera = Needed();
    const zel::Binning binning{NumberIn(message, "x", 1, kLargestBinning), NumberIn(message, "y", 1, kLargestBinning)};
    zel::SetResult result;
    const bool restarted = m_Camera.ChangeStopped([&] { result = camera.set_binning(binning); });
    return RegionAnswer(result, restarted);
}

CameraHub::Answer CameraHub::Averaging(const Json& message) {
    Needed();
    const auto frames = static_cast<int>(NumberIn(message, "frames", 0, kMostAveraged));
    const bool restarted = m_Camera.ChangeStopped([&] { m_Camera.SetAveraging(frames); });
    AnnounceCamera();
    const std::string text = frames > 1 ? "each frame is the mean of " + std::to_string(frames) : "no averaging";
    return {text + (restarted ? kRestarted : ""), {}};
}

CameraHub::Answer CameraHub::Calibration(const Json& message) {
    Needed();
    const bool on = FlagIn(message, "on");
    const bool done = m_Camera.SetCalibration(on);
    AnnounceCamera();
    if (!done) Refuse("the taps are not corrected", "the camera has no calibration, or one tap", "");
    return {on ? "the taps are corrected" : "the taps are not corrected", {}};
}

CameraHub::Answer CameraHub::Color(const Json& message) {
    Needed();
    std::optional<zel::ColorSpace> space;
    if (FlagIn(message, "on")) {
        const std::string name = Has(message, "space") ? TextIn(message, "space", kLongestName) : kColorSpaces.front();
        const auto found = std::find(kColorSpaces.begin(), kColorSpaces.end(), name);
        if (found == kColorSpaces.end()) Refuse("color space '" + name + "'", "there is none");
        space = static_cast<zel::ColorSpace>(found - kColorSpaces.begin());
    }
    const bool restarted = m_Camera.ChangeStopped([&] { m_Camera.SetColor(space); });
    AnnounceCamera();
    return {std::string(space ? "frames come in color" : "frames come in grey") + (restarted ? kRestarted : ""), {}};
}

CameraHub::Answer CameraHub::ExposeAutomatically(const Json&) { Refuse("auto exposure", "it is not there yet"); }
CameraHub::Answer CameraHub::Snapshot(const Json&) { Refuse("snapshot", "it is not there yet"); }
CameraHub::Answer CameraHub::Record(const Json&) { Refuse("record", "it is not there yet"); }

CameraHub::Answer CameraHub::Quit(const Json&) {
    m_Quit = true;
    return {"the viewer ends", {}};
}

}  // namespace zelcam
