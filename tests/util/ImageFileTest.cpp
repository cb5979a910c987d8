// TIFF and PNG files to the byte, and what both writers refuse.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <limits>
#include <tuple>

#include "include/ZelImage.h"
#include "tests/support/PageReservations.h"
#include "tests/support/ReadPng.h"
#include "util/ZelUtilImpl.h"

namespace zel {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct ImageFileTest : testing::Test {
    ~ImageFileTest() override {
        platform::SetPageReservationLimit(-1);
        std::remove(m_Name.c_str());
    }
    using Writer = bool (ZelUtil::*)(const char*, ZelImage*);

    // Samples that use all 16 bits and repeat nowhere near; noise in a band around the middle; all the same.
    enum Kind { kPattern, kNoise, kEven };
    void Fill(unsigned w, unsigned h, Kind kind = kPattern) {
        m_Samples.resize(std::size_t{w} * h);
        std::uint32_t state = 12345;
        for (std::uint16_t& sample : m_Samples) {
            state = state * 1664525u + 1013904223u;
            const unsigned noise = 30000 + (state >> 20) + (state >> 8 & 0xFFF);
            sample = static_cast<std::uint16_t>(kind == kEven ? 0x0FFF : kind == kNoise ? noise : state >> 16);
        }
        m_Image.w = w;
        m_Image.h = h;
        m_Image.bit_depth = 16;
        m_Image.bytes_per_pixel = 2;
        m_Image.pixels = m_Samples.data();
    }
    bool Save(Writer writer) { return (UtilInstance()->*writer)(m_Name.c_str(), &m_Image); }
    Bytes Contents() const {
        std::ifstream file(m_Name, std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(file), {});
    }
    Bytes SampleBytes() const {
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(m_Samples.data());
        return Bytes(bytes, bytes + 2 * m_Samples.size());
    }
    bool Exists() const { return std::ifstream(m_Name).good(); }

