// Tap order and 12-bit packing, against plain decoders that go through the raw data sample by sample.
#include <gtest/gtest.h>

#include <numeric>

#include "devices/sim/sensor/RawReadout.h"
#include "tests/devices/sim/sensor/FrameStatistics.h"

namespace zel::sim::test {
namespace {

TEST(RawReadout, APlainDecoderGetsThePictureBack) {
    constexpr std::size_t kWidth = 10;
    constexpr std::size_t kHeight = 6;
    Frame picture(kWidth * kHeight);
    std::iota(picture.begin(), picture.end(), std::uint16_t{1});
    for (const std::size_t taps : {1u, 2u, 4u}) {
        Frame raw(picture.size());
        ReadOutTaps(picture, kWidth, kHeight, static_cast<int>(taps), raw);
        for (std::size_t i = 0; i < picture.size(); ++i) {
            std::size_t x = i % kWidth;
            std::size_t y = i / kWidth;
            if (taps > 1) {
                x = i / taps % (kWidth / 2);
                y = i / taps / (kWidth / 2);
                if (i % 2 == 1) x = kWidth - 1 - x;
                if (i % taps >= 2) y = kHeight - 1 - y;
            }
            EXPECT_EQ(raw[i], picture[y * kWidth + x]) << taps << " taps, sample " << i;
        }
    }
}

TEST(RawReadout, PackingDropsHighBitsAndWhatDoesNotFit) {
    const Frame samples{0xABC, 0x123, 0xFDEF, 0x456};
    const std::vector<std::uint8_t> whole{0xAB, 0x3C, 0x12, 0xDE, 0x6F, 0x45};
    for (const std::size_t room : {2u, 3u, 5u, 6u, 7u}) {
        std::vector<std::uint8_t> packed(room, 0x77);
        Pack12(samples, packed);
        for (std::size_t i = 0; i < room; ++i) EXPECT_EQ(packed[i], i < room / 3 * 3 ? whole[i] : 0x77) << room << i;
    }
}

}  // namespace
}  // namespace zel::sim::test
