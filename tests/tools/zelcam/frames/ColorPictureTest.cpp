#include "tools/zelcam/frames/ColorPicture.h"

#include "include/ZelImage.h"
#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

// A frame of 2 x 1 pixels, blue, green and red of each, the fourth byte of a pixel unused.
TEST(PngSamples, ChannelsComeInTheOrderOfAPictureAndOnlyWhenTheyAreThere) {
    const struct {
        zel::ColorFormat format;
        unsigned shift;
        std::vector<std::uint8_t> pixels, expected;
    } cases[] = {
        {zel::ColorFormat::rgb16,
         2,
         {2, 1, 4, 3, 6, 5, 0xFF, 0x3F, 0, 0x40, 0xFF, 0xFF},
         {0x14, 0x18, 0x0C, 0x10, 4, 8, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFC}},
        {zel::ColorFormat::rgba8, 0, {1, 2, 3, 0, 4, 5, 6, 9}, {3, 2, 1, 255, 6, 5, 4, 255}},
    };
    for (const auto& c : cases) {
        const auto samples = [&](const ZelColorImage& image) {
            return PngSamples(image, {c.format, zel::ColorSpace::srgb, 14, 64}, c.shift);
        };
        std::vector<std::uint8_t> pixels = c.pixels;
        ZelColorImage image{};
        image.w = 2;
        image.h = 1;
        image.color_pixels = pixels.data();
        image.color_size_in_bytes = static_cast<unsigned>(pixels.size());
        EXPECT_EQ(samples(image), c.expected);
        ZelColorImage huge = image, none = image;
        --image.color_size_in_bytes;
        huge.h = 0xFFFFFFFFu;
        none.color_pixels = nullptr;
        EXPECT_TRUE(samples(image).empty() && samples(huge).empty() && samples(none).empty());
    }
}

TEST(ColorPng, WhatCanNotBeWrittenSaysWhy) {
    const TemporaryFolder folder;
    const std::tuple<const char*, std::size_t, FailureKind, const char*> cases[] = {
        {"gone/a.png", 12, kOutput, "its folder is gone"},
        {".", 12, kOutput, "the file can't be opened"},
        {"b.png", 11, kFailed, "no color picture"},
        {"b.png", 0, kFailed, "no color picture"}};
    for (const auto& [name, size, kind, why] : cases) {
        const std::vector<std::uint8_t> samples(size);
        ExpectFailure([&] { WriteColorPng(folder / name, samples, 2, 1, zel::ColorSetting()); }, kind, why);
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "b.png"));
}

}  // namespace zelcam
