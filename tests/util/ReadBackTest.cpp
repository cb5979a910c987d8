// The files as other people's libraries read them.
#include <gtest/gtest.h>
#include <png.h>
#include <tiffio.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include "tests/util/FileTools.h"
#include "util/ZelUtilImpl.h"

namespace zel {
namespace {

class ReadBackTest : public testing::TestWithParam<std::tuple<unsigned, unsigned, test::Frame::Kind>> {
  protected:
    const unsigned m_Width = std::get<0>(GetParam());
    const unsigned m_Height = std::get<1>(GetParam());
    test::Frame m_Frame{m_Width, m_Height, std::get<2>(GetParam())};
    std::vector<std::uint16_t> m_Read = std::vector<std::uint16_t>(std::size_t{m_Width} * m_Height);
};

TEST_P(ReadBackTest, Tiff) {
    const test::TemporaryFile file(".tif");
    ASSERT_TRUE(UtilInstance()->SaveTIFF(file.Name(), m_Frame.Image()));
    TIFFSetWarningHandler(nullptr);  // it remarks on the order of the directory
    TIFF* const tiff = TIFFOpen(file.Name(), "r");
    ASSERT_NE(nullptr, tiff);
    std::uint32_t width = 0, height = 0;
    std::uint16_t bits = 0, unit = 0;
    float resolution = 0;
    EXPECT_TRUE(TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width));
    EXPECT_TRUE(TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height));
    EXPECT_TRUE(TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits));
    EXPECT_TRUE(TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &resolution));
    EXPECT_TRUE(TIFFGetField(tiff, TIFFTAG_RESOLUTIONUNIT, &unit));
    EXPECT_EQ(m_Width, width);
    EXPECT_EQ(m_Height, height);
    EXPECT_EQ(16, bits);
    EXPECT_EQ(1200.0f, resolution);
    EXPECT_EQ(RESUNIT_INCH, unit);
    for (std::uint32_t row = 0; row < m_Height; ++row) {
        ASSERT_EQ(1, TIFFReadScanline(tiff, m_Read.data() + std::size_t{row} * m_Width, row)) << row;
    }
    TIFFClose(tiff);
    EXPECT_TRUE(m_Read == m_Frame.Samples());
}

TEST_P(ReadBackTest, Png) {
    const test::TemporaryFile file(".png");
    ASSERT_TRUE(UtilInstance()->SavePNG(file.Name(), m_Frame.Image()));
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    ASSERT_TRUE(png_image_begin_read_from_file(&image, file.Name())) << image.message;
    EXPECT_EQ(m_Width, image.width);
    EXPECT_EQ(m_Height, image.height);
    EXPECT_EQ(static_cast<unsigned>(PNG_FORMAT_LINEAR_Y), image.format);
    png_image_free(&image);

    // The simple reader applies a gamma; the rows themselves are raw counts.
    std::FILE* const stream = std::fopen(file.Name(), "rb");
    ASSERT_NE(nullptr, stream);
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, stream);
    png_read_info(png, info);
    EXPECT_EQ(16, png_get_bit_depth(png, info));
    EXPECT_EQ(PNG_COLOR_TYPE_GRAY, png_get_color_type(png, info));
    png_set_swap(png);
    for (unsigned row = 0; row < m_Height; ++row) {
        png_read_row(png, reinterpret_cast<png_bytep>(m_Read.data() + std::size_t{row} * m_Width), nullptr);
    }
    png_read_end(png, info);
    png_destroy_read_struct(&png, &info, nullptr);
    std::fclose(stream);
    EXPECT_TRUE(m_Read == m_Frame.Samples());
}

using Shape = std::tuple<unsigned, unsigned, test::Frame::Kind>;

std::string ShapeName(const testing::TestParamInfo<Shape>& info) {
    const auto& [width, height, kind] = info.param;
    return std::to_string(width) + "x" + std::to_string(height) + (kind == test::Frame::kNoise ? "Noise" : "");
}

INSTANTIATE_TEST_SUITE_P(Shapes, ReadBackTest,
                         testing::Values(Shape{1, 1, test::Frame::kPattern}, Shape{3, 2, test::Frame::kPattern},
                                         Shape{640, 480, test::Frame::kNoise}, Shape{2048, 1024, test::Frame::kPattern},
                                         Shape{2048, 1024, test::Frame::kNoise}),
                         ShapeName);

}  // namespace
}  // namespace zel
