#include "bindings/gstreamer/CameraSource.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "zel/Plugins.h"
#include "zel/Settings.h"
#include "zel/detail/SdkState.h"

namespace zel::gst {

namespace {

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(separator, start), text.size());
        if (end > start) parts.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

// So many numbers with commas between them.
std::vector<unsigned> Numbers(const char* property, const std::string& text, std::size_t count) {
    const std::vector<std::string> parts = Split(text, ',');
    if (parts.size() != count) {
        throw Error(ErrorKind::invalid_argument, std::string(property) + " '" + text + "'",
                    "not " + std::to_string(count) + " numbers with commas between them");
    }
    std::vector<unsigned> numbers;
    for (const std::string& part : parts) {
        numbers.push_back(static_cast<unsigned>(parse_integer(property, part, 0, 0x7FFFFFFF)));
    }
    return numbers;
}

void SetParameters(const Camera& camera, const std::string& text) {
    for (const std::string& assignment : Split(text, ';')) {
        const std::size_t sign = assignment.find('=');
        if (sign == std::string::npos) {
            throw Error(ErrorKind::invalid_argument, "settings '" + assignment + "'", "not NAME=VALUE");
        }
        camera.parameter(assignment.substr(0, sign)).set(assignment.substr(sign + 1));
    }
}

void SetRegion(const Camera& camera, const Settings& settings) {
    if (settings.roi.empty() && settings.binning.empty()) return;
    Region region;
    Binning binning;
    if (!settings.roi.empty()) {
        const auto numbers = Numbers("roi", settings.roi, 4);
        region = {numbers[0], numbers[1], numbers[2], numbers[3]};
    }
    if (!settings.binning.empty()) {
        const auto factors = Numbers("binning", settings.binning, 2);
        binning = {factors[0], factors[1]};
    }
    camera.set_region_and_binning(settings.roi.empty() ? nullptr : &region,
                                  settings.binning.empty() ? nullptr : &binning);
}

// What the settings promise. The frames have the last word: a region of the sensor's width may come with all its rows.
Picture ExpectedPicture(const Camera& camera, bool color) {
    const ZelRoiBin region = camera.get(settings::region_and_binning);
    Picture picture;
    picture.binning = {std::max(region.XBin, 1u), std::max(region.YBin, 1u)};
    picture.width = std::max(region.XPixels / picture.binning.x, 1u);
    picture.height = std::max(region.YPixels / picture.binning.y, 1u);
    picture.bits = camera.get(settings::bits);
    picture.color = color;
    return picture;
}

// On purpose: the SDK object is never destroyed from here. It is one for the whole program, which may use it beside the
// element without being counted as one of its users.
void KeepSdk() { [[gnu::used]] static const detail::SdkState* const s_Kept = new detail::SdkState; }

}  // namespace

CameraSource::CameraPointer CameraSource::Current() const {
    const std::lock_guard lock(m_Mutex);
    return m_Camera;
}

Picture CameraSource::CurrentPicture() const {
    const std::lock_guard lock(m_Mutex);
    return m_Picture;
}

void CameraSource::Open(const Settings& settings) {
    const std::lock_guard access(m_Access);
    m_Settings = settings;
    CameraPointer camera = OpenCamera();
    camera->on_event([this](const CameraEvent&) {
        const std::lock_guard lock(m_Mutex);
        m_Changed.notify_all();
    });
    Configure(*camera);
    const std::lock_guard lock(m_Mutex);
    m_Counter = {};
    m_Before = {};
    m_Camera = std::move(camera);
}

CameraSource::CameraPointer CameraSource::OpenCamera() {
    CameraPointer parked = std::exchange(m_Parked, nullptr);
    if (parked && m_ParkedName == m_Settings.camera && !m_Settings.calibrated && !parked->link_lost()) return parked;
    parked.reset();
    if (!m_Settings.plugins.empty()) use_plugins(m_Settings.plugins);
    KeepSdk();
    if (!m_Sdk) m_Sdk = std::make_unique<Sdk>();
    OpenOptions options;
    options.calibrated = m_Settings.calibrated;
    auto camera = std::make_shared<Camera>(m_Sdk->open(m_Settings.camera, options));
    if (m_Settings.calibrated && !camera->set_calibration(true)) {
        throw Error(ErrorKind::refused, "calibrated", camera->label() + " has no calibration to correct its taps with",
                    "see 'zelcam calibrate show'");
    }
    return camera;
}

void CameraSource::Close() {
    const std::lock_guard access(m_Access);
    CameraPointer camera = Current();
    if (!camera) return;
    EndRun();
    {
        const std::lock_guard lock(m_Mutex);
        m_Camera = nullptr;
    }
    camera->stop();
    camera->on_event(nullptr);
    // A frame that somebody still holds, often the sink its last one, keeps its camera open, and nobody could open it
    // again.
    m_Parked = std::move(camera);
    m_ParkedName = m_Settings.camera;
    ReleaseParked();
}

void CameraSource::Release() {
    const std::lock_guard access(m_Access);
    ReleaseParked();
}

void CameraSource::ReleaseParked() {
    if (!m_Parked || m_Parked->frames_held() > 0) return;
    m_Parked.reset();
    m_Sdk.reset();
}

void CameraSource::Configure(Camera& camera) {
    SetParameters(camera, m_Settings.parameters);
    SetRegion(camera, m_Settings);
    if (m_Settings.exposure_us > 0) camera.set(settings::exposure, std::chrono::microseconds(m_Settings.exposure_us));
    if (m_Settings.gain >= 0) camera.set(settings::gain, static_cast<unsigned>(m_Settings.gain));
    if (m_Settings.buffers > 0) camera.set(settings::buffers, m_Settings.buffers);
    const bool color = m_Settings.color && !camera.is_monochrome();
    if (color) {
        camera.use_color({ColorFormat::rgb8, ColorSpace::srgb});
    } else {
        camera.use_grey();
    }
    m_Buffers = static_cast<int>(camera.number(ZEL_PARAM_NUM_IMAGE_BUFFERS));
    const Picture picture = ExpectedPicture(camera, color);
    {
        const std::lock_guard lock(m_Mutex);
        m_Picture = picture;
    }
    ReadTiming(camera);
}

