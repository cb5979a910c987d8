#include "tools/zelcam/frames/ColorPicture.h"

#include <gtest/gtest.h>
#include <lodepng.h>

#include <cstring>

#include "include/ZelImage.h"
#include "tests/tools/zelcam/commands/ToolProcess.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

// A frame of 2 x 1 pixels: blue 0x0102, green 0x0304, red 0x0506 in the first, larger values in the second.
struct SmallFrame {
    explicit SmallFrame(ColorFormat wanted) : format(wanted) {
        const std::uint16_t wide[] = {0x0102, 0x0304, 0x0506, 0x3FFF, 0x4000, 0xFFFF};
        const std::uint8_t narrow[] = {1, 2, 3, 4, 5, 6};
        const std::uint8_t four[] = {1, 2, 3, 0, 4, 5, 6, 9};
        if (format == ColorFormat::k16) {
            bytes.resize(sizeof wide);
            std::memcpy(bytes.data(), wide, sizeof wide);
        } else if (format == ColorFormat::k8) {
            bytes.assign(std::begin(narrow), std::end(narrow));
        } else {
            bytes.assign(std::begin(four), std::end(four));
        }
        image.w = 2;
        image.h = 1;
        image.color_pixels = bytes.data();
        image.color_size_in_bytes = static_cast<unsigned>(bytes.size());
    }

    ColorFormat format;
    std::vector<std::uint8_t> bytes;
    ZelColorImage image{};
};

TEST(PngSamples, ChannelsComeInTheOrderOfAPicture) {
    const struct {
        ColorFormat format;
        unsigned shift;
        std::vector<std::uint8_t> expected;
    } cases[] = {
        {ColorFormat::k16, 0, {5, 6, 3, 4, 1, 2, 0xFF, 0xFF, 0x40, 0, 0x3F, 0xFF}},
        {ColorFormat::k16, 2, {0x14, 0x18, 0x0C, 0x10, 4, 8, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFC}},
        {ColorFormat::k8, 0, {3, 2, 1, 6, 5, 4}},
        {ColorFormat::kRgba8, 0, {3, 2, 1, 255, 6, 5, 4, 255}},
    };
    for (const auto& c : cases) {
        const SmallFrame frame(c.format);
        EXPECT_EQ(PngSamples(frame.image, {c.format, ColorSpace::kSrgb, 14, 64}, c.shift), c.expected);
    }
}

TEST(PngSamples, AFrameWithoutAColorPictureOfThatFormatGivesNone) {
    for (const ColorFormat format : {ColorFormat::k16, ColorFormat::k8, ColorFormat::kRgba8}) {
        const ColorSetting setting{format, ColorSpace::kSrgb, 14, 64};
        SmallFrame frame(format);
        --frame.image.color_size_in_bytes;
        EXPECT_TRUE(PngSamples(frame.image, setting, 0).empty());
        ++frame.image.color_size_in_bytes;
        frame.image.h = 0xFFFFFFFFu;
        EXPECT_TRUE(PngSamples(frame.image, setting, 0).empty());
        frame.image.h = 1;
        frame.image.color_pixels = nullptr;
        EXPECT_TRUE(PngSamples(frame.image, setting, 0).empty());
    }
}

TEST(ColorPng, FileHoldsTheFormatAndTheSamples) {
    const TemporaryFolder folder;
    for (const ColorFormat format : {ColorFormat::k16, ColorFormat::k8, ColorFormat::kRgba8}) {
        for (const ColorSpace space : {ColorSpace::kSrgb, ColorSpace::kRgb}) {
            const ColorSetting setting{format, space, 14, 64};
            const SmallFrame frame(format);
            const auto samples = PngSamples(frame.image, setting, 0);
            WriteColorPng(folder / "a.png", samples, 2, 1, setting);
            std::vector<unsigned char> file;
            ASSERT_EQ(lodepng::load_file(file, folder / "a.png"), 0u);
            lodepng::State state;
            state.decoder.color_convert = 0;
            std::vector<unsigned char> read;
            unsigned w = 0;
            unsigned h = 0;
            ASSERT_EQ(lodepng::decode(read, w, h, state, file), 0u);
            EXPECT_EQ(w, 2u);
            EXPECT_EQ(h, 1u);
            EXPECT_EQ(read, samples);
            EXPECT_EQ(state.info_png.color.bitdepth, format == ColorFormat::k16 ? 16u : 8u);
            EXPECT_EQ(state.info_png.color.colortype, format == ColorFormat::kRgba8 ? LCT_RGBA : LCT_RGB);
            EXPECT_EQ(state.info_png.srgb_defined, space == ColorSpace::kSrgb ? 1u : 0u);
            EXPECT_EQ(state.info_png.gama_defined, space == ColorSpace::kSrgb ? 0u : 1u);
        }
    }
    const ColorSetting setting;
    EXPECT_THROW(WriteColorPng(folder / "none/a.png", std::vector<std::uint8_t>(12), 2, 1, setting), Failure);
    EXPECT_THROW(WriteColorPng(folder / "b.png", {}, 0, 0, setting), Failure) << "no picture without pixels";
    EXPECT_FALSE(std::filesystem::exists(folder / "b.png"));
}

}  // namespace zelcam
