// What stays the same from frame to frame, from run to run and in both products; the three fills; every size.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/devices/sim/scene/PictureFile.h"
#include "tests/devices/sim/sensor/FrameStatistics.h"

namespace zel::sim::test {
namespace {

SensorModel SmallModel(unsigned width, unsigned height, int phase = 0) {
    SensorModel model;
    model.width = width;
    model.height = height;
    model.cfa_phase = phase;
    return model;
}

// The hashes hold in both products. One that changes means that simulated cameras deliver other frames than before.
TEST(SensorDeterminism, FramesAreTheSameEverywhere) {
    const auto color = [](int x, int y) {
        return Color8{static_cast<std::uint8_t>(x * 5), static_cast<std::uint8_t>(x * y),
                      static_cast<std::uint8_t>(255 - y * 4)};
    };
    const TemporaryFile file("colors.jpg", EncodePicture(FileKind::kJpeg, 50, 60, color));
    SensorModel mono = SmallModel(333, 517);
    mono.bits = 12;
    SensorModel picture = SmallModel(33, 20, 2);
    picture.scene = file.Path();
    const struct {
        SensorModel model;
        SensorSettings settings;
        std::uint64_t number;
        std::uint64_t hash;
    } cases[] = {{mono, {2500.0, 431.0, 17.5, 41.3}, 5, 0xAF71A101D27D5DBB},
                 {SmallModel(320, 240, 1), {20000.0, 63.0, 64.0, -20.0}, 5, 0x2570ED19B2603B46},
                 {picture, {}, 1, 0x15C425BA22209054}};
    for (const auto& c : cases) {
        Sensor sensor(c.model);
        const Frame frame = RenderFrame(sensor, c.settings, c.number);
        EXPECT_EQ(Hash(frame), c.hash) << c.model.width << std::hex << " " << Hash(frame);
    }
}

TEST(SensorFillTest, StaticRepeatsOneFrameUnderItsNumber) {
    Sensor sensor(SmallModel(64, 48));
    constexpr std::uint64_t kNumber = 0x9A12345678u;
    const Frame first = RenderFrame(sensor, {}, kNumber, SensorFill::kStatic);
    const Frame second = RenderFrame(sensor, {}, 2, SensorFill::kStatic);
    EXPECT_EQ(first[0], 0x5678);
    EXPECT_EQ(first[1], 0x1234);
    EXPECT_EQ(second[0], 2);
    EXPECT_EQ(second[1], 0);
    EXPECT_TRUE(std::equal(first.begin() + 2, first.end(), second.begin() + 2));
    EXPECT_GT(Variance(first), 100.0);
}

// Samples beyond the picture stay as they are, and a buffer that is too short is left alone.
TEST(SensorSizes, EverySizeStaysInsideItsBuffer) {
    const std::pair<unsigned, unsigned> sizes[] = {{1, 1},     {2, 1},    {1, 2},    {1, 700}, {700, 1},
                                                   {199, 201}, {1025, 3}, {4096, 2}, {0, 9}};
    for (const auto& [w, h] : sizes) {
        Sensor sensor(SmallModel(w, h, 3));
        const std::size_t pixels = static_cast<std::size_t>(w) * h;
        for (const SensorFill fill : {SensorFill::kNoise, SensorFill::kStatic, SensorFill::kNone}) {
            Frame frame(pixels + 1, 0xBEEF);
            sensor.Render({}, fill, 1, frame);
            EXPECT_EQ(frame.back(), 0xBEEF) << w << "x" << h;
            if (pixels == 0) continue;
            Frame short_frame(pixels - 1, 0xBEEF);
            sensor.Render({}, fill, 1, short_frame);
            EXPECT_EQ(short_frame, Frame(pixels - 1, 0xBEEF)) << w << "x" << h;
        }
    }
}

}  // namespace
}  // namespace zel::sim::test
