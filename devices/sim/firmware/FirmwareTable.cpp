// The parameter table's side of the firmware.
//
// Request:    0 | length (2, big-endian) | command | argument length (2, big-endian) | index (4, little-endian) | data
// Reply:      0 | length (2, big-endian) | command | data length (2, big-endian)     | data
// Exception:  0 | 0 0                                  no exception
//             0 | 0 3 | command | 0 | exception code

#include <algorithm>
#include <climits>
#include <cmath>

#include "devices/sim/firmware/Firmware.h"

namespace zel::sim {

namespace {

constexpr std::size_t kHeader = 3;
constexpr std::size_t kDataOffset = 10;

void AppendReply(int command, std::span<const std::uint8_t> data, std::vector<std::uint8_t>& answer) {
    const std::size_t length = 3 + data.size();
    const std::uint8_t head[] = {0,
                                 static_cast<std::uint8_t>(length >> 8),
                                 static_cast<std::uint8_t>(length),
                                 static_cast<std::uint8_t>(command),
                                 static_cast<std::uint8_t>(data.size() >> 8),
                                 static_cast<std::uint8_t>(data.size())};
    answer.insert(answer.end(), head, head + sizeof(head));
    answer.insert(answer.end(), data.begin(), data.end());
}

void AppendException(int command, int exception, std::vector<std::uint8_t>& answer) {
    if (exception == 0) {
        answer.insert(answer.end(), {0, 0, 0});
    } else {
        answer.insert(answer.end(),
                      {0, 0, 3, static_cast<std::uint8_t>(command), 0, static_cast<std::uint8_t>(exception)});
    }
}

int CommandOf(std::span<const std::uint8_t> datagram) { return datagram.size() > kHeader ? datagram[kHeader] : 0; }

}  // namespace

void Firmware::HandleTable(std::span<const std::uint8_t> datagram, std::vector<std::uint8_t>& answer) {
    std::vector<std::uint8_t> data;
    int exception = kExceptionIncompleteData;
    // The argument length of a long block write holds its low byte only, so the datagram's own length counts.
    if (datagram.size() >= kDataOffset && datagram.size() - kHeader == std::size_t{datagram[1]} * 256 + datagram[2]) {
        exception = Request(CommandOf(datagram), datagram.subspan(6), data);
    }
    AppendReply(CommandOf(datagram), data, answer);
    AppendException(CommandOf(datagram), exception, answer);
}

// arguments: the index and what follows it.
int Firmware::Request(int command, std::span<const std::uint8_t> arguments, std::vector<std::uint8_t>& data) {
    const int index = static_cast<int>(Little32(arguments));
    if (command == SYNC_TABLE_CMD_UNREAD_COUNT) {
        AppendLittle32(data, static_cast<std::uint32_t>(m_Registers.Unread().size()));
        return 0;
    }
    if (command == SYNC_TABLE_CMD_UNREAD_INDICES) {
        data = m_Registers.Unread();
        return 0;
    }
    if (!m_Registers.Has(index)) return kExceptionBadIndex;
    switch (command) {
        case SYNC_TABLE_CMD_GET:
            Refresh(index);
            m_Registers.AppendValue(index, data);
            m_Registers.MarkRead(index);
            return 0;
        case SYNC_TABLE_CMD_SET:
            return Write(index, arguments.subspan(4));
        case SYNC_TABLE_CMD_GET_ATTRIBUTES:
            m_Registers.AppendAttributes(index, data);
            return 0;
        case SYNC_TABLE_CMD_GET_DATAFLAGS:
            AppendLittle32(data, m_Registers.Row(index).access == RegisterAccess::kWritable ? 1u : 0u);
            return 0;
        default:
            return kExceptionIncompleteData;
    }
}

bool Firmware::CalcDone() const { return !m_CalcNeverEnds && Clock::now() >= m_CalcEnd; }

// Entries whose value depends on the time are brought up to date when they are read.
void Firmware::Refresh(int index) {
    if (index == SENSOR_TEMP) {
        m_Registers.Store(SENSOR_TEMP, static_cast<int>(std::lround(m_Cooler.Temperature(Clock::now()) * 10.0)));
    } else if (index == CALC_STATE && m_Registers.Value(CALC_STATE) == 1 && CalcDone()) {
        m_Registers.Store(CALC_STATE, 2);
    }
}

// What the order of the camera's work forbids: the run waits for a recalculation after a change of the readout.
int Firmware::CheckWrite(int index, std::span<const std::uint8_t> data) const {
    if (index == CAMERA_STATE && data.size() >= 4 && Little32(data) == 2 && m_NeedsCalc) return kExceptionRequiresCalc;
    return 0;
}

int Firmware::Write(int index, std::span<const std::uint8_t> data) {
    if (const int exception = CheckWrite(index, data)) return exception;
    const int before = m_Registers.Value(index);
    if (const int exception = m_Registers.Write(index, data)) return exception;
    const int value = m_Registers.Value(index);
    if ((index == CLOCK_SPEED_IDX || index == SENSOR_TAPS_IDX) && value != before) m_NeedsCalc = true;
    Follow(index, value);
    return 0;
}

// What a write sets off.
void Firmware::Follow(int index, int value) {
    switch (index) {
        case CAMERA_STATE:
            value == 2 ? Run() : Halt();
            m_Registers.Store(CAMERA_STATE, value);
            break;
        case TRIGGER_STATE:
            value == 1 ? Arm() : Halt();
            break;
        case SW_TRIG:
            if (value == 1 && m_TriggerSoftware) AddTrigger();
            m_Registers.Store(SW_TRIG, 0);
            break;
        case CALC_STATE:
            if (value != 0) StartCalculation();
            break;
        case CAMERA_RESET:
            if (value == 1) PowerCycle();
            break;
        case COOLING_MODE:
            m_Cooler.SetMode(value, Clock::now());
            break;
        case FRAME_COUNT:
            SetSequence(value);
            break;
        default:
            FollowSettings();
    }
}

void Firmware::StartCalculation() {
    m_Registers.Store(CALC_STATE, 1);
    m_CalcEnd = Clock::now() + std::chrono::milliseconds(m_Options.calc_delay_ms);
    m_Taps = m_Registers.Value(SENSOR_TAPS_VAL);
    m_ClockMhz = m_Registers.Value(CLOCK_SPEED_VAL);
    m_NeedsCalc = false;
    FollowSettings();
}

// The entries that are computed from others.
void Firmware::FollowSettings() {
    constexpr std::int64_t kMicrosecondsPer1000Seconds = 1000000000;
    static constexpr int kCdsGainDb[] = {0, 3, 6};
    const int taps = 1 << m_Registers.Value(SENSOR_TAPS_IDX);
    const int clock_mhz = 20 << m_Registers.Value(CLOCK_SPEED_IDX);
    m_Registers.Store(SENSOR_TAPS_VAL, taps);
    m_Registers.Store(CLOCK_SPEED_VAL, clock_mhz);
    m_Registers.Store(CDS_GAIN_VAL, kCdsGainDb[m_Registers.Value(CDS_GAIN_IDX)]);
    m_Registers.Store(EXPOSURE_ACTUAL, m_Registers.Value(EXPOSURE_TIME));
    const FrameTiming timing{m_Registers.Value(EXPOSURE_TIME),
                             ReadoutMicroseconds(m_Model.width, m_Model.height, taps, clock_mhz)};
    m_Registers.Store(READOUT_TIME, static_cast<int>(timing.readout_us));
    const std::int64_t period =
        m_Model.frame_us > 0.0 ? std::max<std::int64_t>(std::llround(m_Model.frame_us), 1) : timing.Period();
    m_Registers.Store(FRAME_TIME, static_cast<int>(std::min<std::int64_t>(period, INT_MAX)));
    m_Registers.Store(FRAME_RATE, static_cast<int>(kMicrosecondsPer1000Seconds / period));
}

void Firmware::Refuse(std::span<const std::uint8_t> datagram, int exception, std::vector<std::uint8_t>& answer) const {
    if (IsTableRequest(datagram)) {
        AppendReply(CommandOf(datagram), {}, answer);
        AppendException(CommandOf(datagram), exception, answer);
    } else {
        answer.insert(answer.end(), {9, 0, 6, 'E', 'R', 'R', '\r', '\n', 0});
    }
}

}  // namespace zel::sim