    const std::string m_Name = testing::TempDir() + "zel_image_file";
    std::vector<std::uint16_t> m_Samples;
    ZelColorImage m_Image{};
};

// The directory is not in the order of its tags: PlanarConfiguration (284) comes second. A number of rows that exceeds
// 16 bits keeps its low half.
Bytes TiffHead(unsigned width, unsigned height, unsigned pixel_bytes) {
    constexpr unsigned kShort = 3, kLong = 4, kRational = 5;
    const unsigned entries[][3] = {{254, kLong, 0},           {284, kShort, 1},
                                   {256, kLong, width},       {257, kLong, height},
                                   {258, kShort, 16},         {259, kShort, 1},
                                   {262, kShort, 1},          {273, kLong, 198},
                                   {277, kShort, 1},          {278, kShort, height & 0xFFFF},
                                   {279, kLong, pixel_bytes}, {282, kRational, 182},
                                   {283, kRational, 190},     {296, kShort, 2}};
    Bytes head = {'I', 'I', 42, 0, 8, 0, 0, 0, 14, 0};
    const auto put = [&](unsigned value, int size) {
        for (int i = 0; i < size; ++i) head.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    };
    for (const auto& [tag, type, value] : entries) put(tag, 2), put(type, 2), put(1, 4), put(value, 4);
    for (const unsigned value : {0u, 1200000u, 1000u, 1200000u, 1000u}) put(value, 4);
    return head;
}

// The file is a signature and three chunks around one stream.
Bytes PngSamples(const Bytes& file, unsigned width, unsigned height) {
    if (file.size() <= 57) return {};
    EXPECT_EQ(lodepng_chunk_length(file.data() + 33), file.size() - 57);
    EXPECT_EQ(file[41], 0x78) << "deflate with a 32 KB window";
    return test::ReadPng(file, {PngFormat::kGrey16, width, height});
}

// One file after the other under the same name: what was there is replaced.
TEST_F(ImageFileTest, EveryFrameIsInItsFileToTheBit) {
    for (const auto& [w, h] : {std::pair{1u, 1u}, {3u, 2u}, {2048u, 1024u}, {1u, 700u}, {257u, 1u}, {640u, 481u}}) {
        for (const Kind kind : {kPattern, kNoise, kEven}) {
            SCOPED_TRACE(testing::Message() << w << "x" << h << " kind " << kind);
            Fill(w, h, kind);
            ASSERT_TRUE(Save(&ZelUtil::SavePNG));
            const Bytes png = Contents();
            EXPECT_TRUE(PngSamples(png, w, h) == SampleBytes());
            EXPECT_TRUE(kind != kEven || png.size() < w * h / 10 + 100) << png.size();
            ASSERT_TRUE(Save(&ZelUtil::SaveTIFF));
            Bytes tiff = TiffHead(w, h, w * h * 2);
            std::ranges::copy(SampleBytes(), std::back_inserter(tiff));
            EXPECT_TRUE(Contents() == tiff);
        }
    }
}

// The head says 16 bits whatever `bytes_per_pixel` says, which only decides how many bytes follow in a TIFF file. A PNG
// file has two for each; one-byte samples, whose buffer is half as long, are refused.
TEST_F(ImageFileTest, BytesPerPixelDecidesTheLengthOfTiffAlone) {
    for (const auto& [w, h] : {std::pair{4u, 4u}, {0u, 4u}, {1u, 70000u}}) {
        Fill(w, 2 * h);
        m_Image.h = h;
        for (const unsigned bytes_per_pixel : {0u, 1u, 2u, 4u}) {
            m_Image.bytes_per_pixel = bytes_per_pixel;
            ASSERT_TRUE(Save(&ZelUtil::SaveTIFF));
            Bytes head = Contents();
            EXPECT_EQ(head.size(), 198 + w * h * bytes_per_pixel);
            head.resize(198);
            EXPECT_EQ(head, TiffHead(w, h, w * h * bytes_per_pixel));
        }
    }
    Fill(5, 3);
    for (const unsigned bytes_per_pixel : {2u, 3u, 4u, 1u}) {
        std::remove(m_Name.c_str());
        m_Image.bytes_per_pixel = bytes_per_pixel;
        EXPECT_EQ(Save(&ZelUtil::SavePNG), bytes_per_pixel != 1);
        EXPECT_TRUE(bytes_per_pixel == 1 ? !Exists() : PngSamples(Contents(), 5, 3) == SampleBytes());
    }
}

// Whatever is refused leaves no file and no more memory behind than there was.
TEST_F(ImageFileTest, WhatCannotBeSavedIsRefused) {
    const long long before = platform::LivePageReservations();
    const unsigned most = std::numeric_limits<unsigned>::max();
    for (const Writer writer : {&ZelUtil::SaveTIFF, &ZelUtil::SavePNG}) {
        const bool png = writer == &ZelUtil::SavePNG;
        SCOPED_TRACE(png ? "PNG" : "TIFF");
        const auto save = [&](const char* name, ZelImage* image) { return (UtilInstance()->*writer)(name, image); };
        Fill(8, 8);
        EXPECT_FALSE(save("", &m_Image) || save((m_Name + "no/such/folder").c_str(), &m_Image));
        EXPECT_FALSE(save(nullptr, &m_Image) || save(m_Name.c_str(), nullptr));
        // What a transport wrote into a record's geometry.
        m_Image.buffer_size = 8 * 8 * 2;
        for (const auto& [w, h] :
             {std::pair(8u, 9u), {30000u, 30000u}, {65536u, 32768u}, {0x80000000u, 2u}, {most, most}}) {
            m_Image.w = w;
            m_Image.h = h;
            EXPECT_FALSE(Save(writer)) << w << " x " << h;
        }
        Fill(8, 8);
        m_Image.pixels = nullptr;
        EXPECT_FALSE(Save(writer) || Exists());
        // More than a writer keeps: it is missed each time, before the file is opened.
        Fill(8192, 4100, kEven);
        m_Image.buffer_size = 0;
        platform::SetPageReservationLimit(png ? 1 : 0);
        EXPECT_EQ(Save(writer), !png);
        EXPECT_EQ(Exists(), !png);
        std::remove(m_Name.c_str());
        platform::SetPageReservationLimit(-1);
        Fill(8, 8);
        m_Image.w = 0;
        EXPECT_EQ(Save(writer), !png) << "there is no such PNG file";
        m_Image.w = m_Image.h = most;
        m_Image.buffer_size = 0;
        EXPECT_FALSE(png && Save(writer)) << "no memory holds it";
        std::remove(m_Name.c_str());
        EXPECT_GE(before, platform::LivePageReservations());
    }
}

}  // namespace
}  // namespace zel
