// What fuzz/KernelFuzz.cpp does not show, which holds every variant against the scalar reference: which tables are told
// by lines, the quotients of the average, and which variant is chosen. What the scalar kernels themselves compute is
// checked by eye in the post-processing tests.
#include <fstream>
#include <iterator>
#include <numeric>
#include <string>

#include "kernels/CpuSupport.h"
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

// Where the system tells, too: a wrong answer would leave every variant untried.
TEST(CpuSupportTest, IsWhatTheSystemSays) {
    std::ifstream file("/proc/cpuinfo");
    if (!file) GTEST_SKIP() << "there is no /proc/cpuinfo";
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const auto says = [&](const char* what) { return text.find(what) != std::string::npos; };
    EXPECT_EQ(kernels::CpuHasAvx2(), says(" avx2 "));
    EXPECT_EQ(kernels::CpuHasFma(), says(" fma "));
    EXPECT_EQ(kernels::CpuHasAvx512(), says(" avx512f ") && says(" avx512bw ") && says(" avx512vbmi "));
    EXPECT_EQ(kernels::CpuHasFastGathers(), says(" avx2 ") && !says("AuthenticAMD"));
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
