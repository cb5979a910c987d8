// What pages see of a frame, beside the plain way to compute it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

#include "tools/zelcam/view/AutoExposure.h"
#include "tools/zelcam/view/FrameReducer.h"
#include "tools/zelcam/view/FrameStatistics.h"

namespace zelcam {

namespace {

struct Frame {
    Frame(unsigned width, unsigned height, unsigned channels, unsigned bits)
        : samples{{}, width, height, channels, bits} {
        std::mt19937 random(width * 7919 + height);
        values.resize(std::size_t{width} * height * channels);
        for (std::uint16_t& value : values) value = static_cast<std::uint16_t>(random() & ((1u << bits) - 1));
        samples.values = values;
    }
    std::uint16_t At(unsigned x, unsigned y, unsigned channel) const {
        // Channels are sent the other way round.
        return values[(std::size_t{y} * samples.width + x) * samples.channels + samples.channels - 1 - channel];
    }
    std::vector<std::uint16_t> values;
    Samples samples;
};

// How much of a source pixel lies in a sample of the result, in parts of 1/columns pixels.
std::uint64_t Overlap(std::uint64_t pixel, std::uint64_t sample, std::uint64_t pixels, std::uint64_t columns) {
    const std::uint64_t begin = std::max(pixel * columns, sample * pixels);
    const std::uint64_t end = std::min((pixel + 1) * columns, (sample + 1) * pixels);
    return end > begin ? end - begin : 0;
}

std::uint16_t PlainMean(const Frame& frame, const ReducedPicture& picture, unsigned column, unsigned row,
                        unsigned channel) {
    const Area& area = picture.area;
    std::uint64_t sum = 0;
    for (unsigned y = 0; y < area.height; ++y) {
        const std::uint64_t high = Overlap(y, row, area.height, picture.rows);
        for (unsigned x = 0; high > 0 && x < area.width; ++x)
            sum += high * Overlap(x, column, area.width, picture.columns) * frame.At(area.x + x, area.y + y, channel);
    }
    const std::uint64_t weight = std::uint64_t{area.width} * area.height;
    return static_cast<std::uint16_t>((sum + weight / 2) / weight);
}

}  // namespace

TEST(FrameReducer, SendsTheExactMeanOverEachArea) {
    const struct {
        unsigned width, height, channels, bits;
        Area asked;
        unsigned columns, rows;
        Area sent;
        unsigned sent_columns, sent_rows;
    } cases[] = {
        {64, 48, 1, 14, {0, 0, 64, 48}, 16, 12, {0, 0, 64, 48}, 16, 12},    // whole factors
        {61, 47, 1, 16, {0, 0, 61, 47}, 17, 13, {0, 0, 61, 47}, 17, 13},    // none of them
        {61, 47, 1, 16, {3, 5, 40, 30}, 39, 29, {3, 5, 40, 30}, 39, 29},    // hardly smaller
        {61, 47, 3, 16, {1, 2, 33, 21}, 10, 20, {1, 2, 33, 21}, 10, 20},    // color
        {61, 47, 3, 16, {1, 2, 33, 21}, 33, 21, {1, 2, 33, 21}, 33, 21},    // the samples themselves
        {61, 47, 1, 12, {1, 2, 33, 21}, 400, 300, {1, 2, 33, 21}, 33, 21},  // nothing is made up
        {61, 47, 1, 12, {1, 2, 33, 21}, 400, 7, {1, 2, 33, 21}, 33, 7},     // one way alone
        {61, 47, 1, 12, {50, 40, 99, 99}, 99, 99, {50, 40, 11, 7}, 11, 7},  // over the edge
        {61, 47, 1, 12, {61, 0, 5, 5}, 20, 20, {0, 0, 61, 47}, 20, 20},     // outside
        {61, 47, 1, 12, {0, 0, 0, 0}, 0, 0, {0, 0, 61, 47}, 1, 1},
        {1, 1, 1, 12, {0, 0, 1, 1}, 9, 9, {0, 0, 1, 1}, 1, 1},
    };
    for (const auto& row : cases) {
        const Frame frame(row.width, row.height, row.channels, row.bits);
        const ReducedPicture picture = Reduce(frame.samples, {1, row.asked, row.columns, row.rows});
        ASSERT_EQ(picture.area, row.sent);
        ASSERT_EQ(std::pair(picture.columns, picture.rows), std::pair(row.sent_columns, row.sent_rows));
        std::vector<std::uint16_t> plain;
        for (unsigned y = 0; y < picture.rows; ++y) {
            for (unsigned x = 0; x < picture.columns; ++x) {
                for (unsigned c = 0; c < row.channels; ++c) plain.push_back(PlainMean(frame, picture, x, y, c));
            }
        }
        EXPECT_EQ(*picture.samples, plain) << row.width << " to " << row.columns;
    }
}

// The largest sums there are.
TEST(FrameReducer, DoesNotOverflow) {
    const std::vector<std::uint16_t> white(8192 * 64, 65535);
    for (const auto& [width, height] : {std::pair{8192u, 64u}, std::pair{64u, 8192u}}) {
        const Samples frame{white, width, height, 1, 16};
        const ReducedPicture picture = Reduce(frame, {1, {}, width / 3, height / 3});
        EXPECT_EQ(std::count(picture.samples->begin(), picture.samples->end(), 65535),
                  static_cast<std::ptrdiff_t>(picture.samples->size()));
    }
}

TEST(FrameStatistics, AreThoseOfAllSamples) {
    for (const unsigned channels : {1u, 3u}) {
        Frame frame(61, 47, channels, 12);
        frame.values[5] = 4095;
        frame.values[6] = 0;
        std::vector<std::uint16_t> sorted = frame.values;
        std::sort(sorted.begin(), sorted.end());
        const auto count = static_cast<double>(sorted.size());
        const double mean = std::accumulate(sorted.begin(), sorted.end(), 0.0) / count;
        double squares = 0.0, steps = 0.0;
        for (const double value : sorted) squares += (value - mean) * (value - mean);
        for (unsigned i = 0; i < 60 * 47 * channels; ++i) {
            const unsigned x = i % 60, y = i / 60 % 47, c = i / (60 * 47);
            steps += std::pow(1.0 * frame.At(x + 1, y, c) - frame.At(x, y, c), 2);
        }
        const FrameStatistics found = StatisticsMaker().Measure(frame.samples);
        const auto expect_moments = [&](const auto& moments) {
            EXPECT_NEAR(moments.mean, mean, 1e-6);
            EXPECT_NEAR(moments.sigma, std::sqrt(squares / count), 1e-6);
            EXPECT_NEAR(moments.focus, steps / (60.0 * 47.0 * channels) / (mean * mean), 1e-9);
            EXPECT_EQ(std::tuple(moments.minimum, moments.maximum), std::tuple(sorted.front(), sorted.back()));
        };
        expect_moments(found);
        expect_moments(MeasureArea(frame.samples, {0, 0, 61, 47}));
        const auto ranked = [&](double part) { return sorted[static_cast<std::size_t>(std::ceil(part * count)) - 1]; };
        EXPECT_EQ(found.p0_1, ranked(0.001));
        EXPECT_EQ(found.p50, ranked(0.5));
        EXPECT_EQ(found.p99_9, ranked(0.999));
        const auto counted = [&](auto is) { return static_cast<std::uint64_t>(std::ranges::count_if(sorted, is)); };
        EXPECT_EQ(found.saturated, counted([](unsigned value) { return value == 4095; }));
        EXPECT_EQ(found.black, counted([](unsigned value) { return value == 0; }));
        EXPECT_EQ(found.bin, 16u);
        ASSERT_EQ(found.channels.size(), channels == 3 ? 3u : 0u);
        for (unsigned bin = 0; bin < kHistogramBins; ++bin) {
            EXPECT_EQ(found.histogram[bin], counted([&](unsigned value) { return value / 16 == bin; }));
            std::uint64_t sum = channels == 3 ? 0 : found.histogram[bin];
            for (const auto& channel : found.channels) sum += channel[bin];
            EXPECT_EQ(found.histogram[bin], sum);
        }
        EXPECT_EQ(MeasureArea(frame.samples, {3, 4, 1, 1}).minimum, std::ranges::min(PixelAt(frame.samples, 3, 4)));
    }
}

TEST(FrameStatistics, LinesGoThroughEachPixelOnce) {
    const Frame frame(20, 10, 1, 14);
    const auto values = [&](std::vector<std::pair<unsigned, unsigned>> pixels) {
        std::vector<std::uint16_t> list;
        for (const auto& [x, y] : pixels) list.push_back(frame.At(x, y, 0));
        return list;
    };
    EXPECT_EQ(LineProfile(frame.samples, 2, 3, 2, 3), values({{2, 3}}));
    EXPECT_EQ(LineProfile(frame.samples, 2, 3, 5, 3), values({{2, 3}, {3, 3}, {4, 3}, {5, 3}}));
    EXPECT_EQ(LineProfile(frame.samples, 5, 9, 5, 7), values({{5, 9}, {5, 8}, {5, 7}}));
    EXPECT_EQ(LineProfile(frame.samples, 3, 3, 0, 0), values({{3, 3}, {2, 2}, {1, 1}, {0, 0}}));
    EXPECT_EQ(LineProfile(frame.samples, 0, 0, 19, 9).size(), 20u);
}

TEST(AutoExposure, GoesUntilTheBrightestPixelsAreAtFourFifths) {
    const auto next = [](long long now, double brightness) { return NextExposure({now, 10, 100000, brightness}); };
    EXPECT_EQ(next(1000, 0.8), std::nullopt);
    EXPECT_EQ(next(1000, 0.4), 2000);
    EXPECT_EQ(next(1000, 0.9), 889);
    EXPECT_EQ(next(1000, 1.0), 250);    // too bright to tell by how much
    EXPECT_EQ(next(1000, 0.0), 16000);  // too dark to tell
    EXPECT_EQ(next(90000, 0.1), 100000);
    EXPECT_EQ(next(100000, 0.1), std::nullopt);
    EXPECT_EQ(next(10, 1.0), std::nullopt);
}

TEST(AutoExposure, MeasuresTheWholeFrameWithoutARegion) {
    Frame frame(64, 64, 1, 12);
    std::fill(frame.values.begin(), frame.values.end(), std::uint16_t{100});
    std::fill_n(frame.values.begin(), 64, std::uint16_t{4095});
    EXPECT_NEAR(BrightnessOf(frame.samples, {}, 0), 1.0, 1e-9);
    EXPECT_NEAR(BrightnessOf(frame.samples, {0, 8, 64, 8}, 100), 0.0, 1e-9);
    EXPECT_LT(BrightnessOf(frame.samples, {0, 8, 64, 8}, 0), 0.03);
}

}  // namespace zelcam
