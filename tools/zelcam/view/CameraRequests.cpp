// What the pages can ask for; docs/viewer-protocol.md has the members of each request.
#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "tools/zelcam/camera/Assignments.h"
#include "tools/zelcam/camera/CameraFacts.h"
#include "tools/zelcam/camera/ColorArguments.h"
#include "tools/zelcam/frames/PictureSaver.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/view/AutoExposure.h"
#include "tools/zelcam/view/CameraHub.h"
#include "tools/zelcam/view/ViewMessages.h"

namespace zelcam {

namespace {

constexpr std::size_t kLongestName = 64;
constexpr std::size_t kLongestValue = 128;
constexpr int kMostTries = 12;
constexpr int kFramesUnderWay = 2;
constexpr long long kLongestExposureUs = 2000000;  // that is tried without being asked for
constexpr std::chrono::milliseconds kFrameCheck{50};
constexpr unsigned kMostRecorded = 1000000000;  // frames or seconds
// In the order of zel::record::Compression.
constexpr const char* kCompressions[] = {"none", "deflate", "zstd"};
constexpr const char* kRestarted = "; the camera was started again for it";

[[noreturn]] void RefuseRequest(const std::string& what, const std::string& why, const std::string& advice = "") {
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
    if (entry == std::end(kHandlers)) RefuseRequest("'" + type + "'", "there is no such request");
    return (this->*entry->second)(message);
}

zel::Camera& CameraHub::Needed() const {
    if (!m_Camera.IsOpen()) RefuseRequest("this can't be done", "no camera is open", "plug one in");
    if (m_Camera.Camera().link_lost())
        RefuseRequest("this can't be done", "the link to the camera is lost", "plug it in");
    return m_Camera.Camera();
}

// A recording is of one run: what would end it has to wait.
void CameraHub::RequireNoRecording() const {
    if (m_Recording.Runs()) RefuseRequest("this can't be done", "a recording runs", "end it first");
}

bool CameraHub::ChangeStopped(const std::function<void()>& change) {
    if (m_Camera.Runs()) RequireNoRecording();
    return m_Camera.ChangeStopped(change);
}

CameraHub::Answer CameraHub::Open(const Json& message) {
    RequireNoRecording();
    const std::string wanted = TextIn(message, "camera", kLongestName);
    const auto found = std::find_if(m_Cameras.begin(), m_Cameras.end(), [&](const KnownCamera& camera) {
        return camera.present && camera.info.serial == wanted;
    });
    if (found == m_Cameras.end()) RefuseRequest("camera '" + wanted + "' can't be opened", "it is not there");
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
        RefuseRequest("no trigger was sent", "the camera does not wait for one",
                      "choose the software trigger and start it");
    }
    camera.trigger();
    return {"a trigger was sent", {}};
}

CameraHub::Answer CameraHub::TriggerMode(const Json& message) {
    Needed();
    const std::string mode = TextIn(message, "mode", kLongestName);
    if (mode != "free" && mode != "software" && mode != "hardware")
        RefuseRequest("mode '" + mode + "'", "there is none");
    const zel::Trigger trigger = mode == "free"       ? zel::Trigger::as_set
                                 : mode == "software" ? zel::Trigger::software
                                                      : zel::Trigger::hardware;
    const bool restarted = ChangeStopped([&] { m_Camera.SetTrigger(trigger); });
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
        restarted = ChangeStopped(write);
    } else {
        write();
    }
    AnnounceParameter(info.id);
    m_Parameters.Expect();
    m_Recording.SetGain(static_cast<std::int32_t>(m_Camera.Camera().number(ZEL_PARAM_GAIN)));
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
    const bool restarted = ChangeStopped([&] { result = camera.set_region(region); });
    return RegionAnswer(result, restarted);
}

CameraHub::Answer CameraHub::Binning(const Json& message) {
    zel::Camera& camera = Needed();
    const zel::Binning binning{NumberIn(message, "x", 1, kLargestBinning), NumberIn(message, "y", 1, kLargestBinning)};
    zel::SetResult result;
    const bool restarted = ChangeStopped([&] { result = camera.set_binning(binning); });
    return RegionAnswer(result, restarted);
}

CameraHub::Answer CameraHub::Averaging(const Json& message) {
    Needed();
    const auto frames = static_cast<int>(NumberIn(message, "frames", 0, kMostAveraged));
    const bool restarted = ChangeStopped([&] { m_Camera.SetAveraging(frames); });
    AnnounceCamera();
    const std::string text = frames > 1 ? "each frame is the mean of " + std::to_string(frames) : "no averaging";
    return {text + (restarted ? kRestarted : ""), {}};
}

CameraHub::Answer CameraHub::Calibration(const Json& message) {
    Needed();
    RequireNoRecording();
    const bool on = FlagIn(message, "on");
    const bool done = m_Camera.SetCalibration(on);
    AnnounceCamera();
    if (!done) RefuseRequest("the taps are not corrected", "the camera has no calibration, or one tap", "");
    return {on ? "the taps are corrected" : "the taps are not corrected", {}};
}

CameraHub::Answer CameraHub::Color(const Json& message) {
    Needed();
    std::optional<zel::ColorSpace> space;
    if (FlagIn(message, "on")) {
        const std::string name = Has(message, "space") ? TextIn(message, "space", kLongestName) : kColorSpaces.front();
        const auto found = std::find(kColorSpaces.begin(), kColorSpaces.end(), name);
        if (found == kColorSpaces.end()) RefuseRequest("color space '" + name + "'", "there is none");
        space = static_cast<zel::ColorSpace>(found - kColorSpaces.begin());
    }
    const bool restarted = ChangeStopped([&] { m_Camera.SetColor(space); });
    AnnounceCamera();
    return {std::string(space ? "frames come in color" : "frames come in grey") + (restarted ? kRestarted : ""), {}};
}

