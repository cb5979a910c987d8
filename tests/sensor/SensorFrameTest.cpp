// What stays the same from frame to frame, from run to run and in both products; the three fills; every size.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>

#include "sim/PlainMath.h"
#include "tests/sensor/FrameStatistics.h"
#include "tests/sensor/PictureFile.h"

namespace zel::sim::test {
namespace {

SensorModel SmallModel(unsigned width, unsigned height, int phase = 0) {
    SensorModel model;
    model.width = width;
    model.height = height;
    model.cfa_phase = phase;
    return model;
}

struct Golden {
    const char* name;
    unsigned width;
    unsigned height;
    int bits;
    int phase;
    SensorSettings settings;
    std::uint64_t hash;
};

class SensorGoldenTest : public testing::TestWithParam<Golden> {};

// The hashes hold in both products. One that changes means that simulated cameras deliver other frames than before.
TEST_P(SensorGoldenTest, FrameIsTheSameEverywhere) {
    const Golden& c = GetParam();
    SensorModel model = SmallModel(c.width, c.height, c.phase);
    model.bits = c.bits;
    Sensor sensor(model);
    EXPECT_EQ(Hash(RenderFrame(sensor, c.settings, 5)), c.hash) << std::hex << Hash(RenderFrame(sensor, c.settings, 5));
}

INSTANTIATE_TEST_SUITE_P(
    Sensor, SensorGoldenTest,
    testing::Values(Golden{"Mono", 640, 480, 14, 0, {}, 0x1E82767CCE285522},
                    Golden{"MonoWarmAndAmplified", 333, 517, 12, 0, {2500.0, 431.0, 17.5, 41.3}, 0xAF71A101D27D5DBB},
                    Golden{"Color", 320, 240, 14, 1, {20000.0, 63.0, 64.0, -20.0}, 0x2570ED19B2603B46},
                    Golden{"Strip", 1024, 64, 16, 0, {40000.0, 0.0, 200.0, 25.0}, 0x90403604A12A9956}),
    [](const auto& param) { return std::string(param.param.name); });

// Decoding and scaling a compressed picture rounds alike in both products.
TEST(SensorDeterminism, APictureFileGivesTheSameFrameEverywhere) {
    const auto color = [](int x, int y) {
        return Color8{static_cast<std::uint8_t>(x * 5), static_cast<std::uint8_t>(x * y),
                      static_cast<std::uint8_t>(255 - y * 4)};
    };
    const TemporaryFile file("colors.jpg", EncodePicture(FileKind::kJpeg, 50, 60, color));
    for (const auto& [w, h, hash] : {std::tuple{33u, 20u, std::uint64_t{0x15C425BA22209054}},
                                     std::tuple{160u, 120u, std::uint64_t{0x7E6939BC404571F3}}}) {
        SensorModel model = SmallModel(w, h, 2);
        model.scene = file.Path();
        Sensor sensor(model);
        const Frame frame = RenderFrame(sensor, {}, 1);
        EXPECT_EQ(Hash(frame), hash) << std::hex << Hash(frame);
    }
}

TEST(SensorDeterminism, AFrameDependsOnModelSettingsAndNumberOnly) {
    const SensorModel model = SmallModel(97, 61);
    Sensor sensor(model);
    const SensorSettings other{5000.0, 10.0, 64.0, 25.0};
    const Frame third = RenderFrame(sensor, {}, 3);
    EXPECT_NE(third, RenderFrame(sensor, {}, 4));
    EXPECT_NE(third, RenderFrame(sensor, other, 3));
    EXPECT_EQ(third, RenderFrame(sensor, {}, 3));  // after other numbers and other settings
    Sensor twin(model);
    EXPECT_EQ(third, RenderFrame(twin, {}, 3));
    SensorModel seeded = model;
    seeded.seed = 99;
    Sensor stranger(seeded);
    EXPECT_NE(third, RenderFrame(stranger, {}, 3));
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

    const SensorSettings brighter{20000.0, 0.0, 64.0, 25.0};
    const Frame changed = RenderFrame(sensor, brighter, 3, SensorFill::kStatic);
    EXPECT_NEAR(Mean(changed) - 64.0, 2.0 * (Mean(second) - 64.0), 0.02 * Mean(changed));
}

TEST(SensorFillTest, NoneWritesTheNumberOnly) {
    Sensor sensor(SmallModel(5, 4));
    Frame frame(20, 777);
    sensor.Render({}, SensorFill::kNone, 0x20003, frame);
    Frame expected(20, 777);
    expected[0] = 3;
    expected[1] = 2;
    EXPECT_EQ(frame, expected);
}

// Samples beyond the picture stay as they are, and a buffer that is too short is left alone.
TEST(SensorSizes, EverySizeStaysInsideItsBuffer) {
    const std::pair<unsigned, unsigned> sizes[] = {{1, 1},  {2, 1},     {1, 2},    {3, 3},    {1, 700}, {700, 1},
                                                   {17, 5}, {199, 201}, {1025, 3}, {4096, 2}, {0, 0},   {0, 9}};
    for (const auto& [w, h] : sizes) {
        for (const int phase : {0, 3}) {
            Sensor sensor(SmallModel(w, h, phase));
            const std::size_t pixels = static_cast<std::size_t>(w) * h;
            for (const SensorFill fill : {SensorFill::kNoise, SensorFill::kStatic, SensorFill::kNone}) {
                Frame frame(pixels + 3, 0xBEEF);
                sensor.Render({}, fill, 1, frame);
                EXPECT_TRUE(std::all_of(frame.end() - 3, frame.end(), [](auto v) { return v == 0xBEEF; }))
                    << w << "x" << h;
                if (fill == SensorFill::kNoise) {
                    EXPECT_TRUE(std::all_of(frame.begin(), frame.end() - 3, [](auto v) { return v <= 16383; }))
                        << w << "x" << h;
                }
                if (pixels == 0) continue;
                Frame short_frame(pixels - 1, 0xBEEF);
                sensor.Render({}, fill, 1, short_frame);
                EXPECT_EQ(short_frame, Frame(pixels - 1, 0xBEEF)) << w << "x" << h;
            }
        }
    }
}

TEST(PlainMathTest, AgreesWithTheRunTimeLibrary) {
    constexpr double kClose = 4e-16;
    for (double x = -30.0; x <= 30.0; x += 0.137) {
        EXPECT_NEAR(PlainExp(x) / std::exp(x), 1.0, 8e-15) << x;
        const double positive = std::exp(x);
        EXPECT_NEAR(PlainLog(positive), std::log(positive), kClose * std::max(1.0, std::fabs(x))) << x;
        EXPECT_NEAR(PlainPow(10.0, x / 5.0) / std::pow(10.0, x / 5.0), 1.0, 1e-14) << x;
        for (const double y : {-3.0, -0.2, 0.0, 0.7, 1e6}) {
            EXPECT_NEAR(PlainAtan2(y, x), std::atan2(y, x), 2.0 * kClose) << y << ", " << x;
        }
    }
    EXPECT_EQ(PlainAtan2(0.0, 0.0), 0.0);
}

}  // namespace
}  // namespace zel::sim::test
