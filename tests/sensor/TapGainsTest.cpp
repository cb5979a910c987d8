// The uneven taps of a sensor: what a host's correction by the calibration tables makes of its pictures. The correction
// is computed here in its own way: a straight line through the table's rows around a level, by least squares.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "link/ICameraInterface.h"
#include "tests/sensor/FrameStatistics.h"

namespace zel::sim::test {
namespace {

// The gain at a level: line through four rows, beginning with the last one at or below the level.
double FittedGain(const CalibrationTable& table, std::size_t tap, double level) {
    std::size_t row = 0;
    while (row + 1 < table.Rows() && table.millivolts[row + 1] <= level) ++row;
    row = std::min(row, table.Rows() - 4);
    double mean_x = 0.0;
    double mean_y = 0.0;
    for (std::size_t i = row; i < row + 4; ++i) {
        mean_x += table.millivolts[i] / 4.0;
        mean_y += table.gains[tap][i] / 4.0;
    }
    double above = 0.0;
    double below = 0.0;
    for (std::size_t i = row; i < row + 4; ++i) {
        above += (table.millivolts[i] - mean_x) * (table.gains[tap][i] - mean_y);
        below += (table.millivolts[i] - mean_x) * (table.millivolts[i] - mean_x);
    }
    return mean_y + above / below * (level - mean_x);
}

double Corrected(const CalibrationTable& table, std::size_t tap, unsigned sample, unsigned largest, double vga_gain) {
    const double amplification = std::pow(10.0, (vga_gain * 0.0358 + 5.5) / 20.0);
    const double level = sample * 2.0 / largest * 1000.0 / amplification;
    return std::min<double>(sample / FittedGain(table, tap, level), largest);
}

// Which tap reads a pixel.
std::size_t TapAt(unsigned x, unsigned y, unsigned w, unsigned h, int taps) {
    if (taps == 2) return x < w / 2 ? 0 : 1;
    return y < h / 2 ? (x < w / 2 ? 0 : 1) : (x < w / 2 ? 3 : 2);
}

struct Readout {
    const char* name;
    int interface_type;
    int taps;
    int clock_mhz;
    double vga_gain;
    std::uint64_t hash;  // of what the taps make of every sample, in both products
};

class TapGainsTest : public testing::TestWithParam<Readout> {
  protected:
    TapGainsTest() : m_Model(ModelOfLink(GetParam().interface_type, 0)), m_Data(FactoryCalibration(m_Model)) {}

    const CalibrationTable& Table() const { return m_Data.tables[GetParam().clock_mhz == 40 ? 1 : 0]; }
    TapReadout Wanted() const { return {GetParam().taps, GetParam().clock_mhz, GetParam().vga_gain}; }

