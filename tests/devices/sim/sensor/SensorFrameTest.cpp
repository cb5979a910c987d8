// What stays the same from frame to frame, from run to run and in all products; the three fills; every size.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "tests/devices/sim/scene/PictureFile.h"
#include "tests/devices/sim/sensor/FrameStatistics.h"

namespace zel::sim::test {

// The hashes hold in all products. One that changes means that simulated cameras deliver other frames than before.
TEST(SensorDeterminism, FramesAreTheSameEverywhere) {
    const auto color = [](int x, int y) {
        return Color8{static_cast<std::uint8_t>(x * 5), static_cast<std::uint8_t>(x * y),
                      static_cast<std::uint8_t>(255 - y * 4)};
    };
    const TemporaryFile file(EncodePicture(FileKind::kJpeg, 50, 60, color), ".jpg");
    SensorModel mono = ModelOf(333, 517);
    mono.bits = 12;
    SensorModel moving = ModelOf(320, 240);
    moving.motion = {true, true, 3.0};
    SensorModel moving_color = ModelOf(96, 200, 4);
    moving_color.motion = {true, true, 1.0};
    const SensorModel picture = ModelOf(33, 20, 2, file.Name());
    const struct {
        SensorModel model;
        SensorSettings settings;
        std::uint64_t number;
        std::uint64_t hash;
    } cases[] = {{mono, {2500.0, 431.0, 17.5, 41.3}, 5, 0xAF71A101D27D5DBB},
                 {ModelOf(320, 240, 1), {20000.0, 63.0, 64.0, -20.0}, 5, 0x2570ED19B2603B46},
                 {moving, {}, 7, 0xC6E175E7DD8B1BC},
                 {moving_color, {}, 100000, 0x7473A82A9513EEB3},
                 {picture, {}, 1, 0x15C425BA22209054}};
    for (const auto& c : cases) {
        Sensor sensor(c.model);
        if (c.model.motion.Any()) RenderFrame(sensor, c.settings, c.number + 2);  // leaves no trace
        const Frame frame = RenderFrame(sensor, c.settings, c.number);
        EXPECT_EQ(Hash(frame), c.hash) << c.model.width << std::hex << " " << Hash(frame);
    }
}

TEST(SensorFillTest, StaticRepeatsOneFrameUnderItsNumber) {
    Sensor sensor(ModelOf(64, 48));
    constexpr std::uint64_t kNumber = 0x9A12345678u;
    const Frame first = RenderFrame(sensor, {}, kNumber, SensorFill::kStatic);
    const Frame second = RenderFrame(sensor, {}, 2, SensorFill::kStatic);
    EXPECT_TRUE(first[0] == 0x5678 && first[1] == 0x1234 && second[0] == 2 && second[1] == 0);
    EXPECT_TRUE(std::equal(first.begin() + 2, first.end(), second.begin() + 2));
    EXPECT_GT(std::set(first.begin(), first.end()).size(), 100u) << "a scene with noise";
}

// Samples beyond the picture stay as they are, and a buffer that is too short is left alone.
TEST(SensorSizes, EverySizeStaysInsideItsBuffer) {
    const std::pair<unsigned, unsigned> sizes[] = {{16, 16}, {16, 4096}, {8192, 16}};
    for (const auto& [w, h] : sizes) {
        SensorModel model = ModelOf(w, h, 3);
        model.motion = {true, true, 1000.0};
        Sensor sensor(model);
        const std::size_t pixels = static_cast<std::size_t>(w) * h;
        for (const SensorFill fill : {SensorFill::kNoise, SensorFill::kStatic, SensorFill::kNone}) {
            Frame long_frame(pixels + 1, 0xBEEF), short_frame(pixels - 1, 0xBEEF);
            for (Frame* frame : {&long_frame, &short_frame}) sensor.Render({}, fill, 1, *frame);
            EXPECT_EQ(long_frame.back(), 0xBEEF) << w << "x" << h;
            EXPECT_EQ(short_frame, Frame(pixels - 1, 0xBEEF)) << w << "x" << h;
        }
    }
}

}  // namespace zel::sim::test
