// The sensor as a physicist measures it: mean and variance against light, time, gain and temperature.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "sim/Noise.h"
#include "tests/sensor/FrameStatistics.h"
#include "tests/sensor/PictureFile.h"

namespace zel::sim::test {
namespace {

constexpr unsigned kSide = 256;

SensorModel FlatModel(const std::string& scene) {
    SensorModel model;
    model.width = kSide;
    model.height = kSide;
    model.scene = scene;
    return model;
}

double CountsPerElectronAt(const SensorModel& model, double gain) {
    return model.conversion * std::pow(10.0, (gain * 0.0358 + 5.5) / 20.0) * (std::pow(2.0, model.bits) - 1.0) / 2000.0;
}

struct Transfer {
    const char* name;
    std::uint8_t light;  // sample of the flat picture: 255 is 1.0, 0 is dark
    double exposure_us;
    double gain;
    double temperature;
    int bits;
    double electrons;  // expected charge with the default model
};

class PhotonTransferTest : public testing::TestWithParam<Transfer> {};

TEST_P(PhotonTransferTest, MeanAndVarianceFollowTheCharge) {
    const Transfer& c = GetParam();
    const FlatPicture flat({c.light, c.light, c.light});
    SensorModel model = FlatModel(flat.Path());
    model.bits = c.bits;
    Sensor sensor(model);
    const SensorSettings settings{c.exposure_us, c.gain, 100.0, c.temperature};
    const Frame frame = RenderFrame(sensor, settings, 7);
    const double counts = CountsPerElectronAt(model, c.gain);
    const double variance = counts * counts * (c.electrons + model.read_noise * model.read_noise) + 1.0 / 12.0;
    EXPECT_NEAR(Mean(frame), 100.0 + counts * c.electrons, 5.0 * std::sqrt(variance) / kSide + 0.01);
    EXPECT_NEAR(Variance(frame), variance, 0.04 * variance);
}

INSTANTIATE_TEST_SUITE_P(Sensor, PhotonTransferTest,
                         testing::Values(Transfer{"Bright", 255, 10000.0, 0.0, 25.0, 14, 6000.02},
                                         Transfer{"HalfTheTime", 255, 5000.0, 0.0, 25.0, 14, 3000.01},
                                         Transfer{"LinearLightOfTheFile", 188, 10000.0, 0.0, 25.0, 14,
                                                  6000.0 * 0.502886 + 0.02},
                                         Transfer{"HighGain", 255, 200.0, 500.0, 25.0, 14, 120.0},
                                         Transfer{"TwelveBits", 255, 10000.0, 0.0, 25.0, 12, 6000.02},
                                         Transfer{"SixteenBits", 255, 2000.0, 100.0, 25.0, 16, 1200.004},
                                         Transfer{"ReadNoiseOnly", 0, 1.0, 200.0, 25.0, 14, 0.0},
                                         Transfer{"DarkCurrent", 0, 60e6, 0.0, 25.0, 14, 120.0},
                                         Transfer{"DarkCurrentTwelveDegreesWarmer", 0, 60e6, 0.0, 37.0, 14, 480.0},
                                         Transfer{"DarkCurrentCooled", 0, 60e6, 200.0, -5.0, 14, 3.75}),
                         [](const auto& param) { return std::string(param.param.name); });

TEST(SensorSaturation, FullWellCutsTheChargeAndItsNoise) {
    const FlatPicture white({255, 255, 255});
    SensorModel model = FlatModel(white.Path());
    model.full_well = 10000.0;
    Sensor sensor(model);
    const Frame frame = RenderFrame(sensor, {1e6, 0.0, 64.0, 25.0}, 1);
    const double counts = CountsPerElectronAt(model, 0.0);
    EXPECT_NEAR(Mean(frame), 64.0 + 10000.0 * counts, 0.1);
    EXPECT_NEAR(Variance(frame), counts * counts * 36.0 + 1.0 / 12.0, 0.5);
}

TEST(SensorSaturation, TheConverterEndsAtZeroAndAtItsLargestCount) {
    const FlatPicture white({255, 255, 255});
    const FlatPicture black({0, 0, 0});
    for (const int bits : {8, 10, 12, 14, 16}) {
        SensorModel model = FlatModel(white.Path());
        model.bits = bits;
        Sensor bright(model);
        const Frame full = RenderFrame(bright, {1e6, 1000.0, 0.0, 25.0}, 1);
        EXPECT_EQ(*std::min_element(full.begin(), full.end()), (1 << bits) - 1) << bits;
        EXPECT_EQ(*std::max_element(full.begin(), full.end()), (1 << bits) - 1) << bits;

        model.scene = black.Path();
        Sensor dark(model);
        const Frame empty = RenderFrame(dark, {10.0, 0.0, 0.0, 25.0}, 1);
        EXPECT_EQ(*std::min_element(empty.begin(), empty.end()), 0) << bits;
        const double sigma = std::max(6.0 * CountsPerElectronAt(model, 0.0), 1.0);
        EXPECT_LT(*std::max_element(empty.begin(), empty.end()), 8.0 * sigma) << bits;
    }
}

TEST(SensorSaturation, SettingsThatAreNoMeasurableValuesGiveLegalFrames) {
    SensorModel model;
    model.width = 8;
    model.height = 8;
    Sensor sensor(model);
    const double nan = std::nan("");
    const double infinite = HUGE_VAL;
    for (const double odd : {nan, infinite, -infinite, -1.0, 1e300}) {
        for (const SensorSettings& settings :
             {SensorSettings{odd, 0.0, 64.0, 25.0}, SensorSettings{1e4, odd, 64.0, 25.0},
              SensorSettings{1e4, 0.0, odd, 25.0}, SensorSettings{1e4, 0.0, 64.0, odd}}) {
            const Frame frame = RenderFrame(sensor, settings, 1);
            EXPECT_LE(*std::max_element(frame.begin(), frame.end()), 16383) << odd;
        }
    }
}

// Noise repeats nowhere: not along a row, not from row to row, not from frame to frame.
TEST(SensorNoise, IsIndependentInSpaceAndTime) {
    const FlatPicture white({255, 255, 255});
    SensorModel model = FlatModel(white.Path());
    Sensor sensor(model);
    const Frame first = RenderFrame(sensor, {}, 1);
    const Frame second = RenderFrame(sensor, {}, 2);
    model.seed = 2;
    Sensor other(model);
    const Frame other_seed = RenderFrame(other, {}, 1);
    const double variance = Variance(first);
    const std::size_t count = first.size() - 2 * kGaussianStretch;
    const double limit = 5.0 / std::sqrt(static_cast<double>(count)) * variance;
    for (const std::size_t lag :
         {std::size_t{1}, std::size_t{2}, std::size_t{kSide}, kGaussianStretch, 2 * kGaussianStretch}) {
        EXPECT_LT(std::fabs(Covariance(first.data(), first.data() + lag, count)), limit) << lag;
    }
    EXPECT_LT(std::fabs(Covariance(first.data(), second.data(), count)), limit);
    EXPECT_LT(std::fabs(Covariance(first.data(), other_seed.data(), count)), limit);
}

TEST(SensorNoise, IsNormallyDistributed) {
    double sums[5] = {};
    std::size_t beyond_two = 0;
    for (const double value : GaussianTable()) {
        double power = 1.0;
        for (double& sum : sums) {
            sum += power / kGaussianTableSize;
            power *= value;
        }
        if (std::fabs(value) > 2.0) ++beyond_two;
    }
    EXPECT_NEAR(sums[1], 0.0, 1e-6);
    EXPECT_NEAR(sums[2], 1.0, 1e-6);
    EXPECT_NEAR(sums[3], 0.0, 0.025);
    EXPECT_NEAR(sums[4], 3.0, 0.05);
    EXPECT_NEAR(static_cast<double>(beyond_two) / kGaussianTableSize, 0.0455, 0.002);
}

}  // namespace
}  // namespace zel::sim::test