// Other requests end it: nobody shall wait for an exposure to be found.
CameraHub::Answer CameraHub::ExposeAutomatically(const Json& message) {
    zel::Camera& camera = Needed();
    if (!m_Camera.Runs() || m_Camera.Trigger() != zel::Trigger::as_set) {
        RefuseRequest("auto exposure", "no frames come by themselves", "start the camera without a trigger");
    }
    const Area area = Has(message, "region") ? AreaIn(message["region"]) : Area{};
    const zel::Parameter exposure = camera.parameter(ZEL_PARAM_EXPOSURE_TIME_US);
    const zel::ValueRange range = exposure.range();
    const long long black = camera.number(ZEL_PARAM_OPTICAL_BLACK_LEVEL);
    ExposureStep step;
    step.least = range.known ? std::max(range.minimum, 1LL) : 1;
    step.most = std::max(range.known ? std::min(range.maximum, kLongestExposureUs) : kLongestExposureUs, step.least);
    const long long before = exposure.integer();
    // Frames that were exposed before the setting, and an average that has some of those in it.
    const auto stale = static_cast<std::uint64_t>(kFramesUnderWay + m_Camera.Averaging());
    std::uint64_t wanted = m_Taker.Sequence() + 1;
    const char* ending = "";
    for (int tries = 0; tries < kMostTries; ++tries) {
        const LiveFramePointer frame = WaitForFrame(wanted);
        if (!frame) {
            if (m_Jobs.Waiting() == 0) RefuseRequest("auto exposure", "no frame came");
            ending = "; ended, since something else was asked for";
            break;
        }
        step.now = exposure.integer();
        step.brightness = BrightnessOf(frame->GreySamples(), area, black);
        const auto next = NextExposure(step);
        if (!next) break;
        m_Camera.Set(ZEL_PARAM_EXPOSURE_TIME_US, std::to_string(*next));
        AnnounceParameter(ZEL_PARAM_EXPOSURE_TIME_US);
        wanted = m_Taker.Sequence() + 1 + stale;
    }
    m_Parameters.Expect();
    const long long now = exposure.integer();
    std::string text = "exposure time " + std::to_string(before) + " -> " + std::to_string(now) +
                       " us; the brightest pixels are at " + std::to_string(std::lround(100.0 * step.brightness)) +
                       " %" + ending;
    if (now == step.most) text += "; the exposure time is as long as this goes";
    if (now == step.least) text += "; the exposure time is as short as the camera can";
    return {text, {{"before", before}, {"exposure_us", now}, {"brightness", step.brightness}}};
}

LiveFramePointer CameraHub::WaitForFrame(std::uint64_t sequence) const {
    const auto deadline = std::chrono::steady_clock::now() + m_Camera.Camera().frame_timeout();
    while (m_Jobs.Waiting() == 0 && std::chrono::steady_clock::now() < deadline) {
        if (auto frame = m_Newest.WaitFor(sequence, kFrameCheck)) return frame;
    }
    return nullptr;
}

CameraHub::Answer CameraHub::Snapshot(const Json& message) {
    const std::string format = Has(message, "format") ? TextIn(message, "format", kLongestName) : "tif";
    if (format != "tif" && format != "png") RefuseRequest("format '" + format + "'", "there is none", "tif or png");
    const LiveFramePointer live = m_Newest.Get();
    if (!live || !m_Camera.IsOpen()) RefuseRequest("nothing was saved", "there is no frame", "start the camera");
    const bool color = format == "png" && !live->frame.color16().empty();
    PictureOptions options;
    options.folder = m_Options.folder;
    options.format = color ? "16" : format == "png" ? "png" : "tiff";
    PictureSettings settings{m_Camera.Camera().number(ZEL_PARAM_GAIN), m_Camera.Averaging(), std::nullopt};
    if (color) settings.color = live->frame.color();
    // Only reads the frame, since nothing is scaled.
    const Json saved = PictureSaver(options, 1, ReadFacts(m_Camera.Camera()), settings).Save(*live->frame.native());
    const std::string file = saved["path"].get<std::string>();
    return {"saved as " + file, {{"file", file}, {"frame", live->frame.number()}}};
}

CameraHub::Answer CameraHub::Record(const Json& message) {
    Needed();
    if (!FlagIn(message, "on")) {
        if (!m_Recording.Runs()) RefuseRequest("there is nothing to end", "no recording runs");
        return {EndRecording("ended by the user"), {}};
    }
    if (m_Recording.Runs()) RefuseRequest("nothing is recorded", "a recording runs already");
    if (!m_Camera.Runs()) RefuseRequest("nothing is recorded", "the camera does not run", "start it");
    RecordingWish wish;
    wish.folder = m_Options.folder;
    if (Has(message, "frames")) wish.frames = NumberIn(message, "frames", 0, kMostRecorded);
    if (Has(message, "seconds")) wish.seconds = RealIn(message, "seconds", 0.0, kMostRecorded);
    const std::string compress = Has(message, "compress") ? TextIn(message, "compress", kLongestName) : "none";
    const auto found = std::find(std::begin(kCompressions), std::end(kCompressions), compress);
    if (found == std::end(kCompressions)) RefuseRequest("compression '" + compress + "'", "there is none");
    wish.compression = static_cast<zel::record::Compression>(found - std::begin(kCompressions));
    wish.averaged = m_Camera.Averaging();
    const std::string file = m_Recording.Begin(m_Camera.Shared(), wish);
    return {"frames go to " + file, {{"file", file}}};
}

CameraHub::Answer CameraHub::Quit(const Json&) {
    m_Quit = true;
    return {"the viewer ends", {}};
}

}  // namespace zelcam
