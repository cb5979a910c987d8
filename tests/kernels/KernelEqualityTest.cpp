// Every vector variant against the scalar reference, to the bit, on random geometry and content. What the scalar
// kernels themselves compute is checked by eye in the post-processing tests.
#include <numeric>

#include "tests/kernels/KernelFixture.h"

namespace zel::test {
namespace {

constexpr std::uint16_t kGuard = 0xA5A5;
constexpr std::size_t kGuards = 64;

class KernelEqualityTest : public KernelTest {
  protected:
    // A width or height: small ones, ones around the vectors' sizes, and now and then a large one.
    unsigned Size() {
        const unsigned sizes[] = {Number(1, 8), Number(1, 6) * 16 + Number(0, 2) - 1, Number(1, 130), Number(1, 700)};
        return sizes[Number(0, 3)];
    }
    // `count` samples and guards behind them; zero, saturated, of twelve bits, or any.
    Samples Guarded(std::size_t count) {
        constexpr unsigned kLargest[] = {0, 1, 4095, 0xFFFF};
        Samples samples = Row(count, kLargest[Number(0, 3)]);
        samples.resize(count + kGuards, kGuard);
        return samples;
    }
    // Entries near their own index, on lines that end and begin anew after about `stretch` of them; some are on none.
    Samples Straight(std::size_t count, unsigned stretch, unsigned largest) {
        Samples table(count);
        double slope = 1, entry = 0;
        for (std::size_t i = 0, left = 0; i < count; ++i, --left, entry += slope) {
            if (left == 0) {
                left = Number(stretch, 2 * stretch);
                slope = Number(900, 1100) / 1000.0;
                entry = static_cast<double>(i) * Number(950, 1050) / 1000;
            }
            const bool on_a_line = i < count / 3 || i > count / 3 + count / 50;
            const auto rounded = static_cast<unsigned>(std::min<double>(entry, largest));
            table[i] = static_cast<std::uint16_t>(on_a_line ? rounded : Number(0, largest));
        }
        return table;
    }
    static std::span<std::uint16_t> Body(Samples& samples) {
        return std::span(samples).first(samples.size() - kGuards);
    }
};

TEST_P(KernelEqualityTest, Unpack) {
    for (int i = 0; i < 1000; ++i) {
        const std::size_t count = std::size_t{Size()} * Number(1, 3);
        const std::vector<std::uint8_t> packed = Packed(count);
        Samples expected = Guarded(count), actual = expected;
        scalar::Unpack12(packed, Body(expected));
        m_Table->unpack12(packed, Body(actual));
        ASSERT_EQ(actual, expected) << count;
    }
}

// Reordered after unpacking, and both in one step.
TEST_P(KernelEqualityTest, TapOrder) {
    const KernelTable* const reference = kernels::FindKernels(Variant::kScalar);
    for (int i = 0; i < 1000; ++i) {
        const bool two = i % 2;
        const unsigned w = Size();
        const std::size_t count = two ? w : std::size_t{w} / 2 * 4;
        const std::vector<std::uint8_t> packed = Packed(count);
        Samples raw(count);
        scalar::Unpack12(packed, raw);
        const Samples blank = Guarded(w);
        Samples expected = blank, expected_bottom = blank;
        if (two) scalar::ReorderRowTwoTaps(raw, Body(expected));
        if (!two) scalar::ReorderRowPairFourTaps(raw, Body(expected), Body(expected_bottom));
        for (const KernelTable* table : {m_Table, reference}) {
            for (const bool in_one_step : {false, true}) {
                Samples actual = blank, bottom = blank;
                if (two && in_one_step) table->unpack_row_two_taps(packed, Body(actual));
                if (two && !in_one_step) table->reorder_row_two_taps(raw, Body(actual));
                if (!two && in_one_step) table->unpack_row_pair_four_taps(packed, Body(actual), Body(bottom));
                if (!two && !in_one_step) table->reorder_row_pair_four_taps(raw, Body(actual), Body(bottom));
                ASSERT_EQ(actual, expected) << w << " in one step " << in_one_step;
                ASSERT_EQ(bottom, expected_bottom) << w << " in one step " << in_one_step;
            }
        }
    }
}

TEST_P(KernelEqualityTest, LookUp) {
    for (const unsigned bits : {1u, 8u, 12u, 14u, 16u}) {
        const auto mask = static_cast<std::uint16_t>((1u << bits) - 1);
        const Samples table = Row(mask + 3u, 0xFFFF);
        for (int i = 0; i < 100; ++i) {
            Samples expected = Guarded(Size()), actual = expected;
            const std::uint16_t value_mask = i % 2 ? mask : std::uint16_t{0xFFFF};
            scalar::LookUp(Body(expected), table.data(), mask, value_mask);
            m_Table->look_up(Body(actual), table.data(), mask, value_mask);
            ASSERT_EQ(actual, expected) << bits;
        }
    }
}

// Tables of straight stretches with steps between them, of none, and with samples above their largest.
TEST_P(KernelEqualityTest, LookUpByLines) {
    for (const unsigned bits : {1u, 7u, 8u, 12u, 14u, 16u}) {
        const auto mask = static_cast<std::uint16_t>((1u << bits) - 1);
        for (const unsigned stretch : {0u, 1u, 40u, 300u, 5000u}) {
            Samples table = stretch ? Straight(mask + 3u, stretch, mask) : Row(mask + 3u, mask);
            const LineTable lines = kernels::MakeLineTable(std::span(table).first(mask + 1u), bits);
            // Steps that come seldom fit, and every line that is not marked gives what the table has.
            if (bits == 12 || bits == 14) {
                EXPECT_EQ(lines.Usable(), stretch >= 300) << bits << ' ' << stretch;
            }
            for (int i = 0; i < 40; ++i) {
                Samples expected = Guarded(i ? Size() : 0x10000), actual = expected;
                if (i == 0) std::iota(expected.begin(), expected.end() - kGuards, std::uint16_t{0}), actual = expected;
                const std::uint16_t value_mask = i % 4 < 3 ? 0xFFFF : i % 8 < 4 ? mask : 0x0F55;
                scalar::LookUp(Body(expected), table.data(), mask, value_mask);
                m_Table->look_up_by_lines(Body(actual), table.data(), lines, mask, value_mask);
                ASSERT_EQ(actual, expected) << bits << ' ' << stretch;
            }
        }
    }
}

TEST_P(KernelEqualityTest, Binning) {
    constexpr unsigned kFactors[] = {1, 2, 3, 4, 5, 8, 127, 128};
    for (int i = 0; i < 4000; ++i) {
        const unsigned w = Size(), h = i % 10 ? Number(1, 9) : Size();
        const unsigned horizontal = kFactors[Number(0, 7)], vertical = kFactors[Number(0, 7)];
        const unsigned ceiling = (1u << Number(8, 16)) - 1;
        Samples expected = Guarded(std::size_t{w} * h), actual = expected;
        scalar::Bin(Body(expected), w, h, horizontal, vertical, ceiling);
        m_Table->bin(Body(actual), w, h, horizontal, vertical, ceiling);
        // Only the binned frame is specified, and that nothing behind the whole frame is touched.
        for (Samples* samples : {&expected, &actual}) {
            samples->erase(samples->begin() + w / horizontal * (h / vertical), samples->end() - kGuards);
        }
        ASSERT_EQ(actual, expected) << w << " x " << h << " by " << horizontal << " x " << vertical << " to "
                                    << ceiling;
    }
}

TEST_P(KernelEqualityTest, Average) {
    for (const std::uint32_t ring : {1u, 2u, 3u, 7u, 255u, 256u, 300u}) {
        const std::size_t size = Size();
        std::vector<Samples> slots(ring, Samples(size)), expected_slots = slots;
        std::vector<std::uint32_t> sums(size), expected_sums(size);
        for (std::uint32_t frame = 0; frame < ring + 3; ++frame) {
            Samples expected = Guarded(size), actual = expected;
            const std::uint32_t count = std::min(frame + 1, ring);
            scalar::AverageStep(Body(expected), expected_slots[frame % ring], expected_sums, count, frame >= ring);
            m_Table->average_step(Body(actual), slots[frame % ring], sums, count, frame >= ring);
            ASSERT_EQ(actual, expected) << ring << " frame " << frame;
            ASSERT_EQ(sums, expected_sums);
        }
        EXPECT_EQ(slots, expected_slots);
    }
}

INSTANTIATE_TEST_SUITE_P(, KernelEqualityTest,
                         testing::Values(Variant::kAvx2, Variant::kAvx2WithoutGathers, Variant::kAvx512));

// The quotient in single precision must be the truncated whole-number one everywhere, at its edges above all.
TEST(AverageTest, TruncatesExactlyForEveryCount) {
    const KernelTable* table = kernels::FindKernels(Variant::kAvx2);
    if (!table) GTEST_SKIP() << "this machine has no AVX2";
    for (std::uint32_t count = 2; count <= 255; ++count) {
        std::vector<std::uint32_t> sums;
        for (std::uint32_t mean = 1; mean <= 0xFFFF; mean += 257) {
            sums.insert(sums.end(), {mean * count - 1, mean * count, mean * count + count - 1});
        }
        sums.resize(sums.size() / 16 * 16);
        const std::vector<std::uint32_t> totals = sums;
        Samples frame(sums.size()), slot(sums.size());
        table->average_step(frame, slot, sums, count, false);
        for (std::size_t i = 0; i < frame.size(); ++i)
            ASSERT_EQ(frame[i], totals[i] / count) << totals[i] << '/' << count;
    }
}

TEST(KernelChoiceTest, TheFastestTableUnlessOneIsForced) {
    const KernelTable* const chosen = &kernels::Kernels();
    EXPECT_EQ(chosen->variant == Variant::kScalar, kernels::FindKernels(Variant::kAvx2) == nullptr);
    kernels::ForceKernels(kernels::FindKernels(Variant::kScalar));
    EXPECT_EQ(kernels::Kernels().variant, Variant::kScalar);
    kernels::ForceKernels(nullptr);
    EXPECT_EQ(&kernels::Kernels(), chosen);
}

}  // namespace
}  // namespace zel::test
