#include "devices/sim/link/SimDevice.h"

#include <algorithm>
#include <climits>

#include "devices/sim/link/Complaints.h"
#include "devices/sim/link/Player.h"
#include "devices/sim/sensor/Sensor.h"

namespace zel::sim {

namespace {

constexpr std::chrono::microseconds kPageLoad(1000);
constexpr std::chrono::microseconds kPageStore(10000);

std::chrono::microseconds ScaledTime(std::chrono::microseconds time, const Settings& settings) {
    return std::chrono::microseconds(static_cast<std::int64_t>(static_cast<double>(time.count()) / settings.speed));
}

FirmwareOptions OptionsOf(const Settings& settings) {
    FirmwareOptions options;
    options.calc_delay_ms = settings.calc_delay_ms;
    if (settings.Paced()) {
        options.flash_times.load = ScaledTime(kPageLoad, settings);
        options.flash_times.store = ScaledTime(kPageStore, settings);
    }
    options.cooling_seconds = settings.Paced() ? 20.0 / settings.speed : 0.05;
    return options;
}

CameraModel Sized(CameraModel model, const Settings& settings) {
    if (settings.width != 0) model.width = settings.width;
    if (settings.height != 0) model.height = settings.height;
    model.even_taps = settings.even_taps;
    if (model.Color() && settings.cfa_phase != 0) model.cfa_phase = settings.cfa_phase;
    if (!settings.color_space.empty()) model.color_space = settings.color_space;
    return settings.recording ? PlayerOf(model, *settings.recording) : model;
}

std::array<std::string, 3> AddressesOf(const PluginDescription& plugin, int number) {
    std::array<std::string, 3> addresses;
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        addresses[i] = plugin.address_formats[i];
        const std::size_t place = addresses[i].find('#');
        if (place != std::string::npos) addresses[i].replace(place, 1, std::to_string(number + 1));
    }
    return addresses;
}

// How far frames may be behind their time and still be made up for, because waits of the system are coarse.
constexpr auto kMadeUpFor = std::chrono::milliseconds(50);

// A camera without a pace would take one frame after the other just to drop it. It takes as long for a frame that is
// dropped as for one that is handed over, within bounds, so that it loses as many as it would and comes back soon.
constexpr auto kShortestDrop = std::chrono::microseconds(250);
constexpr auto kLongestDrop = std::chrono::milliseconds(5);

// How often a stalled camera looks whether it may go on.
constexpr auto kStallCheck = std::chrono::milliseconds(5);

}  // namespace

SimDevice::SimDevice(const PluginDescription& plugin, int number, const Settings& settings)
    : Firmware(Sized(ModelOfLink(plugin.interface_type, number), settings), OptionsOf(settings)),
      m_Settings(settings),
      m_Addresses(AddressesOf(plugin, number)),
      m_PortType(plugin.port_type_text) {}

kit::Description SimDevice::Describe() const {
    return {Name(), Model().serial, m_PortType, m_Addresses, Model().link_bytes_per_second};
}

FrameSource& SimDevice::Source() {
    if (!m_Source && m_Settings.recording) m_Source = std::make_unique<RecordedFrames>(*m_Settings.recording);
    if (!m_Source) {
        SensorModel sensor;
        sensor.width = Model().width;
        sensor.height = Model().height;
        sensor.bits = Model().bits;
        sensor.cfa_phase = Model().cfa_phase;
        sensor.seed = m_Settings.seed;
        sensor.scene = m_Settings.scene;
        sensor.motion = m_Settings.motion;
        sensor.taps = FactoryCalibration(Model());
        m_Source = std::make_unique<Sensor>(sensor);
    }
    return *m_Source;
}

void SimDevice::Prepare() { Source().Prepare(Now().settings, m_Settings.fill); }

// A recording that is not repeated has an end.
int SimDevice::LongestRun() const {
    if (!m_Settings.recording || m_Settings.recording->loop) return 0;
    return static_cast<int>(std::min<std::size_t>(m_Settings.recording->frames, INT_MAX));
}

void SimDevice::Start(kit::FrameSink& sink, const kit::Run& run) {
    Prepare();
    Clock::time_point next_ready{};
    while (run.triggered ? sink.WaitForTrigger() : !sink.Ended()) {
        FrameJob job{Now(), sink.NextNumber(), 0, {}};
        if (!Fetch(job)) return sink.Vanish();
        const bool exposed = Expose(sink, run, job, next_ready);
        SetExposureState(0);
        if (!exposed) return;
        const std::optional<Fault> fault = m_Faults.Next(FaultOccasion::kFrame);
        if (fault && fault->kind == FaultKind::kUnplugFrame) return sink.Vanish();
        if (fault && fault->kind == FaultKind::kStall && !Stall(sink, fault->argument)) return;
        if (fault && fault->kind == FaultKind::kLose) {
            sink.Lose(1);
        } else {
            HandOver(sink, job);
        }
    }
}

