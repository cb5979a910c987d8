#include "tools/zelcam/frames/ColorPicture.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "include/ZelImage.h"

namespace zelcam {

// What it says of the picture shows in the files that the program writes.
TEST(ColorPng, AFrameWithoutItsSamplesIsNoPicture) {
    const auto picture_of = [](const ZelColorImage& image) {
        return ColorPng(image, {zel::ColorFormat::rgb16, zel::ColorSpace::srgb, 14, 64}, 2);
    };
    std::uint8_t pixels[2 * 6];
    ZelColorImage image{};
    image.w = 2;
    image.h = 1;
    image.color_pixels = pixels;
    image.color_size_in_bytes = sizeof pixels;
    EXPECT_TRUE(picture_of(image));
    ZelColorImage cut = image, huge = image, none = image, flat = image;
    --cut.color_size_in_bytes;
    huge.h = 0xFFFFFFFFu;
    flat.h = 0;
    none.color_pixels = nullptr;
    for (const ZelColorImage& bad : {cut, huge, none, flat}) EXPECT_FALSE(picture_of(bad));
}

}  // namespace zelcam