void CameraSource::ReadTiming(Camera& camera) {
    m_TimingChanged = false;
    const bool runs_freely =
        m_Settings.trigger == zel::Trigger::as_set && camera.number(ZEL_PARAM_HW_TRIGGER_ACTIVE) == 0;
    const auto frame_us = static_cast<unsigned>(runs_freely ? camera.number(ZEL_PARAM_FRAME_TIME) : 0);
    const std::lock_guard lock(m_Mutex);
    m_Picture.frame_us = frame_us;
}

void CameraSource::Pause() {
    m_Playing = false;
    const CameraPointer camera = Current();
    if (!camera) return;
    camera->interrupt();
    EndRun();
    camera->stop();
}

void CameraSource::Halt() {
    m_Halted = true;
    if (const CameraPointer camera = Current()) {
        camera->interrupt();
        if (m_Starting) camera->stop();
    }
    const std::lock_guard lock(m_Mutex);
    m_Changed.notify_all();
}

void CameraSource::Begin() {
    EndRun();
    StartOptions options;
    options.trigger = m_Settings.trigger;
    m_Starting = true;
    try {
        if (!m_Halted) m_Camera->start(options);
        m_Starting = false;
    } catch (...) {
        m_Starting = false;
        throw;
    }
    // The camera has recalculated its settings, and its times with them.
    if (!Halts()) ReadTiming(*m_Camera);
}

Taken CameraSource::Next() {
    while (!Halts()) {
        try {
            if (!m_Camera->running()) Begin();
            if (m_TimingChanged) ReadTiming(*m_Camera);
            if (Halts()) break;
            FrameResult result = m_Camera->wait_frame(m_Camera->frame_timeout(), m_Settings.order);
            if (result) return Accept(result.take());
            if (Halts()) break;
            switch (result.reason()) {
                case Reason::interrupted:
                    continue;
                case Reason::sequence_over:
                    return {{}, true, false};
                case Reason::exposing:
                case Reason::waits_for_hardware:
                case Reason::waits_for_software:
                    continue;  // a trigger may take as long as it likes
                default:
                    m_Camera->throw_no_frame(result.no_frame());
            }
        } catch (const Error&) {
            if (!Halts()) throw;  // else it is what a start that was ended says
        }
    }
    // A pause that came just before a start has missed it.
    if (!m_Playing) m_Camera->stop();
    return {};
}

Taken CameraSource::Accept(Frame frame) {
    const FrameInfo info = frame.info();
    const std::uint64_t skipped = m_Camera->skipped();
    const std::lock_guard lock(m_Mutex);
    m_Picture.width = info.width;
    m_Picture.height = info.height;
    m_Picture.bits = info.bits;
    const std::uint64_t missing = m_Counter.missing();
    m_Counter.frame(info.number, info.arrival_ms);
    m_Counter.set_skipped(skipped);
    return {std::move(frame), false, m_Counter.missing() > missing};
}

void CameraSource::AwaitLink() {
    m_Camera->stop();
    {
        std::unique_lock lock(m_Mutex);
        m_Changed.wait(lock, [this] { return Halts() || !m_Camera->link_lost(); });
    }
    if (Halts()) return;
    const std::lock_guard access(m_Access);
    Configure(*m_Camera);
}

void CameraSource::EndRun() {
    const Counts counts = CurrentCounts();
    const std::lock_guard lock(m_Mutex);
    m_Before = counts;
    m_Counter = {};
}

Counts CameraSource::CurrentCounts() const {
    const CameraPointer camera = Current();
    const std::uint64_t link_drops = camera && camera->running() && !camera->link_lost() ? camera->link_drops() : 0;
    const std::lock_guard lock(m_Mutex);
    Counts counts = m_Before;
    const Drops drops = m_Counter.count(link_drops);
    counts.frames += m_Counter.frames();
    counts.drops.link += link_drops;
    counts.drops.no_buffer += drops.no_buffer;
    counts.drops.skipped += drops.skipped;
    return counts;
}

std::uint64_t CameraSource::Dropped() const {
    const std::lock_guard lock(m_Mutex);
    return m_Before.drops.link + m_Before.drops.no_buffer + m_Counter.count(0).no_buffer;
}

std::uint64_t CameraSource::Frames() const {
    const std::lock_guard lock(m_Mutex);
    return m_Before.frames + m_Counter.frames();
}

void CameraSource::SetExposure(unsigned microseconds) {
    const std::lock_guard access(m_Access);
    m_Settings.exposure_us = microseconds;
    const CameraPointer camera = Current();
    if (!camera || microseconds == 0) return;
    camera->set(settings::exposure, std::chrono::microseconds(microseconds));
    m_TimingChanged = true;
}

void CameraSource::SetGain(int gain) {
    const std::lock_guard access(m_Access);
    m_Settings.gain = gain;
    const CameraPointer camera = Current();
    if (camera && gain >= 0) camera->set(settings::gain, static_cast<unsigned>(gain));
}

void CameraSource::Trigger() {
    const std::lock_guard access(m_Access);
    const CameraPointer camera = Current();
    if (!camera || !camera->running()) {
        throw Error(ErrorKind::refused, "a software trigger", "the camera is not started",
                    "set the pipeline to PLAYING");
    }
    camera->trigger();
}

}  // namespace zel::gst
