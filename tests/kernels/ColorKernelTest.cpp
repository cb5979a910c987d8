// What the scalar color kernels compute, by eye. fuzz/KernelFuzz.cpp holds the others against them.
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "kernels/Kernels.h"

namespace zel::test {
namespace {

using kernels::ColorTransform;
using kernels::PlanarRow;
using Samples = std::vector<std::uint16_t>;
namespace scalar = kernels::scalar;

struct Planes {
    explicit Planes(std::size_t width) : planes{Samples(width), Samples(width), Samples(width)} {}
    PlanarRow Row() { return {{planes[0].data(), planes[1].data(), planes[2].data()}, planes[0].size()}; }

    std::array<Samples, 3> planes;
};

// 10 20 30 40    the row in the middle is number 1 of three
// 51 61 71 81
// 90 93 96 99
// The first pixel: its own color; green from right, above, below: (61 + 10 + 90) / 3; the other from (20 + 93) / 2.
TEST(DemosaicTest, OfARowByHand) {
    const Samples above{10, 20, 30, 40}, row{51, 61, 71, 81}, below{90, 93, 96, 99};
    const struct {
        int phase;
        std::array<Samples, 3> channels;  // channel 0 first
    } cases[] = {{0, {{{51, 61, 71, 81}, {51, 61, 71, 81}, {51, 61, 71, 81}}}},
                 {2, {{{51, 61, 71, 71}, {53, 61, 67, 81}, {56, 56, 63, 69}}}},
                 {3, {{{50, 56, 63, 63}, {51, 58, 71, 70}, {61, 61, 71, 81}}}}};
    for (const auto& [phase, channels] : cases) {
        Planes out(4);
        scalar::DemosaicRow({above.data(), row.data(), below.data(), 4, phase, false}, out.Row());
        EXPECT_EQ(out.planes, channels) << "phase " << phase;
        Planes pixel(1);
        scalar::DemosaicRow({nullptr, row.data(), nullptr, 1, phase, false}, pixel.Row());
        for (const auto& plane : pixel.planes) EXPECT_EQ(plane[0], 51) << "grey without neighbours";
    }
}

TEST(PhaseTest, FollowsFromTheParitiesOfColumnAndRow) {
    for (const auto& [phase, right, below, both] : {std::array{1, 3, 4, 2}, {2, 4, 3, 1}, {3, 1, 2, 4}, {4, 2, 1, 3}}) {
        EXPECT_EQ(kernels::PhaseAt(phase, 2, 4), phase);
        EXPECT_EQ(kernels::PhaseAt(phase, 1, 0), right);
        EXPECT_EQ(kernels::PhaseAt(phase, 2, 1), below);
        EXPECT_EQ(kernels::PhaseAt(phase, 3, 5), both);
    }
    for (const int none : {0, 5, -1, 255}) EXPECT_EQ(kernels::PhaseAt(none, 1, 1), 0);
}

TEST(TransformTest, RowOneGivesChannelTwoTruncatedAndClamped) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN(), huge = 1e30f;
    const struct {
        std::array<std::uint16_t, 3> pixel;  // channel 0 first
        std::array<float, 9> matrix;         // of channel 2 first
        std::array<int, 3> result;
    } rows[] = {{{100, 200, 300}, {1.999f, 0, 0, 0, -1, 0, 0, 2, 1}, {500, 0, 599}},
                {{10000, 10000, 10000}, {1.999f, 0, 0, 0, -1, 0, 0, 2, 1}, {16383, 0, 16383}},
                {{5, 5, 5}, {nan, 0, 0, huge, 0, 0, -huge, 0, 0}, {0, 16383, 0}}};
    for (const auto& [pixel, matrix, result] : rows) {
        Planes p(1);
        ColorTransform transform{{}, 16383, nullptr, 0};
        std::ranges::copy(matrix, transform.matrix);
        for (std::size_t c = 0; c < 3; ++c) p.planes[c][0] = pixel[c];
        scalar::TransformRow(p.Row(), transform);
        EXPECT_EQ(result, (std::array<int, 3>{p.planes[0][0], p.planes[1][0], p.planes[2][0]}));
    }
}

TEST(MapTest, AnEntryOrWhatLiesAboveTheFloorUpToTheCeiling) {
    const Samples samples{0, 7, 8, 900, 65535}, table = [] {
        Samples entries(65536 + 2, 5);
        entries[8] = 77;
        return entries;
    }();
    const std::pair<kernels::SampleMap, Samples> rows[] = {
        {{}, samples}, {{nullptr, 7, 800}, {0, 0, 1, 800, 800}}, {{table.data()}, {5, 5, 77, 5, 5}}};
    for (const auto& [map, result] : rows) {
        Samples mapped = samples;
        scalar::MapSamples(mapped, map);
        EXPECT_EQ(mapped, result);
    }
}

}  // namespace
}  // namespace zel::test
