#include "tools/zelcam/frames/ColorPicture.h"

#include "include/ZelImage.h"
#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

// A frame of 2 x 1 pixels, blue, green and red of each, the fourth byte of a pixel unused.
TEST(PngSamples, ChannelsComeInTheOrderOfAPictureAndOnlyWhenTheyAreThere) {
    const std::vector<std::uint8_t> wide{2, 1, 4, 3, 6, 5, 0xFF, 0x3F, 0, 0x40, 0xFF, 0xFF};
    const struct {
        ColorFormat format;
        unsigned shift;
        std::vector<std::uint8_t> pixels, expected;
    } cases[] = {
        {ColorFormat::k16, 0, wide, {5, 6, 3, 4, 1, 2, 0xFF, 0xFF, 0x40, 0, 0x3F, 0xFF}},
        {ColorFormat::k16, 2, wide, {0x14, 0x18, 0x0C, 0x10, 4, 8, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFC}},
        {ColorFormat::k8, 0, {1, 2, 3, 4, 5, 6}, {3, 2, 1, 6, 5, 4}},
        {ColorFormat::kRgba8, 0, {1, 2, 3, 0, 4, 5, 6, 9}, {3, 2, 1, 255, 6, 5, 4, 255}},
    };
    for (const auto& c : cases) {
        const ColorSetting setting{c.format, ColorSpace::kSrgb, 14, 64};
        std::vector<std::uint8_t> pixels = c.pixels;
        ZelColorImage image{};
        image.w = 2;
        image.h = 1;
        image.color_pixels = pixels.data();
        image.color_size_in_bytes = static_cast<unsigned>(pixels.size());
        EXPECT_EQ(PngSamples(image, setting, c.shift), c.expected);
        --image.color_size_in_bytes;
        EXPECT_TRUE(PngSamples(image, setting, 0).empty());
        ++image.color_size_in_bytes;
        image.h = 0xFFFFFFFFu;
        EXPECT_TRUE(PngSamples(image, setting, 0).empty());
        image.h = 1;
        image.color_pixels = nullptr;
        EXPECT_TRUE(PngSamples(image, setting, 0).empty());
    }
}

TEST(ColorPng, WhatCanNotBeWrittenSaysWhy) {
    const TemporaryFolder folder;
    const struct {
        const char* name;
        std::size_t samples;
        FailureKind kind;
        const char* why;
    } cases[] = {{"gone/a.png", 12, kOutput, "its folder is gone"},
                 {".", 12, kOutput, "the file can't be opened"},
                 {"b.png", 11, kFailed, "no color picture"},
                 {"b.png", 0, kFailed, "no color picture"}};
    for (const auto& c : cases) {
        const std::vector<std::uint8_t> samples(c.samples);
        ExpectFailure([&] { WriteColorPng(folder / c.name, samples, 2, 1, ColorSetting()); }, c.kind, c.why);
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "b.png"));
}

}  // namespace zelcam
