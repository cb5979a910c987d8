// The color kernels: what the scalar ones compute, by eye and by a second way, and the vector variants against them.
#include <limits>

#include "tests/kernels/KernelFixture.h"

namespace zel::test {
namespace {

using kernels::ColorFormat;
using kernels::ColorTransform;
using kernels::MosaicRow;
using kernels::PlanarRow;

// Three planes, each with guards behind it.
struct Planes {
    static constexpr std::size_t kGuards = 40;
    explicit Planes(std::size_t width) : w(width) {
        for (auto& plane : planes) plane.assign(width + kGuards, 0xA5A5);
    }
    PlanarRow Row() { return {{planes[0].data(), planes[1].data(), planes[2].data()}, w}; }
    bool operator==(const Planes&) const = default;

    std::size_t w;
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
        for (auto& plane : out.planes) plane.resize(4);
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

using ColorVariantTest = KernelTest;

TEST_P(ColorVariantTest, Demosaic) {
    for (int i = 0; i < 3000; ++i) {
        const std::size_t w = Number(1, 90);
        const bool small = i % 2 == 0;
        const unsigned largest = small ? 16383 : 65535;
        // Exactly as long as it must be: the sanitizers see a read beyond it.
        const Samples above = Row(w, largest), row = Row(w, largest), below = Row(w, largest);
        const MosaicRow mosaic{Number(0, 9) ? above.data() : nullptr, row.data(),
                               Number(0, 9) ? below.data() : nullptr, w,
                               static_cast<int>(Number(0, 5)),        small};
        Planes expected(w), quick(w), actual(w);
        scalar::DemosaicRow(mosaic, quick.Row());
        // The reference pixel by pixel, where there is a mosaic.
        if (mosaic.phase == 0 || mosaic.phase == 5)
            expected = quick;
        else
            scalar::DemosaicColumns(mosaic, 0, w, expected.Row());
        m_Table->demosaic_row(mosaic, actual.Row());
        ASSERT_EQ(quick, expected) << "width " << w << " phase " << mosaic.phase;
        ASSERT_EQ(actual, expected) << "width " << w << " phase " << mosaic.phase;
    }
}

TEST_P(ColorVariantTest, Transform) {
    std::uniform_real_distribution<float> entry(-3, 3);
    const Samples table = Row(65536 + 2, 65535);
    for (int i = 0; i < 3000; ++i) {
        Planes expected(Number(1, 90));
        for (auto& plane : expected.planes) std::ranges::copy(Row(expected.w, 0xFFFF), plane.begin());
        Planes actual = expected;
        ColorTransform transform{};
        for (float& value : transform.matrix) value = entry(m_Random);
        if (i % 17 == 0) transform.matrix[i % 9] = i % 2 ? 1e20f : std::numeric_limits<float>::quiet_NaN();
        if (i % 19 == 0) transform.matrix[i % 9] = kernels::kTameEntry;
        transform.largest = static_cast<std::uint16_t>((1u << Number(1, 16)) - 1);
        transform.shift = Number(0, 16);
        if (i % 3 == 0) transform.table = table.data();
        const auto format = static_cast<ColorFormat>(Number(0, 2));
        std::vector<std::uint8_t> packed(expected.w * kernels::BytesPerPixel(format)), two_steps = packed,
                                                                                       plain = packed;
        m_Table->transform_pack_row(actual.Row(), transform, format, packed.data());
        scalar::TransformPackRow(actual.Row(), transform, format, plain.data());
        scalar::TransformRow(expected.Row(), transform);
        scalar::PackRow(expected.Row(), format, two_steps.data());
        m_Table->transform_row(actual.Row(), transform);
        std::vector<std::uint8_t> afterwards(packed.size());
        m_Table->pack_row(actual.Row(), format, afterwards.data());
        ASSERT_EQ(afterwards, two_steps) << i;
        ASSERT_EQ(actual, expected) << i;
        ASSERT_EQ(packed, two_steps) << i;
        ASSERT_EQ(plain, two_steps) << i;
    }
}

// All steps in one against one after the other, with every kind of map, on rows of all parities and lengths.
TEST_P(ColorVariantTest, ColorRow) {
    std::uniform_real_distribution<float> entry(-3, 3);
    const Samples tables[] = {Row(65536 + 2, 65535), Row(65536 + 2, 255)};
    const auto maps = [&] {
        kernels::ChannelMaps channels;
        const unsigned kind = Number(0, 3);
        for (unsigned k = 0; k < 3; ++k) {
            if (kind == 1) channels[k] = {nullptr, static_cast<std::uint16_t>(Number(0, 900)), 40000};
            if (kind >= 2) channels[k].table = tables[kind == 3 ? Number(0, 1) : 1].data();
        }
        return channels;
    };
    for (int i = 0; i < 4000; ++i) {
        const std::size_t w = Number(1, 140);
        const bool small = i % 2 == 0;
        const unsigned largest = small ? 16383 : 65535;
        const Samples above = Row(w, largest), row = Row(w, largest), below = Row(w, largest);
        const MosaicRow mosaic{Number(0, 9) ? above.data() : nullptr, row.data(),
                               Number(0, 9) ? below.data() : nullptr, w,
                               static_cast<int>(Number(0, 4)),        small};
        kernels::ColorSteps steps{maps(), {{1, 0, 0, 0, 1, 0, 0, 0, 1}, 65535, nullptr, 0}, maps(), {}};
        for (float& value : steps.transform.matrix) value = i % 5 ? entry(m_Random) : value;
        if (i % 19 == 0) steps.transform.matrix[i % 9] = 1e20f;
        steps.transform.largest = static_cast<std::uint16_t>((1u << Number(8, 16)) - 1);
        steps.transform.shift = Number(0, 8);
        if (i % 7 == 0) steps.transform.table = tables[0].data();
        steps.format = static_cast<ColorFormat>(Number(0, 2));
        Planes planes(w), scratch(w);
        std::vector<std::uint8_t> expected(w * kernels::BytesPerPixel(steps.format) + 64, 0xA5), plain = expected,
                                                                                                 actual = expected;
        const auto map = [&](const kernels::ChannelMaps& channels) {
            for (unsigned k = 0; k < 3; ++k) scalar::MapSamples({planes.planes[k].data(), w}, channels[k]);
        };
        scalar::DemosaicRow(mosaic, planes.Row());
        map(steps.input);
        Planes mapped(w);
        scalar::DemosaicRow(mosaic, mapped.Row());
        for (unsigned k = 0; k < 3; ++k) m_Table->map_samples({mapped.planes[k].data(), w}, steps.input[k]);
        ASSERT_EQ(mapped, planes) << i;
        scalar::TransformRow(planes.Row(), steps.transform);
        map(steps.output);
        scalar::PackRow(planes.Row(), steps.format, expected.data());
        scalar::ColorRow(mosaic, steps, scratch.Row(), plain.data());
        m_Table->color_row(mosaic, steps, scratch.Row(), actual.data());
        ASSERT_EQ(plain, expected) << i;
        ASSERT_EQ(actual, expected) << i << ", width " << w << " phase " << mosaic.phase;
    }
}

TEST_P(ColorVariantTest, AllBits) {
    for (std::size_t w = 0; w < 70; ++w) {
        for (std::size_t at = 0; at < w; ++at) {
            Samples samples(w);
            samples[at] = static_cast<std::uint16_t>(1u << (at % 16));
            EXPECT_EQ(m_Table->all_bits(samples), samples[at]);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, ColorVariantTest,
                         testing::Values(Variant::kAvx2, Variant::kAvx2WithoutGathers, Variant::kAvx512));

}  // namespace
}  // namespace zel::test
