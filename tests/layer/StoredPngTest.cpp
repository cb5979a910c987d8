// Color pictures as PNG files, read back by another program's decoder.
#include <gtest/gtest.h>
#include <lodepng.h>

#include <numeric>

#include "zel/Zel.h"

namespace zel {
namespace {

struct Owner : detail::FrameOwner {
    int back = 0;
    void give_back(ZelColorImage*, bool color) noexcept override { back += color; }
};

TEST(LayerStoredPng, HoldsThePictureInEveryFormat) {
    const struct {
        ColorSetting setting;
        unsigned width, height;
    } cases[] = {{{ColorFormat::rgb16, ColorSpace::linear, 14, 0}, 7, 5},
                 {{ColorFormat::rgb16, ColorSpace::srgb, 12, 0}, 180, 130},  // more than one stored block
                 {{ColorFormat::rgb8, ColorSpace::srgb, 14, 0}, 64, 48},
                 {{ColorFormat::rgba8, ColorSpace::xyz, 14, 0}, 1, 1}};
    for (const auto& c : cases) {
        const unsigned bytes = c.setting.bytes_per_channel(), channels = c.setting.channels();
        std::vector<std::uint16_t> samples(std::size_t{c.width} * c.height * channels);
        std::iota(samples.begin(), samples.end(), std::uint16_t{1});
        std::vector<std::uint8_t> narrow(samples.begin(), samples.end());
        ZelColorImage image{};
        image.w = c.width;
        image.h = c.height;
        image.color_pixels = bytes == 2 ? static_cast<void*>(samples.data()) : narrow.data();
        image.color_size_in_bytes = static_cast<unsigned>(samples.size() * bytes);
        const auto owner = std::make_shared<Owner>();
        Frame frame(owner, &image, c.setting, {});
        const auto png = detail::stored_png(frame);
        std::vector<unsigned char> decoded;
        unsigned width = 0, height = 0;
        lodepng::State state;
        state.info_raw.colortype = channels == 4 ? LCT_RGBA : LCT_RGB;
        state.info_raw.bitdepth = 8 * bytes;
        ASSERT_EQ(lodepng::decode(decoded, width, height, state, png), 0u);
        ASSERT_EQ(std::tuple(width, height, decoded.size()), std::tuple(c.width, c.height, samples.size() * bytes));
        EXPECT_EQ(state.info_png.srgb_defined, c.setting.space == ColorSpace::srgb);
        const unsigned shift = 8 * bytes - c.setting.output_bits();
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const std::size_t channel = i % channels, from = channel < 3 ? i + 2 - 2 * channel : i;
            const unsigned expected = bytes == 2 ? (samples[from] << shift) & 0xFFFF : narrow[from];
            const unsigned found = bytes == 2 ? decoded[2 * i] * 256u + decoded[2 * i + 1] : decoded[i];
            ASSERT_EQ(found, expected) << "sample " << i << " of " << c.width << "x" << c.height;
        }
        frame.reset();
        frame.reset();
        EXPECT_EQ(owner->back, 1);
        EXPECT_TRUE(owner.use_count() == 1 && !frame);
    }
}

}  // namespace
}  // namespace zel
