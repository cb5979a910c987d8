// Every vector variant against the scalar reference, to the bit, on random geometry and content. What the scalar
// kernels themselves compute is checked by eye in the post-processing tests.
#include <gmock/gmock.h>

#include <random>

#include "kernels/Kernels.h"

namespace zel::test {
namespace {

using kernels::KernelTable;
using kernels::Variant;
using Samples = std::vector<std::uint16_t>;
namespace scalar = kernels::scalar;

constexpr std::uint16_t kGuard = 0xA5A5;
constexpr std::size_t kGuards = 64;

enum class Content { kNoise, kZero, kSaturated, kTwelveBits };

class KernelEqualityTest : public testing::TestWithParam<std::tuple<Variant, Content>> {
  protected:
    void SetUp() override {
        m_Table = kernels::FindKernels(std::get<Variant>(GetParam()));
        if (!m_Table) GTEST_SKIP() << "this machine does not run the variant";
    }
    unsigned Number(unsigned low, unsigned high) {
        return std::uniform_int_distribution<unsigned>(low, high)(m_Random);
    }
    // A width or height: small ones, ones around the vectors' sizes, and now and then a large one.
    unsigned Size() {
        switch (Number(0, 3)) {
            case 0:
                return Number(1, 8);
            case 1:
                return Number(1, 6) * 16 + Number(0, 2) - 1;
            case 2:
                return Number(1, 130);
            default:
                return Number(1, 700);
        }
    }
    std::uint16_t Sample() {
        switch (std::get<Content>(GetParam())) {
            case Content::kZero:
                return 0;
            case Content::kSaturated:
                return Number(0, 7) ? 0xFFFF : 0;
            case Content::kTwelveBits:
                return static_cast<std::uint16_t>(Number(0, 4095));
            default:
                return static_cast<std::uint16_t>(Number(0, 0xFFFF));
        }
    }
    // `count` samples and guards behind them.
    Samples Guarded(std::size_t count) {
        Samples samples(count + kGuards, kGuard);
        for (std::size_t i = 0; i < count; ++i) samples[i] = Sample();
        return samples;
    }
    static std::span<std::uint16_t> Body(Samples& samples) {
        return std::span(samples).first(samples.size() - kGuards);
    }

