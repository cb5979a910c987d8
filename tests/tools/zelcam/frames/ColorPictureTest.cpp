#include "tools/zelcam/frames/ColorPicture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "include/ZelImage.h"

namespace zelcam {

// What the file will say of the frame's samples, and that a frame without them is no picture.
TEST(ColorPng, IsThePictureOfItsSettingAndOnlyWhenItIsThere) {
    using zel::ColorFormat, zel::ColorSpace, zel::PngFormat, zel::PngLight;
    const struct {
        ColorFormat format;
        ColorSpace space;
        PngFormat expected;
        PngLight light;
        unsigned pixel_bytes;
    } cases[] = {{ColorFormat::rgb16, ColorSpace::srgb, PngFormat::kRgb16, PngLight::kSrgb, 6},
                 {ColorFormat::rgb8, ColorSpace::xyz, PngFormat::kRgb8, PngLight::kLinear, 3},
                 {ColorFormat::rgba8, ColorSpace::sensor, PngFormat::kRgba8, PngLight::kLinear, 4}};
    for (const auto& c : cases) {
        const auto picture_of = [&](const ZelColorImage& image) {
            return ColorPng(image, {c.format, c.space, 14, 64}, 2);
        };
        std::vector<std::uint8_t> pixels(2 * c.pixel_bytes);
        ZelColorImage image{};
        image.w = 2;
        image.h = 1;
        image.color_pixels = pixels.data();
        image.color_size_in_bytes = static_cast<unsigned>(pixels.size());
        const auto picture = picture_of(image);
        ASSERT_TRUE(picture);
        EXPECT_TRUE(picture->format == c.expected && picture->light == c.light);
        EXPECT_TRUE(picture->width == 2 && picture->height == 1 && picture->shift == 2);
        EXPECT_EQ(picture->pixels, pixels.data());
        ZelColorImage huge = image, none = image, flat = image;
        --image.color_size_in_bytes;
        huge.h = 0xFFFFFFFFu;
        flat.h = 0;
        none.color_pixels = nullptr;
        EXPECT_FALSE(picture_of(image) || picture_of(huge) || picture_of(none) || picture_of(flat));
    }
}

}  // namespace zelcam
