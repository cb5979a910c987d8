// Tap order and 12-bit packing, against plain decoders that go through the raw data sample by sample.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "devices/sim/sensor/RawReadout.h"
#include "tests/devices/sim/sensor/FrameStatistics.h"

namespace zel::sim::test {
namespace {

constexpr std::uint16_t kGuard = 0xDEAD;

Frame Numbered(std::size_t count) {
    Frame frame(count);
    std::iota(frame.begin(), frame.end(), std::uint16_t{1});
    return frame;
}

// Where sample i of the raw data belongs. False for a sample that no group of four holds.
bool PlaceOf(std::size_t i, std::size_t w, std::size_t h, int taps, std::size_t& x, std::size_t& y) {
    x = i % w;
    y = i / w;
    if (taps == 2) {
        x = x % 2 ? w - 1 - x / 2 : x / 2;
    } else if (taps == 4) {
        const std::size_t groups = w / 2;
        if (i / 4 >= groups * (h / 2)) return false;
        const std::size_t column = i / 4 % groups;
        const std::size_t row = i / 4 / groups;
        x = i % 2 ? w - 1 - column : column;
        y = i % 4 >= 2 ? h - 1 - row : row;
    }
    return true;
}

class TapOrderTest : public testing::TestWithParam<int> {};

TEST_P(TapOrderTest, APlainDecoderGetsThePictureBack) {
    const int taps = GetParam();
    for (std::size_t w = 1; w <= 9; ++w) {
        for (std::size_t h = 1; h <= 7; ++h) {
            const Frame picture = Numbered(w * h);
            Frame raw(picture.size() + 1, kGuard);
            ReadOutTaps(picture, static_cast<unsigned>(w), static_cast<unsigned>(h), taps, raw);
            EXPECT_EQ(raw.back(), kGuard);
            Frame too_short(picture.size() - 1, kGuard);
            ReadOutTaps(picture, static_cast<unsigned>(w), static_cast<unsigned>(h), taps, too_short);
            EXPECT_EQ(too_short, Frame(picture.size() - 1, kGuard));
            Frame rest;
            for (std::size_t i = 0; i < picture.size(); ++i) {
                std::size_t x = 0;
                std::size_t y = 0;
                if (PlaceOf(i, w, h, taps, x, y)) {
                    ASSERT_EQ(raw[i], picture[y * w + x]) << w << "x" << h << " sample " << i;
                } else {
                    rest.push_back(raw[i]);
                }
            }
            // The rest is the middle column and row, in picture order.
            ASSERT_TRUE(std::is_sorted(rest.begin(), rest.end())) << w << "x" << h;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(RawReadout, TapOrderTest, testing::Values(1, 2, 4));

TEST(Pack12Test, OddCountsShortBuffersAndHighBits) {
    const Frame samples{0xABC, 0x123, 0xFDEF};  // bits above 11 of the last are dropped
    const std::vector<std::uint8_t> whole{0xAB, 0x3C, 0x12, 0xDE, 0x0F};
    const std::size_t written[] = {0, 0, 0, 3, 3, 5, 5};
    for (std::size_t room = 0; room < std::size(written); ++room) {
        std::vector<std::uint8_t> packed(room + 2, 0x77);
        EXPECT_EQ(Pack12(samples, std::span(packed).first(room)), written[room]) << room;
        for (std::size_t i = 0; i < packed.size(); ++i)
            EXPECT_EQ(packed[i], i < written[room] ? whole[i] : 0x77) << room << " " << i;
    }
}

}  // namespace
}  // namespace zel::sim::test