    const KernelTable* m_Table = nullptr;
    std::mt19937 m_Random{20261121};
};

TEST_P(KernelEqualityTest, Unpack) {
    for (int i = 0; i < 300; ++i) {
        const std::size_t count = std::size_t{Size()} * Number(1, 3);
        // Exactly as long as it must be: the sanitizers see a read beyond it.
        std::vector<std::uint8_t> packed(scalar::PackedSize12(count));
        for (auto& byte : packed) byte = static_cast<std::uint8_t>(Sample());
        Samples expected = Guarded(count), actual = expected;
        scalar::Unpack12(packed, Body(expected));
        m_Table->unpack12(packed, Body(actual));
        ASSERT_EQ(actual, expected) << count;
    }
}

TEST_P(KernelEqualityTest, TapOrder) {
    for (int i = 0; i < 300; ++i) {
        const unsigned w = Size();
        Samples raw = Guarded(w), expected = Guarded(w), actual = expected;
        scalar::ReorderRowTwoTaps(Body(raw), Body(expected));
        m_Table->reorder_row_two_taps(Body(raw), Body(actual));
        ASSERT_EQ(actual, expected) << w;

        raw = Guarded(std::size_t{w} / 2 * 4);
        Samples expected_bottom = Guarded(w), actual_bottom = expected_bottom;
        scalar::ReorderRowPairFourTaps(Body(raw), Body(expected), Body(expected_bottom));
        m_Table->reorder_row_pair_four_taps(Body(raw), Body(actual), Body(actual_bottom));
        ASSERT_EQ(actual, expected) << w;
        ASSERT_EQ(actual_bottom, expected_bottom) << w;
    }
}

// In one step as in two.
TEST_P(KernelEqualityTest, PackedTapOrder) {
    for (const auto& table : {m_Table, kernels::FindKernels(Variant::kScalar)}) {
        for (int i = 0; i < 300; ++i) {
            const unsigned w = Size();
            const std::size_t samples = i % 2 ? w : std::size_t{w} / 2 * 4;
            std::vector<std::uint8_t> packed(scalar::PackedSize12(samples));
            for (auto& byte : packed) byte = static_cast<std::uint8_t>(Sample());
            Samples raw(samples), expected = Guarded(w), actual = expected;
            Samples expected_bottom = Guarded(w), actual_bottom = expected_bottom;
            scalar::Unpack12(packed, raw);
            if (i % 2) {
                scalar::ReorderRowTwoTaps(raw, Body(expected));
                table->unpack_row_two_taps(packed, Body(actual));
            } else {
                scalar::ReorderRowPairFourTaps(raw, Body(expected), Body(expected_bottom));
                table->unpack_row_pair_four_taps(packed, Body(actual), Body(actual_bottom));
            }
            ASSERT_EQ(actual, expected) << w;
            ASSERT_EQ(actual_bottom, expected_bottom) << w;
        }
    }
}

TEST_P(KernelEqualityTest, LookUp) {
    for (const unsigned bits : {1u, 8u, 12u, 14u, 16u}) {
        const auto mask = static_cast<std::uint16_t>((1u << bits) - 1);
        Samples table(mask + 3u);
        for (auto& entry : table) entry = static_cast<std::uint16_t>(Number(0, 0xFFFF));
        for (int i = 0; i < 40; ++i) {
            Samples expected = Guarded(Size()), actual = expected;
            const std::uint16_t value_mask = i % 2 ? mask : std::uint16_t{0xFFFF};
            scalar::LookUp(Body(expected), table.data(), mask, value_mask);
            m_Table->look_up(Body(actual), table.data(), mask, value_mask);
            ASSERT_EQ(actual, expected) << bits;
        }
    }
}

TEST_P(KernelEqualityTest, Binning) {
    constexpr unsigned kFactors[] = {1, 2, 3, 4, 5, 8, 127, 128};
    for (int i = 0; i < 1500; ++i) {
        const unsigned w = Size(), h = i % 10 ? Number(1, 9) : Size();
        const unsigned horizontal = kFactors[Number(0, 7)], vertical = kFactors[Number(0, 7)];
        const unsigned ceiling = (1u << Number(8, 16)) - 1;
        Samples expected = Guarded(std::size_t{w} * h), actual = expected;
        scalar::Bin(Body(expected), w, h, horizontal, vertical, ceiling);
        m_Table->bin(Body(actual), w, h, horizontal, vertical, ceiling);
        // Only the binned frame is specified, and that nothing behind the whole frame is touched.
        const std::size_t binned = std::size_t{w / horizontal} * (h / vertical);
        expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(binned), expected.end() - kGuards);
        actual.erase(actual.begin() + static_cast<std::ptrdiff_t>(binned), actual.end() - kGuards);
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
                         testing::Combine(testing::Values(Variant::kAvx2, Variant::kAvx2WithoutGathers),
                                          testing::Values(Content::kNoise, Content::kZero, Content::kSaturated,
                                                          Content::kTwelveBits)));

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
    const KernelTable* const scalar_table = kernels::FindKernels(Variant::kScalar);
    ASSERT_NE(scalar_table, nullptr);
    const KernelTable* const chosen = &kernels::Kernels();
    EXPECT_EQ(chosen == scalar_table, kernels::FindKernels(Variant::kAvx2) == nullptr);
    kernels::ForceKernels(scalar_table);
    EXPECT_EQ(kernels::Kernels().variant, Variant::kScalar);
    kernels::ForceKernels(nullptr);
    EXPECT_EQ(&kernels::Kernels(), chosen);
}

}  // namespace
}  // namespace zel::test
