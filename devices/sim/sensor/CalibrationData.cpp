#include "devices/sim/sensor/CalibrationData.h"

#include <algorithm>
#include <cmath>

#include "devices/sim/scene/PlainMath.h"

namespace zel::sim {

namespace {

// One tap's amplifier: gain = 1 + offset + slope * level + bend * (1 - e^(-level / knee)).
struct Amplifier {
    double offset;
    double slope;  // per volt
    double bend;
};
constexpr double kKnee = 350.0;  // mV
constexpr Amplifier kAmplifiers[] = {
    {0.0120, 0.0060, -0.0110}, {-0.0210, 0.0130, 0.0080}, {0.0310, -0.0090, -0.0150}, {-0.0060, -0.0140, 0.0170}};

// More than the largest level that reaches the converter at the lowest gain, 1062 mV.
constexpr double kHighestLevel = 1200.0;
constexpr int kRows[2][2] = {{24, 36}, {32, 28}};  // of cameras with 2 and 4 taps, at 20 and 40 MHz

// As many decimals as the calibration bench writes, so that a table survives being printed with seven and read again.
double Decimals(double value, double unit) { return std::round(value / unit) * unit; }

// -1 to 1, by chance but always the same for a camera.
double Chance(const std::string& serial, std::size_t tap, int speed) {
    std::uint32_t state = 2166136261u;
    for (const char c : serial) state = (state ^ static_cast<unsigned char>(c)) * 16777619u;
    state = (state ^ static_cast<std::uint32_t>(tap * 2 + static_cast<std::size_t>(speed) + 1)) * 16777619u;
    state ^= state >> 15;
    return static_cast<double>(state % 20001) / 10000.0 - 1.0;
}

CalibrationTable Measure(const CameraModel& model, std::size_t taps, int speed) {
    const int rows = kRows[taps == 4 ? 1 : 0][speed];
    CalibrationTable table;
    for (int row = 0; row < rows; ++row) {
        // Closer together at low levels, where the gain bends most.
        const double share = static_cast<double>(row) / (rows - 1);
        const double level = row == 0 ? 0.0 : kHighestLevel * PlainPow(share, 1.6);
        table.millivolts.push_back(static_cast<float>(Decimals(level, 0.001)));
    }
    for (std::size_t tap = 0; tap < taps; ++tap) {
        const Amplifier& amplifier = kAmplifiers[tap];
        const double faster = speed == 0 ? 1.0 : 1.35;  // faster readout makes the taps differ more
        const double offset = (amplifier.offset + 0.004 * Chance(model.serial, tap, speed)) * faster;
        std::vector<float>& column = table.gains.emplace_back();
        for (const float level : table.millivolts) {
            const double bend = amplifier.bend * faster * (1.0 - PlainExp(-level / kKnee));
            const double gain = 1.0 + offset + amplifier.slope * faster * level / 1000.0 + bend;
            column.push_back(model.even_taps ? 1.0f : static_cast<float>(Decimals(gain, 0.00001)));
        }
    }
    return table;
}

}  // namespace

double CalibrationTable::Gain(std::size_t tap, double level) const {
    if (tap >= gains.size() || gains[tap].empty()) return 1.0;
    const std::vector<float>& column = gains[tap];
    const auto above = std::upper_bound(millivolts.begin(), millivolts.end(), level);
    if (above == millivolts.begin()) return column.front();
    if (above == millivolts.end()) return column.back();
    const auto row = static_cast<std::size_t>(above - millivolts.begin());
    const double low = millivolts[row - 1];
    const double share = (level - low) / (millivolts[row] - low);
    return column[row - 1] + share * (static_cast<double>(column[row]) - column[row - 1]);
}

CalibrationData FactoryCalibration(const CameraModel& model) {
    CalibrationData data;
    const std::size_t taps = std::size_t{1} << std::clamp(model.largest_taps_idx, 0, 2);
    if (taps == 1) return data;
    for (int speed = 0; speed < 2; ++speed) data.tables[static_cast<std::size_t>(speed)] = Measure(model, taps, speed);
    return data;
}

}  // namespace zel::sim