    CameraModel m_Model;
    CalibrationData m_Data;
};

TEST_P(TapGainsTest, TheCorrectionByTheTableGivesEverySampleBack) {
    TapGains gains;
    ASSERT_TRUE(gains.Build(m_Data, Wanted(), m_Model.bits));
    ASSERT_FALSE(gains.Even());
    const unsigned largest = (1u << m_Model.bits) - 1u;
    ASSERT_GT(gains.Ceiling(), largest);
    constexpr unsigned kW = 5;
    constexpr unsigned kH = 4;
    double worst = 0.0;
    double largest_step = 0.0;
    Frame all;
    for (unsigned even = 0; even <= gains.Ceiling(); ++even) {
        Frame image(kW * kH, static_cast<std::uint16_t>(even));
        gains.Apply(image, kW, kH);
        all.insert(all.end(), image.begin(), image.end());
        for (unsigned i = 0; i < image.size(); ++i) {
            ASSERT_LE(image[i], largest);
            if (image[i] == largest) continue;
            const std::size_t tap = TapAt(i % kW, i / kW, kW, kH, GetParam().taps);
            const double wanted = std::min<double>(even, largest);
            worst =
                std::max(worst, std::fabs(Corrected(Table(), tap, image[i], largest, GetParam().vga_gain) - wanted));
        }
        const auto [low, high] = std::minmax_element(image.begin(), image.end());
        if (even == largest / 2) largest_step = static_cast<double>(*high - *low) / even;
    }
    EXPECT_EQ(Hash(all), GetParam().hash) << std::hex << Hash(all);
    // Rounding to a count, and the line through four rows where the curve bends.
    EXPECT_LT(worst, 1.5);
    EXPECT_GT(largest_step, 0.01);
    EXPECT_LT(largest_step, 0.12);
}

// Without a correction that follows the level, a seam would stay somewhere.
TEST_P(TapGainsTest, NoSingleFactorEvensTheTaps) {
    for (std::size_t tap = 1; tap < static_cast<std::size_t>(GetParam().taps); ++tap) {
        const auto ratio = [&](double level) { return Table().Gain(tap, level) / Table().Gain(0, level); };
        EXPECT_GT(std::fabs(ratio(20.0) - ratio(900.0)), 0.004) << tap;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Taps, TapGainsTest,
    testing::Values(Readout{"Four20", CAMERA_TYPE_EDT_CAMERA_LINK, 4, 20, 0.0, 0x644EA5756EC6C92D},
                    Readout{"Four40", CAMERA_TYPE_EDT_CAMERA_LINK, 4, 40, 431.0, 0x4BE0681DDB0DA26D},
                    Readout{"TwoOfFour", CAMERA_TYPE_EDT_CAMERA_LINK, 2, 40, 0.0, 0x8C52C477B4D3C0CD},
                    Readout{"TwoAt12Bits20", CAMERA_TYPE_PLEORA_EBUS, 2, 20, 100.0, 0x33B1C7D958E6F885},
                    Readout{"TwoAt12Bits40", CAMERA_TYPE_PLEORA_EBUS, 2, 40, 1023.0, 0x48872BC51849E915}),
    [](const auto& param) { return param.param.name; });

TEST(CalibrationDataTest, TablesAreWhatAHostTakesAndDifferFromCameraToCamera) {
    for (const int type : {CAMERA_TYPE_EDT_CAMERA_LINK, CAMERA_TYPE_PLEORA_EBUS}) {
        const CalibrationData data = FactoryCalibration(ModelOfLink(type, 0));
        const CalibrationData other = FactoryCalibration(ModelOfLink(type, 1));
        for (std::size_t speed = 0; speed < 2; ++speed) {
            const CalibrationTable& table = data.tables[speed];
            EXPECT_GE(table.Rows(), 20u);
            EXPECT_LE(table.Rows(), 40u);
            EXPECT_EQ(table.gains.size(), type == CAMERA_TYPE_PLEORA_EBUS ? 2u : 4u);
            EXPECT_TRUE(std::is_sorted(table.millivolts.begin(), table.millivolts.end()));
            // The highest level that a host looks up: a full converter at the lowest gain.
            EXPECT_GT(table.millivolts.back(), 2000.0 / std::pow(10.0, 5.5 / 20.0));
            for (std::size_t tap = 0; tap < table.gains.size(); ++tap) {
                ASSERT_EQ(table.gains[tap].size(), table.Rows());
                for (std::size_t row = 0; row < table.Rows(); ++row) {
                    EXPECT_NEAR(table.gains[tap][row], 1.0, 0.07);
                    // A host's file with seven decimals tells the very same number.
                    for (const float value : {table.gains[tap][row], table.millivolts[row]}) {
                        char text[32];
                        std::snprintf(text, sizeof text, "%.7f", static_cast<double>(value));
                        EXPECT_EQ(std::strtof(text, nullptr), value);
                    }
                }
                EXPECT_NE(table.gains[tap], other.tables[speed].gains[tap]);
            }
        }
        EXPECT_NE(data.tables[0].gains, data.tables[1].gains);
    }
    EXPECT_TRUE(FactoryCalibration(ModelOfLink(CAMERA_TYPE_USB, 0)).Empty());
}

TEST(CalibrationDataTest, EvenTapsHaveTablesOfOnesAndSamplesThatStay) {
    CameraModel model = ModelOfLink(CAMERA_TYPE_EDT_CAMERA_LINK, 0);
    model.even_taps = true;
    const CalibrationData data = FactoryCalibration(model);
    ASSERT_EQ(data.tables[1].gains.size(), 4u);
    for (const auto& column : data.tables[1].gains) EXPECT_EQ(column, std::vector<float>(column.size(), 1.0f));
    TapGains gains;
    ASSERT_TRUE(gains.Build(data, {4, 40, 0.0}, 14));
    for (unsigned even = 0; even <= gains.Ceiling(); ++even) {
        Frame image(4, static_cast<std::uint16_t>(even));
        gains.Apply(image, 2, 2);
        ASSERT_EQ(image, Frame(4, static_cast<std::uint16_t>(std::min(even, 16383u))));
    }
}

// A picture of the whole sensor: the static fill keeps its number, one tap is even, the mismatch is the only change.
TEST(UnevenSensorTest, OnlyAReadoutThroughSeveralTapsShowsSeams) {
    SensorModel model;
    model.width = 320;
    model.height = 240;
    Sensor ideal(model);
    model.taps = FactoryCalibration(ModelOfLink(CAMERA_TYPE_EDT_CAMERA_LINK, 0));
    Sensor uneven(model);
    const SensorSettings one_tap;
    SensorSettings four_taps;
    four_taps.readout.taps = 4;
    const Frame even = RenderFrame(ideal, one_tap, 5);
    EXPECT_EQ(RenderFrame(uneven, one_tap, 5), even);
    EXPECT_EQ(RenderFrame(ideal, four_taps, 5), even);

    const Frame seams = RenderFrame(uneven, four_taps, 5);
    double worst = 0.0;
    for (unsigned i = 0; i < seams.size(); ++i) {
        const std::size_t tap = TapAt(i % 320, i / 320, 320, 240, 4);
        worst = std::max(worst, std::fabs(Corrected(model.taps.tables[0], tap, seams[i], 16383, 0.0) - even[i]));
    }
    EXPECT_LT(worst, 1.5);

    const Frame still = RenderFrame(uneven, four_taps, 0x12345, SensorFill::kStatic);
    EXPECT_EQ(still[0], 0x2345);
    EXPECT_EQ(still[1], 1);
}

}  // namespace
}  // namespace zel::sim::test
