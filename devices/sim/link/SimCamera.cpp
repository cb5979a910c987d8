#include "devices/sim/link/SimCamera.h"

#include <algorithm>
#include <limits>

#include "devices/kit/Wire.h"
#include "devices/sim/link/ExchangeText.h"

namespace zel::sim {

namespace {

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

FaultOccasion OccasionOf(kit::Camera::Operation operation) {
    switch (operation) {
        case kit::Camera::Operation::kConnect:
            return FaultOccasion::kConnect;
        case kit::Camera::Operation::kStart:
            return FaultOccasion::kStart;
        case kit::Camera::Operation::kStop:
            return FaultOccasion::kStop;
        case kit::Camera::Operation::kClose:
            break;
    }
    return FaultOccasion::kClose;
}

}  // namespace

SimCamera::SimCamera(std::unique_ptr<SimDevice> device)
    : Camera(std::move(device)), m_Device(static_cast<SimDevice&>(Device())) {}

void SimCamera::Passing(Operation operation) {
    if (m_Device.Script().Next(OccasionOf(operation))) Vanish();
}

std::optional<Fault> SimCamera::FaultOf(std::span<const std::uint8_t> datagram) {
    Faults& faults = m_Device.Script();
    if (faults.Empty()) return std::nullopt;
    const std::string_view text = kit::IsTableRequest(datagram) ? std::string_view() : kit::CommandText(datagram);
    if (m_Device.BeginsTableRow(text)) {
        const std::optional<Fault> row = faults.Next(FaultOccasion::kTableRow);
        if (row) {
            const bool nan = row->kind == FaultKind::kNanGain;
            m_Device.SpoilTableRow(nan ? std::numeric_limits<float>::quiet_NaN() : 3.0f);
        }
    }
    return faults.Next(FaultOccasion::kExchange, ExchangeEntry(datagram), text);
}

kit::Camera::Answer SimCamera::Exchange(std::span<const std::uint8_t> datagram) {
    const std::optional<Fault> fault = FaultOf(datagram);
    const auto is = [&](FaultKind kind) { return fault && fault->kind == kind; };
    Answer answer;
    answer.unplug = is(FaultKind::kUnplug);
    if (answer.unplug) return answer;
    ++m_Exchanges;
    m_Log.push_back(ExchangeText(datagram));
    if (m_Log.size() > kLongestLog) m_Log.pop_front();
    answer.taken = static_cast<int>(datagram.size());
    if (is(FaultKind::kShortSend)) {
        --answer.taken;
        return answer;
    }
    std::vector<std::uint8_t>& bytes = answer.bytes;
    if (is(FaultKind::kException)) {
        kit::Conversation::Refuse(datagram, fault->argument, bytes);
    } else {
        Talk().Handle(datagram, bytes);
    }
    answer.ready = kit::ReplyStream::Clock::now() + m_Device.TakeBusyTime();
    if (is(FaultKind::kNoReply)) bytes.clear();
    if (is(FaultKind::kDelay)) answer.ready += std::chrono::milliseconds(fault->argument);
    if (is(FaultKind::kTruncate)) bytes.resize(std::min(bytes.size(), static_cast<std::size_t>(fault->argument)));
    if (is(FaultKind::kGarbage)) bytes = Garbage();
    if (is(FaultKind::kGarble)) Garble(bytes);
    if (is(FaultKind::kOversize)) bytes = Oversize();
    answer.byte_by_byte = is(FaultKind::kOneByte);
    return answer;
}

void SimCamera::ClearFaults() {
    m_Device.Script().Clear();
    SetCalcNeverEnds(false);
}

void SimCamera::SetCalcDelay(int milliseconds) {
    const platform::ScopedLock lock(m_TalkLock);
    m_Device.SetCalcDelay(milliseconds);
}

void SimCamera::SetFlashTimes(const FlashTimes& times) {
    const platform::ScopedLock lock(m_TalkLock);
    m_Device.SetFlashTimes(times);
}

void SimCamera::SetCalcNeverEnds(bool never) {
    const platform::ScopedLock lock(m_TalkLock);
    m_Device.SetCalcNeverEnds(never);
}

bool SimCamera::HardwareTrigger(TriggerEdge edge) {
    const platform::ScopedLock lock(m_TalkLock);
    const kit::Conversation& talk = Talk();
    if (edge != TriggerEdge::kActive && (edge == TriggerEdge::kFalling) != talk.ActiveLow()) return false;
    return Plugged() && talk.HardwareTriggered() && Control().AddTrigger();
}

std::string SimCamera::Log(std::size_t last) {
    const platform::ScopedLock lock(m_TalkLock);
    std::string text;
    for (std::size_t i = m_Log.size() - std::min(last, m_Log.size()); i < m_Log.size(); ++i) text += m_Log[i] + '\n';
    return text;
}

void SimCamera::ClearLog() {
    const platform::ScopedLock lock(m_TalkLock);
    m_Log.clear();
}

std::uint64_t SimCamera::Exchanges() {
    const platform::ScopedLock lock(m_TalkLock);
    return m_Exchanges;
}

}  // namespace zel::sim
