#include "devices/sim/link/SimCamera.h"

#include <algorithm>
#include <climits>
#include <limits>

#include "devices/sim/link/ExchangeText.h"
#include "devices/sim/link/Player.h"

namespace zel::sim {

namespace {

constexpr auto kUnpluggedReceive = std::chrono::milliseconds(10);

constexpr std::chrono::microseconds kPageLoad(1000);
constexpr std::chrono::microseconds kPageStore(10000);

std::chrono::microseconds Scaled(std::chrono::microseconds time, const Settings& settings) {
    return std::chrono::microseconds(static_cast<std::int64_t>(static_cast<double>(time.count()) / settings.speed));
}

FirmwareOptions OptionsOf(const Settings& settings) {
    FirmwareOptions options;
    options.calc_delay_ms = settings.calc_delay_ms;
    if (settings.Paced()) {
        options.flash_times.load = Scaled(kPageLoad, settings);
        options.flash_times.store = Scaled(kPageStore, settings);
    }
    if (settings.recording && !settings.recording->loop) {
        options.longest_run = static_cast<int>(std::min<std::size_t>(settings.recording->frames, INT_MAX));
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

// A datagram whose header announces 4096 bytes, and as many.
std::vector<std::uint8_t> Oversize() {
    std::vector<std::uint8_t> bytes(3 + 4096, 0x5A);
    bytes[0] = 9;
    bytes[1] = 0x10;
    bytes[2] = 0x00;
    return bytes;
}

// Header and line end of a reply stay whole.
void Garble(std::vector<std::uint8_t>& answer) {
    if (answer.size() < 7) return;
    std::size_t middle = answer.size() / 2;
    if (answer[middle] == ' ') ++middle;
    answer[middle] = '?';
}

// Bytes without sense, the same ones each time.
std::vector<std::uint8_t> Garbage() {
    std::vector<std::uint8_t> bytes(64);
    std::uint32_t state = 12345;
    for (std::uint8_t& byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    return bytes;
}

}  // namespace

SimCamera::SimCamera(const CameraModel& model, const Settings& settings)
    : m_Model(Sized(model, settings)), m_Settings(settings), m_Firmware(m_Model, OptionsOf(settings)) {}

int SimCamera::Send(std::span<const std::uint8_t> datagram) {
    bool vanished = false;
    int sent = 0;
    {
        const platform::ScopedLock lock(m_Lock);
        if (!m_Plugged) return 0;
        const std::optional<Fault> fault = FaultOf(datagram);
        if (fault && fault->kind == FaultKind::kUnplug) {
            vanished = UnplugLocked();
        } else {
            Record(datagram);
            sent = Answer(datagram, fault);
        }
    }
    m_Changed.notify_all();
    if (vanished && m_Vanished) m_Vanished();
    return sent;
}

void SimCamera::Record(std::span<const std::uint8_t> datagram) {
    ++m_Exchanges;
    m_Log.push_back(ExchangeText(datagram));
    if (m_Log.size() > kLongestLog) m_Log.pop_front();
}

std::optional<Fault> SimCamera::FaultOf(std::span<const std::uint8_t> datagram) {
    if (m_Faults.Empty()) return std::nullopt;
    if (m_Firmware.BeginsTableRow(datagram)) {
        const std::optional<Fault> row = m_Faults.Next(FaultOccasion::kTableRow);
        if (row) {
            const bool nan = row->kind == FaultKind::kNanGain;
            m_Firmware.SpoilTableRow(nan ? std::numeric_limits<float>::quiet_NaN() : 3.0f);
        }
    }
    const std::string_view text = IsTableRequest(datagram) ? std::string_view() : CommandText(datagram);
    return m_Faults.Next(FaultOccasion::kExchange, ExchangeEntry(datagram), text);
}

int SimCamera::Answer(std::span<const std::uint8_t> datagram, const std::optional<Fault>& fault) {
    const int length = static_cast<int>(datagram.size());
    const auto is = [&](FaultKind kind) { return fault && fault->kind == kind; };
    if (is(FaultKind::kShortSend)) return length - 1;
    std::vector<std::uint8_t> answer;
    if (is(FaultKind::kException)) {
        m_Firmware.Refuse(datagram, fault->argument, answer);
    } else {
        m_Firmware.Handle(datagram, answer);
    }
    auto ready = ReplyStream::Clock::now() + m_Firmware.TakeBusyTime();
    if (is(FaultKind::kNoReply)) answer.clear();
    if (is(FaultKind::kDelay)) ready += std::chrono::milliseconds(fault->argument);
    if (is(FaultKind::kTruncate)) {
        answer.resize(std::min(answer.size(), static_cast<std::size_t>(fault->argument)));
    }
    if (is(FaultKind::kGarbage)) answer = Garbage();
    if (is(FaultKind::kGarble)) Garble(answer);
    if (is(FaultKind::kOversize)) answer = Oversize();
    m_Replies.Push(std::move(answer), ready, is(FaultKind::kOneByte));
    return length;
}

int SimCamera::Receive(std::span<std::uint8_t> into, int timeout_ms) {
    platform::ScopedLock lock(m_Lock);
    auto now = ReplyStream::Clock::now();
    auto deadline = now + std::chrono::milliseconds(std::max(timeout_ms, 0));
    // A link that is down says so early, so that nobody waits long for a camera that is gone.
    while (now <= deadline) {
        if (const std::size_t stored = m_Replies.Take(into, now)) return static_cast<int>(stored);
        if (!m_Plugged) deadline = std::min(deadline, now + kUnpluggedReceive);
        if (now >= deadline) break;
        const auto until = m_Replies.Empty() ? deadline : std::min(deadline, m_Replies.NextReady());
        m_Changed.wait_until(lock, until);
        now = ReplyStream::Clock::now();
    }
    return 0;
}

void SimCamera::OpenLink() {
    const platform::ScopedLock lock(m_Lock);
    m_Replies.Clear();
}

bool SimCamera::Plugged() const {
    const platform::ScopedLock lock(m_Lock);
    return m_Plugged;
}

bool SimCamera::UnplugLocked() {
    const bool was_plugged = m_Plugged;
    m_Plugged = false;
    m_Replies.Clear();
    m_Firmware.PowerCycle();
    return was_plugged;
}

bool SimCamera::SetPlugged(bool plugged) {
    {
        const platform::ScopedLock lock(m_Lock);
        if (m_Plugged == plugged) return false;
        if (plugged) {
            m_Plugged = true;
        } else {
            UnplugLocked();
        }
    }
    m_Changed.notify_all();
    return true;
}

void SimCamera::PassOccasion(FaultOccasion occasion) {
    bool vanished = false;
    {
        const platform::ScopedLock lock(m_Lock);
        if (m_Faults.Next(occasion)) vanished = UnplugLocked();
    }
    m_Changed.notify_all();
    if (vanished && m_Vanished) m_Vanished();
}

void SimCamera::VanishNow() {
    if (SetPlugged(false) && m_Vanished) m_Vanished();
}

FrameSource& SimCamera::Source() {
    if (!m_Source && m_Settings.recording) m_Source = std::make_unique<RecordedFrames>(*m_Settings.recording);
    if (!m_Source) {
        SensorModel sensor;
        sensor.width = m_Model.width;
        sensor.height = m_Model.height;
        sensor.bits = m_Model.bits;
        sensor.cfa_phase = m_Model.cfa_phase;
        sensor.seed = m_Settings.seed;
        sensor.scene = m_Settings.scene;
        sensor.motion = m_Settings.motion;
        sensor.taps = FactoryCalibration(m_Model);
        m_Source = std::make_unique<Sensor>(sensor);
    }
    return *m_Source;
}

}  // namespace zel::sim
