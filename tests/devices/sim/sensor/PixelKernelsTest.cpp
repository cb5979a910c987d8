// Every form of the renderer against the plain one.
#include <gtest/gtest.h>

#include "devices/sim/scene/Noise.h"
#include "devices/sim/sensor/PixelKernels.h"
#include "tests/devices/sim/sensor/FrameStatistics.h"

namespace zel::sim::test {

// Steps of light, from flat ones to levels without any order, dark and beyond the converter's end; every tap and none.
TEST(PixelKernelsTest, EveryFormIsEqualToThePlainOne) {
    const CalibrationData calibration = FactoryCalibration(ModelOfLink(3, 0));
    RandomNumbers numbers(7);
    for (const int bits : {8, 12, 14}) {
        SensorModel model;
        model.bits = bits;
        SensorSettings settings;
        settings.exposure_us = 20000.0;
        SignalTable table;
        TapGains gains;
        ASSERT_TRUE(table.Build(model, settings) && gains.Build(calibration, {4, 40, 0.0}, bits));
        for (const unsigned spread : {1u, 20u, 3000u, 65536u}) {
            Frame levels(1000);
            for (std::size_t i = 0; i < levels.size(); ++i) {
                const auto top = static_cast<std::uint32_t>(i / 100 * 6500);
                levels[i] = static_cast<std::uint16_t>(top - numbers.NextBelow(std::min(spread, top + 1)));
            }
            for (unsigned tap = 0; tap < 5; ++tap) {
                const TapMap map = tap < 4 ? gains.Map(tap / 2, 2, tap % 2 == 1) : TapMap{};
                const PixelSettings pixel{table.Signals(),   map,   table.FullWell(),
                                          table.ReadNoise(), 64.5f, static_cast<float>(gains.Ceiling()) + 0.5f};
                Frame expected(levels.size());
                const float* const shot = GaussianStretch(numbers);
                const float* const read = GaussianStretch(numbers);
                RenderPixelsPlain(pixel, {levels.data(), shot, read, expected.data(), levels.size()});
                for (const PixelKernel form : PixelKernels()) {
                    Frame samples(levels.size());
                    form(pixel, {levels.data(), shot, read, samples.data(), samples.size()});
                    EXPECT_EQ(samples, expected) << bits << " bits, spread " << spread << ", tap " << tap;
                }
            }
        }
    }
}

}  // namespace zel::sim::test
