// The sensor as a physicist measures it: mean and variance against light, time, gain and temperature, and what pixels
// take in through their color filters.
#include <gtest/gtest.h>

#include <cmath>

#include "devices/sim/scene/Noise.h"
#include "devices/sim/scene/Spectrum.h"
#include "devices/sim/sensor/LightPicture.h"
#include "tests/devices/sim/scene/PictureFile.h"
#include "tests/devices/sim/sensor/FrameStatistics.h"

namespace zel::sim::test {
namespace {

constexpr unsigned kSide = 256;

double CountsPerElectronAt(const SensorModel& model, double gain) {
    return model.conversion * std::pow(10.0, (gain * 0.0358 + 5.5) / 20.0) * (std::pow(2.0, model.bits) - 1.0) / 2000.0;
}

TEST(PhotonTransferTest, MeanAndVarianceFollowTheCharge) {
    const struct {
        std::uint8_t light;  // sample of the flat picture: 255 is 1.0, 0 is dark
        double exposure_us, gain, temperature;
        int bits;
        double electrons;  // expected charge with the default model
    } cases[] = {{255, 10000.0, 0.0, 25.0, 14, 6000.02},
                 {188, 10000.0, 0.0, 25.0, 14, 6000.0 * 0.502886 + 0.02},  // the file is not linear
                 {255, 200.0, 500.0, 25.0, 14, 120.0},
                 {255, 5000.0, 0.0, 25.0, 12, 3000.01},
                 {0, 1.0, 200.0, 25.0, 14, 0.0},
                 {0, 60e6, 0.0, 37.0, 14, 480.0},  // dark current: 120 at 25 degrees
                 {0, 60e6, 200.0, -5.0, 14, 3.75}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.electrons);
        const FlatPicture flat({c.light, c.light, c.light});
        SensorModel model = ModelOf(kSide, kSide, 0, flat.Path());
        model.bits = c.bits;
        Sensor sensor(model);
        const Frame frame = RenderFrame(sensor, {c.exposure_us, c.gain, 100.0, c.temperature}, 7);
        const double counts = CountsPerElectronAt(model, c.gain);
        const double variance = counts * counts * (c.electrons + model.read_noise * model.read_noise) + 1.0 / 12.0;
        EXPECT_NEAR(Mean(frame), 100.0 + counts * c.electrons, 5.0 * std::sqrt(variance) / kSide + 0.01);
        EXPECT_NEAR(Variance(frame), variance, 0.04 * variance);
    }
}

TEST(SensorSaturation, TheConverterEndsAtItsLargestCount) {
    const FlatPicture white({255, 255, 255});
    for (const int bits : {8, 12, 16}) {
        SensorModel model = ModelOf(kSide, kSide, 0, white.Path());
        model.bits = bits;
        Sensor bright(model);
        const Frame full = RenderFrame(bright, {1e6, 1000.0, 0.0, 25.0}, 1);
        EXPECT_EQ(full, Frame(full.size(), static_cast<std::uint16_t>((1 << bits) - 1))) << bits;
    }
}

// Noise repeats nowhere: not along a row, not from row to row, not from frame to frame.
TEST(SensorNoise, IsIndependentInSpaceAndTime) {
    const FlatPicture white({255, 255, 255});
    SensorModel model = ModelOf(kSide, kSide, 0, white.Path());
    Sensor sensor(model);
    const Frame first = RenderFrame(sensor, {}, 1);
    const Frame second = RenderFrame(sensor, {}, 2);
    const double variance = Variance(first);
    const std::size_t count = first.size() - 2 * kGaussianStretch;
    const double limit = 5.0 / std::sqrt(static_cast<double>(count)) * variance;
    for (const std::size_t lag : {std::size_t{1}, std::size_t{kSide}, kGaussianStretch}) {
        EXPECT_LT(std::fabs(Covariance(first.data(), first.data() + lag, count)), limit) << lag;
    }
    EXPECT_LT(std::fabs(Covariance(first.data(), second.data(), count)), limit);
}

TEST(CfaPhaseTest, EachPixelSeesThroughItsFilter) {
    const std::string names = "RGB";
    const std::string cells[] = {"RGGB", "BGGR", "GRBG", "GBRG"};
    for (std::size_t light = 0; light < 3; ++light) {
        Color8 color{};
        color[light] = 255;
        const FlatPicture flat(color);
        for (int phase = 1; phase <= 4; ++phase) {
            LightPicture picture;
            ASSERT_TRUE(picture.Look(flat.Path(), 4, 4, phase));
            for (std::size_t i = 0; i < 16; ++i) {
                const auto filter = names.find(cells[phase - 1][i / 4 % 2 * 2 + i % 2]);
                EXPECT_NEAR(picture.Levels()[i] / kUnitLevel, SpectralResponse()[filter][light], 1e-4) << phase << i;
            }
        }
    }
}

}  // namespace
}  // namespace zel::sim::test
