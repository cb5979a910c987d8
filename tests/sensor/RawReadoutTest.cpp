// Tap order and 12-bit packing, against plain decoders that go through the raw data sample by sample.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "sim/RawReadout.h"
#include "tests/sensor/FrameStatistics.h"

namespace zel::sim::test {
namespace {

constexpr std::uint16_t kGuard = 0xDEAD;

Frame Numbered(std::size_t count) {
    Frame frame(count);
    std::iota(frame.begin(), frame.end(), std::uint16_t{1});
    return frame;
}

// Raw data of a picture; what lies beyond it in the buffer must stay.
Frame ReadOut(const Frame& picture, unsigned w, unsigned h, int taps) {
    Frame raw(picture.size() + 4, kGuard);
    ReadOutTaps(picture, w, h, taps, raw);
    EXPECT_TRUE(std::all_of(raw.end() - 4, raw.end(), [](auto v) { return v == kGuard; }))
        << w << "x" << h << " " << taps;
    raw.resize(picture.size());
    return raw;
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
            const Frame raw = ReadOut(picture, static_cast<unsigned>(w), static_cast<unsigned>(h), taps);
            std::vector<bool> seen(picture.size());
            Frame rest;
            for (std::size_t i = 0; i < raw.size(); ++i) {
                std::size_t x = 0;
                std::size_t y = 0;
                if (PlaceOf(i, w, h, taps, x, y)) {
                    ASSERT_EQ(raw[i], picture[y * w + x]) << w << "x" << h << " sample " << i;
                    seen[y * w + x] = true;
                } else {
                    rest.push_back(raw[i]);
                }
            }
            // The rest is the middle column and row, in picture order.
            Frame expected;
            for (std::size_t i = 0; i < picture.size(); ++i) {
                if (!seen[i]) expected.push_back(picture[i]);
            }
            ASSERT_EQ(rest, expected) << w << "x" << h;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(RawReadout, TapOrderTest, testing::Values(1, 2, 3, 4, 0),
                         [](const auto& param) { return "Taps" + std::to_string(param.param); });

TEST(TapOrder, BuffersThatAreTooShortStayAsTheyAre) {
    const Frame picture = Numbered(24);
    for (const int taps : {1, 2, 4}) {
        Frame raw(23, kGuard);
        ReadOutTaps(picture, 6, 4, taps, raw);
        EXPECT_EQ(raw, Frame(23, kGuard));
        Frame large(40, kGuard);
        ReadOutTaps(picture, 6, 5, taps, large);
        ReadOutTaps(picture, 0x10000, 0x10000, taps, large);
        ReadOutTaps(picture, 0, 5, taps, large);
        EXPECT_EQ(large, Frame(40, kGuard));
    }
}

std::vector<unsigned> Unpack(const std::vector<std::uint8_t>& packed, std::size_t count) {
    std::vector<unsigned> samples;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t* b = packed.data() + i / 2 * 3;
        samples.push_back(i % 2 ? b[2] * 16u + (b[1] >> 4) : b[0] * 16u + (b[1] & 0x0Fu));
    }
    return samples;
}

TEST(Pack12Test, EveryValueComesBackWhateverItsNeighbourIs) {
    Frame samples;
    for (unsigned value = 0; value < 4096; ++value) {
        for (const unsigned neighbour : {0u, 0xFFFu, 0x5A3u}) {
            samples.push_back(static_cast<std::uint16_t>(value));
            samples.push_back(static_cast<std::uint16_t>(neighbour));
        }
    }
    for (std::size_t shift = 0; shift < 2; ++shift) {
        std::vector<std::uint8_t> packed(samples.size() / 2 * 3);
        EXPECT_EQ(Pack12(samples, packed), packed.size());
        EXPECT_EQ(Unpack(packed, samples.size()), std::vector<unsigned>(samples.begin(), samples.end()));
        std::rotate(samples.begin(), samples.begin() + 1, samples.end());
    }
}

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
    std::vector<std::uint8_t> packed(2, 0x77);
    EXPECT_EQ(Pack12(std::span(samples).first(1), packed), 2u);
    EXPECT_EQ(packed, (std::vector<std::uint8_t>{0xAB, 0x0C}));
    EXPECT_EQ(Pack12({}, packed), 0u);
}

}  // namespace
}  // namespace zel::sim::test