// Has the frame ready before its time has come. Frames that can't be had any more are a cable that was pulled.
bool SimDevice::Fetch(FrameJob& job) {
    FrameSource& source = Source();
    const std::string reason = source.Fetch(job.number);
    job.next_us = source.Pause(job.number).value_or(job.conditions.timing.Period());
    if (reason.empty()) return true;
    Complain("camera " + Model().serial + " lost the recording that it played (" + reason + ")");
    return false;
}

SimDevice::Clock::duration SimDevice::Scaled(std::int64_t microseconds) const {
    return std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double, std::micro>(static_cast<double>(microseconds) / m_Settings.speed));
}

// Lets the time of exposure and readout pass. Free running, frames become ready one period apart from the first one on,
// however long each took to render; a camera that fell far behind goes on from now. False when the run ended.
bool SimDevice::Expose(kit::FrameSink& sink, const kit::Run& run, FrameJob& job, Clock::time_point& next_ready) {
    job.ready = Clock::now();
    if (!m_Settings.Paced()) return true;
    const FrameTiming& timing = job.conditions.timing;
    const auto period = Scaled(job.next_us);
    const auto allowance = std::max<Clock::duration>(period, kMadeUpFor);
    const bool goes_on = !run.triggered && next_ready + allowance > job.ready;
    job.ready = goes_on ? next_ready : job.ready + Scaled(timing.exposure_us + timing.readout_us);
    next_ready = job.ready + period;
    SetExposureState(1);
    if (!sink.WaitUntil(job.ready - Scaled(timing.readout_us))) return false;
    SetExposureState(2);
    return sink.WaitUntil(job.ready);
}

// milliseconds: 0 until the faults are cleared, which ends every stall.
bool SimDevice::Stall(kit::FrameSink& sink, int milliseconds) {
    const unsigned clears = m_Faults.Clears();
    const auto end =
        milliseconds > 0 ? Clock::now() + std::chrono::milliseconds(milliseconds) : Clock::time_point::max();
    while (m_Faults.Clears() == clears && Clock::now() < end) {
        if (!sink.WaitUntil(std::min(end, Clock::now() + kStallCheck))) return false;
    }
    return true;
}

// A recording that is played as fast as the computer can loses nothing: it waits for the application.
void SimDevice::HandOver(kit::FrameSink& sink, const FrameJob& job) {
    const std::uint64_t samples = std::uint64_t{Model().width} * Model().height;
    kit::FrameFacts facts;
    facts.link_bytes = Packed(job) ? samples * 3 / 2 : samples * 2;
    facts.ready = job.ready;
    facts.patient = m_Settings.recording && !m_Settings.Paced();
    const auto fill = [&](std::span<std::uint8_t> memory) {
        const auto begun = Clock::now();
        Fill(job, memory);
        m_FrameCost = Clock::now() - begun;
        return true;
    };
    if (sink.Give(facts, fill) != kit::HandOver::kNoBuffer) return;
    if (m_Settings.Paced() && Scaled(job.next_us) > kShortestDrop) return;
    sink.WaitUntil(Clock::now() + std::clamp<Clock::duration>(m_FrameCost, kShortestDrop, kLongestDrop));
}

// What the camera sends, cut off where the host's memory ends. Two taps pack their samples; one alone sends them whole,
// and the host leaves them as they are.
void SimDevice::Fill(const FrameJob& job, std::span<std::uint8_t> memory) {
    const std::size_t samples = std::size_t{Model().width} * Model().height;
    const auto& [settings, timing, taps] = job.conditions;
    FrameSource& source = Source();
    auto* const sensor = dynamic_cast<Sensor*>(&source);
    if (sensor && m_Settings.fill == SensorFill::kNone && taps == 1 && memory.size() >= samples * 2) {
        sensor->Render(settings, m_Settings.fill, job.number,
                       {reinterpret_cast<std::uint16_t*>(memory.data()), samples});
        return;
    }
    m_Readout.ReadOut(source, settings, m_Settings.fill, job.number, taps, Packed(job), memory);
}

}  // namespace zel::sim
