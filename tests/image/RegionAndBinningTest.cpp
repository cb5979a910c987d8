// Region and binning on small frames that can be checked by eye, for each kind of link.
#include "image/RegionAndBinning.h"

#include <gmock/gmock.h>

#include "tests/image/Record.h"

namespace zel::test {
namespace {

// What the kinds of link make of a region; an unknown one leaves frames alone.
enum Link { kFullSize, kBySize, kUnknown };
FrameGeometry Geometry(Link link, const ZelRoiBin& roi) {
    return {.cuts_region = link != kUnknown,
            .region_is_size = link == kBySize,
            .keeps_full_size = link == kFullSize,
            .roi = roi};
}

TEST(RegionTest, OfAFourByThreeFrame) {
    const struct {
        Link link;
        ZelRoiBin roi;  // x, y, width, height, binning
        bool answer;
        unsigned w, h, num_pixels;
        Words content;
    } rows[] = {{kFullSize, {2, 1, 2, 1, 1, 1}, true, 2, 1, 12, {6, 7}},
                {kFullSize, {3, 0, 2, 3, 1, 1}, false, 4, 3, 12, Counting(12)},  // beyond the right
                {kFullSize, {0, 1, 4, 0, 1, 1}, true, 4, 0, 12, {}},             // no rows
                {kFullSize, {3, 2, 0u - 1, 0u - 1, 1, 1}, true, 4, 3, 12, Counting(12)},
                {kBySize, {1, 1, 2, 2, 1, 1}, true, 2, 2, 4, {5, 6, 9, 10}},
                {kBySize, {0, 1, 4, 1, 1, 1}, false, 4, 3, 12, Counting(12)},  // the frame's width
                {kBySize, {0u - 1, 0, 2, 1, 1, 1}, false, 4, 3, 12, Counting(12)},
                {kUnknown, {1, 1, 2, 2, 1, 1}, true, 4, 3, 12, Counting(12)}};
    Logger logger("RegionTest");
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        Record record(4, 3, Counting(12));
        EXPECT_EQ(CropToRegion(&record, Geometry(row.link, row.roi), logger), row.answer);
        EXPECT_EQ(std::tie(record.w, record.h, record.num_pixels), std::tie(row.w, row.h, row.num_pixels));
        EXPECT_EQ(record.Content(), row.content);
    }
}

bool Bin(ZelImageInternal* image, Link link, unsigned x_bin, unsigned y_bin) {
    return BinFrame(image, Geometry(link, {0, 0, 0, 0, x_bin, y_bin}));
}

// Records that keep the full frame's size show what is behind the result: zeros, and what is left over.
TEST(BinningTest, SumsByEye) {
    const struct {
        unsigned w, h, x_bin, y_bin;
        Words content, result;
    } rows[] = {
        {4, 1, 2, 1, {10, 20, 30, 40}, {30, 70, 0, 0}},
        {1, 4, 0, 2, {10, 20, 30, 40}, {20, 70, 0, 0}},  // the first sample of a column is lost
        {4, 1, 2, 1, {3000, 3000, 4095, 4095}, {4095, 4095, 0, 0}},
        {2, 1, 2, 1, {3000, 5}, {2052, 0}},  // the first sample counts at most half the ceiling
        {4, 2, 4, 1, {1, 2, 3, 4, 5, 6, 7, 8}, {10, 26, 0, 0, 0, 0, 0, 0}},
    };
    for (const auto& [w, h, x_bin, y_bin, content, result] : rows) {
        for (const Link link : {kFullSize, kBySize, kUnknown}) {
            Record record(w, h, content);
            EXPECT_TRUE(Bin(&record, link, x_bin, y_bin));
            const bool full = link == kFullSize;
            const unsigned binned = w / std::max(x_bin, 1u) * (h / std::max(y_bin, 1u));
            EXPECT_EQ(record.num_pixels, full ? w * h : binned);
            EXPECT_EQ(Words(record.pixels, record.pixels + record.num_pixels),
                      Words(result.begin(), result.begin() + record.num_pixels));
        }
    }
}

TEST(BinningTest, WhatIsLeftOverStaysAsItWas) {
    for (const auto& [w, h, x_bin, y_bin] : {std::array{67u, 7u, 2u, 3u}, {5u, 3u, 2u, 2u}, {64u, 2u, 1u, 128u}}) {
        Record record(w, h, Counting(w * h));
        Words expected = Counting(w * h);
        kernels::scalar::Bin(expected, w, h, x_bin, y_bin, 4095);
        EXPECT_TRUE(Bin(&record, kFullSize, x_bin, y_bin));
        EXPECT_EQ(Words(record.pixels, record.pixels + w * h), expected) << w << " x " << h;
    }
}

TEST(BinningTest, Bounds) {
    Record record(4, 2, Counting(8));
    EXPECT_FALSE(Bin(nullptr, kBySize, 2, 2));
    EXPECT_FALSE(Bin(&record, kBySize, 1, 129) || Bin(&record, kBySize, 129, 1));
    EXPECT_TRUE(Bin(&record, kBySize, 0, 0u - 1)) << "as 1";
    record.bytes_per_pixel = 1;
    EXPECT_FALSE(Bin(&record, kBySize, 2, 2));
    record.bytes_per_pixel = 2;
    record.h = 4000;
    Logger logger("RegionTest");
    for (const Link link : {kFullSize, kBySize}) {
        EXPECT_FALSE(Bin(&record, link, 2, 2) || CropToRegion(&record, Geometry(link, {1, 1, 2, 2, 1, 1}), logger));
    }
    record.h = 2;
    EXPECT_EQ(record.Content(), Counting(8));
    EXPECT_TRUE(Bin(&record, kBySize, 128, 128)) << "nothing is left of it";
    EXPECT_EQ(record.num_pixels, 0u);
}

}  // namespace
}  // namespace zel::test
