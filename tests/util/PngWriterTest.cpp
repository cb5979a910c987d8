// Pictures of every format as another library reads them, and what they cost.
#include "util/PngWriter.h"

#include <gtest/gtest.h>
#include <libdeflate.h>

#include <algorithm>
#include <random>
#include <vector>

#include "tests/support/PageReservations.h"
#include "tests/support/ReadPng.h"
#include "util/LentPngWriter.h"

namespace zel {
namespace {

using Bytes = std::vector<std::uint8_t>;

// Noise around a slope, in `bits` bits.
Bytes Pixels(const PngPicture& picture, unsigned noise, unsigned bits) {
    std::mt19937 random(noise);
    const std::size_t row = std::size_t{picture.width} * picture.Channels();
    Bytes pixels;
    for (std::size_t i = 0; i < row * picture.height; ++i) {
        const auto slope = static_cast<unsigned>((i % row / picture.Channels() * 3 + i / row) << (bits - 8) >> 2);
        const unsigned sample = (slope + static_cast<unsigned>(random()) % noise) & ((1u << bits) - 1);
        pixels.push_back(static_cast<std::uint8_t>(sample));
        if (picture.BytesPerSample() == 2) pixels.push_back(static_cast<std::uint8_t>(sample >> 8));
    }
    return pixels;
}

// One writer for all of them, whose memory holds what the last one left.
TEST(PngWriter, EveryPictureIsInItsFileToTheBit) {
    for (const PngFilters filters : {PngFilters::kNone, PngFilters::kChosen}) {
        PngWriter writer(filters);
        for (const PngFormat format : {PngFormat::kGrey16, PngFormat::kRgb16, PngFormat::kRgb8, PngFormat::kRgba8}) {
            for (const auto& [width, height] : {std::pair{1u, 1u}, {1u, 33u}, {9u, 2u}, {701u, 613u}, {200000u, 1u}}) {
                for (const unsigned noise : {1u, 40u, 4000u}) {
                    PngPicture picture{format, width, height, nullptr, 0, static_cast<PngLight>(noise % 7 % 3)};
                    const bool wide = picture.BytesPerSample() == 2;
                    picture.shift = wide && noise == 40 ? 2 + width % 3 : 0;  // 4 is too much for 14 bits
                    const Bytes pixels = Pixels(picture, noise, wide ? 14 : 8);
                    picture.pixels = pixels.data();
                    EXPECT_TRUE(test::ReadPng(writer.Encode(picture), picture) == test::KeptPixels(picture, pixels))
                        << width << "x" << height << " format " << static_cast<int>(format) << ", noise " << noise;
                }
            }
        }
    }
}

std::size_t SearchedSize(const PngPicture& picture) {
    Bytes rows(static_cast<std::size_t>(PngRowSize(picture) * picture.height)), out(ZlibStreamBound(rows.size()));
    MakePngRows(picture, 0, picture.height, PngFilter::kNone, rows);
    return Deflate().Compress(rows, out);
}

// Rows as they are: at most a tenth longer than a search for repetitions makes them. Chosen ones: no longer than
// either.
TEST(PngWriter, FilesAreAtMostATenthLongerThanASearchMakesThem) {
    for (const unsigned noise : {4u, 16u, 100u, 1000u, 16000u}) {
        PngPicture picture{PngFormat::kGrey16, 1024, 512, nullptr, 0, PngLight::kUntold};
        const Bytes pixels = Pixels(picture, noise, 14);
        picture.pixels = pixels.data();
        const auto searched = static_cast<double>(SearchedSize(picture));
        PngWriter plain(PngFilters::kNone), chosen(PngFilters::kChosen);
        const auto plain_size = static_cast<double>(plain.Encode(picture).size());
        EXPECT_LE(plain_size, searched * 1.1 + 100) << noise;
        EXPECT_LE(static_cast<double>(chosen.Encode(picture).size()), plain_size * 1.01) << noise;
    }
}

// What is kept between two pictures is bounded, and no picture reads what is not its own.
TEST(PngWriter, MemoryIsKeptBoundedAndMissedWithoutHarm) {
    const long long before = platform::LivePageReservations();
    const std::vector<std::uint16_t> samples(1 << 20, 99);
    const PngPicture picture{PngFormat::kGrey16, 1 << 10, 1 << 10, samples.data(), 0, PngLight::kUntold};
    {
        PngWriter writer(PngFilters::kChosen);
        for (const int reservations : {0, 1}) {
            platform::SetPageReservationLimit(reservations);
            EXPECT_TRUE(writer.Encode(picture).empty()) << reservations;
        }
        platform::SetPageReservationLimit(-1);
        EXPECT_FALSE(writer.Encode(picture).empty());
        EXPECT_EQ(platform::LivePageReservations() - before, 2);
        platform::SetPageReservationLimit(0);
        EXPECT_FALSE(writer.Encode(picture).empty()) << "it has all it needs";
        platform::SetPageReservationLimit(-1);
        writer.Trim(std::size_t{1} << 30);
        EXPECT_EQ(platform::LivePageReservations() - before, 2);
        writer.Trim(1000);
        EXPECT_EQ(platform::LivePageReservations(), before);
        for (const auto& [width, height] : {std::pair{0u, 5u}, {5u, 0u}, {0xFFFFFFFFu, 0xFFFFFFFFu}})
            EXPECT_TRUE(writer.Encode({PngFormat::kRgb16, width, height, samples.data(), 0, {}}).empty());
        EXPECT_TRUE(writer.Encode({PngFormat::kRgb16, 4, 4, nullptr, 0, {}}).empty());
    }
    // Of those lent at once some are kept, and lent again.
    constexpr std::size_t kMany = LentPngWriter::kKeptWriters + 2;
    for (int round = 0; round < 3; ++round) {
        std::vector<std::unique_ptr<LentPngWriter>> lent;
        for (std::size_t i = 0; i < kMany; ++i) {
            lent.push_back(std::make_unique<LentPngWriter>(PngFilters::kChosen));
            ASSERT_FALSE((**lent.back()).Encode(picture).empty());
        }
        lent.clear();
        EXPECT_EQ(platform::LivePageReservations() - before, 2 * static_cast<long long>(LentPngWriter::kKeptWriters));
    }
}

}  // namespace
}  // namespace zel
