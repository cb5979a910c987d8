// What fuzz/KernelFuzz.cpp does not show, which holds every variant against the scalar reference: which tables are told
// by lines, the quotients of the average, and which variant is chosen. What the scalar kernels themselves compute is
// checked by eye in the post-processing tests.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <numeric>
#include <random>
#include <string>

#include "kernels/CpuSupport.h"
#include "kernels/Kernels.h"

namespace zel::test {
namespace {

using kernels::KernelTable;
using kernels::Variant;
using Samples = std::vector<std::uint16_t>;

class KernelEqualityTest : public testing::TestWithParam<Variant> {};

// Entries near their own index, on lines that end and begin anew after about `stretch` of them; some are on none.
Samples Straight(unsigned stretch, unsigned largest) {
    std::mt19937 random(stretch);
    const auto number = [&](unsigned low, unsigned high) {
        return low + static_cast<unsigned>(random()) % (high - low + 1);
    };
    Samples table(largest + 3);
    double slope = 1, entry = 0;
    for (std::size_t i = 0, left = 0; i < table.size(); ++i, --left, entry += slope) {
        if (left == 0) {
            left = number(stretch, 2 * stretch);
            slope = number(900, 1100) / 1000.0;
            entry = static_cast<double>(i) * number(950, 1050) / 1000;
        }
        const bool on_a_line = i < table.size() / 3 || i > table.size() / 3 + table.size() / 50;
        const auto rounded = static_cast<unsigned>(std::min<double>(entry, largest));
        table[i] = static_cast<std::uint16_t>(on_a_line ? rounded : number(0, largest));
    }
    return table;
}

// Every sample through tables of straight stretches with steps between them, and of none.
TEST_P(KernelEqualityTest, LookUpByLines) {
    const KernelTable* const kernel = kernels::FindKernels(GetParam());
    if (!kernel) GTEST_SKIP() << "this machine does not run the variant";
    for (const unsigned bits : {1u, 7u, 8u, 12u, 14u, 16u}) {
        const auto mask = static_cast<std::uint16_t>((1u << bits) - 1);
        for (const unsigned stretch : {1u, 40u, 300u, 5000u}) {
            SCOPED_TRACE(testing::Message() << bits << " bits, stretches of " << stretch);
            const Samples table = Straight(stretch, mask);
            const auto lines = kernels::MakeLineTable(std::span(table).first(mask + 1u), bits);
            // Steps that come seldom fit, and every line that is not marked gives what the table has.
            EXPECT_TRUE((bits != 12 && bits != 14) || lines.Usable() == (stretch >= 300));
            for (const std::uint16_t value_mask : {std::uint16_t{0xFFFF}, mask, std::uint16_t{0x0F55}}) {
                Samples expected(0x10000);
                std::iota(expected.begin(), expected.end(), std::uint16_t{0});
                Samples actual = expected;
                kernels::scalar::LookUp(expected, table.data(), mask, value_mask);
                kernel->look_up_by_lines(actual, table.data(), lines, mask, value_mask);
                ASSERT_EQ(actual, expected) << value_mask;
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
