#include <gtest/gtest.h>
#include <lodepng.h>

#include <cstddef>

#include "tests/util/FileTools.h"
#include "util/ZelUtilImpl.h"

namespace zel {
namespace {

using test::Bytes;

Bytes Scanlines(const test::Frame& frame, unsigned width, unsigned height) {
    Bytes bytes;
    auto sample = frame.Samples().begin();
    for (unsigned row = 0; row < height; ++row) {
        bytes.push_back(0);
        for (unsigned column = 0; column < width; ++column, ++sample) {
            bytes.push_back(static_cast<std::uint8_t>(*sample >> 8));
            bytes.push_back(static_cast<std::uint8_t>(*sample));
        }
    }
    return bytes;
}

// The chunks one after the other; then the picture as another library reads it.
void ExpectPng(const Bytes& file, unsigned width, unsigned height, const Bytes& scanlines) {
    const Bytes signature = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
    ASSERT_GT(file.size(), 57u);
    EXPECT_EQ(signature, Bytes(file.begin(), file.begin() + 8));
    Bytes data[3];
    const unsigned char* chunk = file.data() + 8;
    const unsigned char* const end = file.data() + file.size();
    const char* const types[] = {"IHDR", "IDAT", "IEND"};
    for (std::size_t i = 0; i < 3; ++i) {
        ASSERT_GE(end - chunk, 12);
        const unsigned length = lodepng_chunk_length(chunk);
        ASSERT_GE(end - chunk - 12, static_cast<std::ptrdiff_t>(length)) << types[i] << " ends behind the file";
        EXPECT_TRUE(lodepng_chunk_type_equals(chunk, types[i])) << types[i];
        EXPECT_EQ(0u, lodepng_chunk_check_crc(chunk)) << types[i];
        data[i].assign(chunk + 8, chunk + 8 + length);
        chunk += 12 + length;
    }
    EXPECT_EQ(end, chunk) << "nothing stands behind the last chunk";
    const auto byte = [](unsigned value, int shift) { return static_cast<std::uint8_t>(value >> shift); };
    EXPECT_EQ((Bytes{byte(width, 24), byte(width, 16), byte(width, 8), byte(width, 0), byte(height, 24),
                     byte(height, 16), byte(height, 8), byte(height, 0), 16, 0, 0, 0, 0}),
              data[0]);
    EXPECT_EQ(0x78, data[1].at(0)) << "deflate with a 32 KB window";
    Bytes inflated, samples;
    EXPECT_EQ(0u, lodepng::decompress(inflated, data[1]));
    EXPECT_TRUE(inflated == scanlines);
    EXPECT_TRUE(data[2].empty());

    unsigned read_width = 0, read_height = 0;
    EXPECT_EQ(0u, lodepng::decode(samples, read_width, read_height, file, LCT_GREY, 16));
    EXPECT_EQ(width, read_width);
    EXPECT_EQ(height, read_height);
}

TEST(PngFile, OnePixelIsOneScanlineHighByteFirst) {
    const test::TemporaryFile file(".png");
    test::Frame frame(1, 1, {0x1234});
    ASSERT_TRUE(UtilInstance()->SavePNG(file.Name(), frame.Image()));
    ExpectPng(file.Contents(), 1, 1, {0x00, 0x12, 0x34});
}

TEST(PngFile, FramesOfManyShapes) {
    for (const auto& [width, height] :
         {std::pair{3u, 2u}, {1u, 700u}, {257u, 1u}, {640u, 481u}, {2048u, 1024u}, {33u, 17u}}) {
        for (const auto kind : {test::Frame::kPattern, test::Frame::kNoise}) {
            SCOPED_TRACE(testing::Message() << width << "x" << height << " kind " << kind);
            const test::TemporaryFile file(".png");
            test::Frame frame(width, height, kind);
            ASSERT_TRUE(UtilInstance()->SavePNG(file.Name(), frame.Image()));
            ExpectPng(file.Contents(), width, height, Scanlines(frame, width, height));
        }
    }
}

TEST(PngFile, EvenFramesBecomeSmall) {
    const test::TemporaryFile file(".png");
    test::Frame frame(1000, 1000, std::vector<std::uint16_t>(1000000, 0x0FFF));
    ASSERT_TRUE(UtilInstance()->SavePNG(file.Name(), frame.Image()));
    const Bytes contents = file.Contents();
    EXPECT_LT(contents.size(), 100000u);
    ExpectPng(contents, 1000, 1000, Scanlines(frame, 1000, 1000));
}

// Samples are 16-bit whatever `bytes_per_pixel` says; one-byte samples, whose buffer is half as long, are refused.
TEST(PngFile, SamplesAreSixteenBitAlways) {
    for (unsigned bytes_per_pixel : {2u, 3u, 4u}) {
        const test::TemporaryFile file(".png");
        test::Frame frame(5, 3);
        frame->bytes_per_pixel = bytes_per_pixel;
        ASSERT_TRUE(UtilInstance()->SavePNG(file.Name(), frame.Image()));
        ExpectPng(file.Contents(), 5, 3, Scanlines(frame, 5, 3));
    }
    const test::TemporaryFile file(".png");
    test::Frame frame(5, 3);
    frame->bytes_per_pixel = 1;
    EXPECT_FALSE(UtilInstance()->SavePNG(file.Name(), frame.Image()));
    EXPECT_FALSE(file.Exists());
}

}  // namespace
}  // namespace zel
