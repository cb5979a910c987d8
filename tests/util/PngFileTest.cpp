#include <gtest/gtest.h>
#include <libdeflate.h>

#include <algorithm>
#include <memory>
#include <span>
#include <string>

#include "tests/util/FileTools.h"
#include "util/ZelUtilImpl.h"

namespace zel {
namespace {

using test::Bytes;

unsigned BigEndian(const Bytes& file, std::size_t offset) {
    unsigned value = 0;
    for (std::size_t i = 0; i < 4; ++i) value = value << 8 | file.at(offset + i);
    return value;
}

// The checksum bit by bit, as it is defined.
unsigned BitwiseCrc(std::span<const std::uint8_t> data) {
    std::uint32_t crc = 0xFFFFFFFFu;
    for (std::uint8_t byte : data) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320u : 0u);
    }
    return ~crc;
}

// Checks the chunk at `offset`, moves `offset` behind it and answers its data.
Bytes ExpectChunk(const Bytes& file, std::size_t& offset, const std::string& type) {
    const std::size_t length = BigEndian(file, offset);
    if (offset + 12 + length > file.size()) {
        ADD_FAILURE() << type << " ends behind the file";
        return {};
    }
    const auto begin = file.begin() + static_cast<std::ptrdiff_t>(offset);
    EXPECT_EQ(type, std::string(begin + 4, begin + 8));
    EXPECT_EQ(BitwiseCrc(std::span(file).subspan(offset + 4, 4 + length)), BigEndian(file, offset + 8 + length))
        << type;
    offset += 12 + length;
    return Bytes(begin + 8, begin + 8 + static_cast<std::ptrdiff_t>(length));
}

Bytes Inflate(const Bytes& stream, std::size_t size) {
    const std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)> decompressor(
        libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    Bytes data(size);
    EXPECT_EQ(LIBDEFLATE_SUCCESS,
              libdeflate_zlib_decompress(decompressor.get(), stream.data(), stream.size(), data.data(), size, nullptr));
    return data;
}

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

void ExpectPng(const Bytes& file, unsigned width, unsigned height, const Bytes& scanlines) {
    const Bytes signature = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
    ASSERT_GT(file.size(), 57u);
    EXPECT_EQ(signature, Bytes(file.begin(), file.begin() + 8));
    std::size_t offset = 8;
    const Bytes header = ExpectChunk(file, offset, "IHDR");
    ASSERT_EQ(13u, header.size());
    EXPECT_EQ(width, BigEndian(header, 0));
    EXPECT_EQ(height, BigEndian(header, 4));
    EXPECT_EQ((Bytes{16, 0, 0, 0, 0}), Bytes(header.begin() + 8, header.end()));

    const Bytes stream = ExpectChunk(file, offset, "IDAT");
    EXPECT_EQ(0x78, stream.at(0)) << "deflate with a 32 KB window";
    EXPECT_EQ(0, (stream.at(0) * 256 + stream.at(1)) % 31);
    EXPECT_TRUE(Inflate(stream, scanlines.size()) == scanlines);

    EXPECT_TRUE(ExpectChunk(file, offset, "IEND").empty());
    EXPECT_EQ(file.size(), offset);
}

TEST(PngFile, OnePixelIsOneScanlineHighByteFirst) {
    const test::TemporaryFile file(".png");
    test::Frame frame(1, 1, {0x1234});
    ASSERT_TRUE(UtilInstance()->SavePNG(file.Name(), frame.Image()));
    ExpectPng(file.Contents(), 1, 1, {0x00, 0x12, 0x34});
}

TEST(PngFile, FramesOfManyShapes) {
    for (const auto& [width, height] :
         {std::pair{3u, 2u}, {1u, 700u}, {257u, 1u}, {640u, 481u}, {2048u, 64u}, {33u, 17u}}) {
        SCOPED_TRACE(testing::Message() << width << "x" << height);
        const test::TemporaryFile file(".png");
        test::Frame frame(width, height);
        ASSERT_TRUE(UtilInstance()->SavePNG(file.Name(), frame.Image()));
        ExpectPng(file.Contents(), width, height, Scanlines(frame, width, height));
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
