#include "devices/sim/firmware/Firmware.h"

#include <algorithm>
#include <cmath>

#include "devices/sim/firmware/FlashDirectory.h"

namespace zel::sim {

Firmware::Firmware(const CameraModel& model, const FirmwareOptions& options)
    : m_Model(model),
      m_Options(options),
      m_Registers(model),
      m_Cooler(options.cooling_seconds),
      m_Flash(FlashContent(FactoryCalibration(model))) {
    m_Flash.SetTimes(options.flash_times);
    PowerCycle();
}

void Firmware::PowerCycle() {
    Halt();
    m_Registers.Reset();
    m_Cooler.Reset();
    m_Flash.PowerCycle();
    m_TriggerSoftware = m_TriggerCl = m_TriggerA = false;
    m_NeedsCalc = false;
    m_CalcEnd = {};
    FollowSettings();
    m_Taps = m_Registers.Value(SENSOR_TAPS_VAL);
    m_ClockMhz = m_Registers.Value(CLOCK_SPEED_VAL);
}

FrameTiming Firmware::Timing() const {
    return {m_Registers.Value(EXPOSURE_ACTUAL), ReadoutMicroseconds(m_Model.width, m_Model.height, m_Taps, m_ClockMhz)};
}

SensorSettings Firmware::Settings() const {
    constexpr double kStepDb = 0.0358;
    SensorSettings settings;
    settings.exposure_us = m_Registers.Value(EXPOSURE_ACTUAL);
    settings.gain = m_Registers.Value(VGA_GAIN) + m_Registers.Value(CDS_GAIN_VAL) / kStepDb;
    settings.black_level = m_Registers.Value(OB_LEVEL);
    // In whole tenths of a degree, so that a steady camera asks the sensor for the same conditions each frame.
    settings.temperature = std::round(m_Cooler.Temperature(Clock::now()) * 10.0) / 10.0;
    settings.readout = {m_Taps, m_ClockMhz, static_cast<double>(m_Registers.Value(VGA_GAIN))};
    return settings;
}

// The length of a run when the host asks for one of so many frames, 0 = until stopped.
int Firmware::Limited(int frames) const {
    if (m_Options.longest_run <= 0) return std::max(frames, 0);
    return frames <= 0 ? m_Options.longest_run : std::min(frames, m_Options.longest_run);
}

void Firmware::Begin(Mode mode) {
    m_Mode = mode;
    ++m_Acquisition;
    m_PendingTriggers = 0;
    m_SequenceOfThis = m_FramesToCome = Limited(m_Registers.Value(FRAME_COUNT));
    m_Registers.Store(CURRENT_FRAME, 0);
    m_Registers.Store(EXPOSURE_STATE, 0);
    m_Registers.Store(CAMERA_STATE, 2);
    m_Registers.Store(TRIGGER_STATE, mode == Mode::kTriggered ? 1 : 0);
}

// The host set the camera running: free, or on the trigger input when that is switched on. An armed camera goes on
// waiting.
void Firmware::Run() {
    if (m_Mode == Mode::kTriggered) return;
    Begin(m_Registers.Value(HW_TRIG_SOURCE) != 0 ? Mode::kTriggered : Mode::kFreeRun);
}

void Firmware::Arm() { Begin(Mode::kTriggered); }

void Firmware::Halt() {
    m_Mode = Mode::kIdle;
    m_PendingTriggers = 0;
    m_FramesToCome = 0;
    m_Registers.Store(CAMERA_STATE, 0);
    m_Registers.Store(TRIGGER_STATE, 0);
    m_Registers.Store(EXPOSURE_STATE, 0);
}

void Firmware::AddTrigger() {
    if (m_Mode == Mode::kTriggered) m_PendingTriggers = std::min(m_PendingTriggers + 1, kMostPendingTriggers);
}

bool Firmware::HardwareTrigger(TriggerEdge edge) {
    const bool active_low = m_Registers.Value(HW_TRIG_POLARITY) == 1;
    if (edge != TriggerEdge::kActive && (edge == TriggerEdge::kFalling) != active_low) return false;
    if (m_Mode != Mode::kTriggered || !HardwareTriggered()) return false;
    AddTrigger();
    return true;
}

void Firmware::BeginFrame() {
    if (m_Mode == Mode::kTriggered && m_PendingTriggers > 0) --m_PendingTriggers;
}

void Firmware::FinishFrame() {
    m_Registers.Store(CURRENT_FRAME, m_Registers.Value(CURRENT_FRAME) + 1);
    m_Registers.Store(EXPOSURE_STATE, 0);
    if (m_SequenceOfThis > 0 && --m_FramesToCome <= 0) Halt();
}

void Firmware::SetSequence(int frames) {
    m_Registers.Store(FRAME_COUNT, std::max(frames, 0));
    if (Acquiring()) {
        SetSequenceOfThis(frames);
    } else {
        m_FramesToCome = std::max(frames, 0);
    }
}

void Firmware::SetSequenceOfThis(int frames) {
    m_SequenceOfThis = Limited(frames);
    m_FramesToCome = std::max(m_SequenceOfThis - m_Registers.Value(CURRENT_FRAME), 0);
    if (m_SequenceOfThis > 0 && m_FramesToCome == 0) Halt();
}

}  // namespace zel::sim
