#include "devices/sim/firmware/Firmware.h"

#include <algorithm>
#include <climits>
#include <cmath>

#include "devices/kit/Wire.h"
#include "devices/sim/firmware/ColorMatrices.h"
#include "devices/sim/firmware/FlashDirectory.h"

namespace zel::sim {

Firmware::Firmware(const CameraModel& model, const FirmwareOptions& options)
    : m_Model(model),
      m_Options(options),
      m_Cooler(options.cooling_seconds),
      m_Flash(FlashContent(FactoryCalibration(model))),
      m_CoolerNow(m_Cooler),
      m_Name(model.name) {
    m_Flash.SetTimes(options.flash_times);
}

void Firmware::PowerOn(kit::ParameterTable& table) {
    const bool first = !m_Table;
    m_Table = &table;
    m_Cooler.Reset();
    m_Flash.PowerCycle();
    m_NeedsCalc = m_Calculating = false;
    m_CalcEnd = {};
    table.Store(FW_VERSION, "2.10");
    table.Store(HW_MODEL, m_Model.model_text);
    table.Store(SERIAL_NUMBER, m_Model.serial);
    if (first) table.Store(CAMERA_NAME, m_Model.name);
    table.Store(IR_FILTER, "IR650");
    table.Store(CFA_TYPE, "Bayer");
    table.Store(CCM_OUTPUT_COLOR_SPACE, m_Model.color_space);
    const ColorMatrices matrices = MakeColorMatrices(m_Model.color_space);
    for (int i = 0; i < 9; ++i) {
        const auto row = static_cast<std::size_t>(i / 3);
        const auto column = static_cast<std::size_t>(i % 3);
        table.Store(CCM_1_1 + i, matrices.correction[row][column]);
        table.Store(DWB_1_1 + i, matrices.white_balance[row][column]);
    }
    FollowSettings();
    m_Taps = Number(SENSOR_TAPS_VAL);
    m_ClockMhz = Number(CLOCK_SPEED_VAL);
    Publish();
}

// What a monochrome camera lacks stands at the end of the table.
std::optional<kit::Attributes> Firmware::AttributesOf(int index) {
    if (index >= CCM_1_1 && !m_Model.Color()) return std::nullopt;
    const int width = static_cast<int>(m_Model.width);
    const int height = static_cast<int>(m_Model.height);
    const kit::Attributes attributes = kit::SensorAttributes(index, {width, height, m_Model.bits});
    const auto constant = [&](int value) { return attributes.Bounded(value, value, value); };
    const auto preset = [&](int value) { return attributes.Bounded(attributes.minimum, attributes.maximum, value); };
    switch (index) {
        case SENSOR_TAPS_IDX:
            return attributes.Bounded(0, m_Model.largest_taps_idx, m_Model.default_taps_idx);
        case PIXEL_SIZE:
            return constant(m_Model.pixel_size_nm);
        case CFA_PHASE:
            return constant(m_Model.cfa_phase);
        case EXPOSURE_TIME:
        case EXPOSURE_ACTUAL:
            return preset(m_Model.exposure_us);
        case VGA_GAIN:
            return preset(m_Model.gain);
        default:
            return attributes;
    }
}

// Entries whose value depends on the time.
int Firmware::Read(int index, kit::Value& value) {
    if (index == SENSOR_TEMP) {
        value = static_cast<int>(std::lround(m_Cooler.Temperature(Clock::now()) * 10.0));
    } else if (index == EXPOSURE_STATE) {
        value = m_ExposureState.load();
    } else if (index == CALC_STATE && m_Calculating) {
        m_Calculating = !CalcDone();
        if (m_Calculating) value = 1;
    }
    return 0;
}

// The run waits for a recalculation after a change of the readout.
int Firmware::Write(int index, kit::Value& value) {
    const int before = Number(index);
    const bool run = index == CAMERA_STATE && std::get<int>(value) == 2;
    if (run && m_NeedsCalc) return kExceptionRequiresCalc;
    m_Table->Store(index, value);
    const int now = Number(index);
    if ((index == CLOCK_SPEED_IDX || index == SENSOR_TAPS_IDX) && now != before) m_NeedsCalc = true;
    if (index == COOLING_MODE) m_Cooler.SetMode(now, Clock::now());
    if (index == CALC_STATE && now != 0) StartCalculation();
    FollowSettings();
    Publish();
    return 0;
}

void Firmware::StartCalculation() {
    m_Calculating = true;
    m_CalcEnd = Clock::now() + std::chrono::milliseconds(m_Options.calc_delay_ms);
    m_Taps = Number(SENSOR_TAPS_VAL);
    m_ClockMhz = Number(CLOCK_SPEED_VAL);
    m_NeedsCalc = false;
}

// The entries that are computed from others.
void Firmware::FollowSettings() {
    constexpr std::int64_t kMicrosecondsPer1000Seconds = 1000000000;
    static constexpr int kCdsGainDb[] = {0, 3, 6};
    const int taps = 1 << Number(SENSOR_TAPS_IDX);
    const int clock_mhz = 20 << Number(CLOCK_SPEED_IDX);
    m_Table->Store(SENSOR_TAPS_VAL, taps);
    m_Table->Store(CLOCK_SPEED_VAL, clock_mhz);
    m_Table->Store(CDS_GAIN_VAL, kCdsGainDb[Number(CDS_GAIN_IDX)]);
    m_Table->Store(EXPOSURE_ACTUAL, Number(EXPOSURE_TIME));
    const FrameTiming timing{Number(EXPOSURE_TIME),
                             ReadoutMicroseconds(m_Model.width, m_Model.height, taps, clock_mhz)};
    m_Table->Store(READOUT_TIME, static_cast<int>(timing.readout_us));
    const std::int64_t period =
        m_Model.frame_us > 0.0 ? std::max<std::int64_t>(std::llround(m_Model.frame_us), 1) : timing.Period();
    m_Table->Store(FRAME_TIME, static_cast<int>(std::min<std::int64_t>(period, INT_MAX)));
    m_Table->Store(FRAME_RATE, static_cast<int>(kMicrosecondsPer1000Seconds / period));
}

void Firmware::Publish() {
    constexpr double kStepDb = 0.0358;
    Conditions conditions;
    conditions.settings.exposure_us = Number(EXPOSURE_ACTUAL);
    conditions.settings.gain = Number(VGA_GAIN) + Number(CDS_GAIN_VAL) / kStepDb;
    conditions.settings.black_level = Number(OB_LEVEL);
    conditions.settings.readout = {m_Taps, m_ClockMhz, static_cast<double>(Number(VGA_GAIN))};
    conditions.timing = {Number(EXPOSURE_ACTUAL),
                         ReadoutMicroseconds(m_Model.width, m_Model.height, m_Taps, m_ClockMhz)};
    conditions.taps = m_Taps;
    const platform::ScopedLock lock(m_Lock);
    m_Conditions = conditions;
    m_CoolerNow = m_Cooler;
    m_Name = m_Table->Text(CAMERA_NAME);
}

// The temperature is in whole tenths of a degree, so that a steady camera asks the sensor for the same each frame.
Firmware::Conditions Firmware::Now() const {
    const platform::ScopedLock lock(m_Lock);
    Conditions conditions = m_Conditions;
    conditions.settings.temperature = std::round(m_CoolerNow.Temperature(Clock::now()) * 10.0) / 10.0;
    return conditions;
}

std::string Firmware::Name() const {
    const platform::ScopedLock lock(m_Lock);
    return m_Name;
}

bool Firmware::BeginsTableRow(std::string_view command) const {
    return kit::NextWord(command) == "tb" && m_Flash.BeginsRow(command);
}

std::string Firmware::Description() const {
    return "ZEL camera " + m_Table->Text(HW_MODEL) + "\r\nSerial: " + m_Table->Text(SERIAL_NUMBER) +
           "\r\nName: " + m_Table->Text(CAMERA_NAME) + "\r\nFirmware: " + m_Table->Text(FW_VERSION) +
           "\r\nFPGA: 118\r\nSensor: " + std::to_string(m_Model.width) + "x" + std::to_string(m_Model.height) + ", " +
           std::to_string(m_Model.bits) + " bit, " + std::to_string(m_Taps) + (m_Taps == 1 ? " tap" : " taps");
}

std::optional<std::string> Firmware::Text(std::string_view command) {
    if (command == "info") return Description();
    if (kit::NextWord(command) != "tb") return std::nullopt;
    return m_Flash.Answer(command, m_Busy);
}

}  // namespace zel::sim
