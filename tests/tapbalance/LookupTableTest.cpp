#include "tapbalance/LookupTables.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "calibration/TableText.h"
#include "tests/tapbalance/ScriptedFlash.h"

namespace zel::test {
namespace {

std::vector<std::uint16_t> Entries(const LookupTables& made, std::size_t tap) {
    return std::vector<std::uint16_t>(made.tables[tap].begin(), made.tables[tap].begin() + made.entries);
}

// A table whose taps all have one gain.
TapTable Flat(int rows, int taps, float gain) {
    TapTable table(rows, taps);
    for (int row = 0; row < rows; ++row) {
        table.SetRow(row, {static_cast<float>(100 * row), {gain, gain, gain, gain}});
    }
    return table;
}

// One entry before it becomes an integer, in extended precision: the line's two coefficients solve the normal equations
//     n  * c + Sx  * m = Sy
//     Sx * c + Sxx * m = Sxy
// around the window's mean level, the row is searched for anew each time.
long double PlainValue(const TapTable& table, unsigned n, long double gain, unsigned i, int tap) {
    const auto mv = table.Millivolts();
    const auto gains = table.Gains(tap);
    const int rows = table.Rows();
    long double x = 2000.0L * i / (n - 1) / std::pow(10.0L, (gain * 0.0358L + 5.5L) / 20.0L);
    int row = rows;
    for (int r = 0; r < rows && row == rows; ++r) {
        if (mv[static_cast<std::size_t>(r)] == x) row = r;
        if (mv[static_cast<std::size_t>(r)] > x) row = r - 1;
        if (row == -1) break;
    }
    if (row == rows) {
        row = rows - 1;
        x = mv[static_cast<std::size_t>(rows - 1)];
    }
    if (row < 0) row = 1;
    if (row > rows - 4) row = rows - 4;
    long double mean = 0;
    for (int k = 0; k < 4; ++k) mean += mv[static_cast<std::size_t>(row + k)] / 4.0L;
    long double sx = 0, sy = 0, sxx = 0, sxy = 0;
    for (int k = 0; k < 4; ++k) {
        const long double dx = mv[static_cast<std::size_t>(row + k)] - mean;
        const long double y = gains[static_cast<std::size_t>(row + k)];
        sx += dx;
        sy += y;
        sxx += dx * dx;
        sxy += dx * y;
    }
    const long double determinant = 4 * sxx - sx * sx;
    const long double m = (4 * sxy - sx * sy) / determinant;
    const long double c = (sxx * sy - sx * sxy) / determinant;
    return i / (m * (x - mean) + c);
}

struct Case {
    int taps;
    int bits;
    float gain;
    int rows;
};
class LookupTableTest : public testing::TestWithParam<Case> {};

TEST_P(LookupTableTest, EveryEntryEqualsAnIndependentComputation) {
    const auto [taps, bits, gain, rows] = GetParam();
    const TapTable table = MakeTable(rows, taps);
    const auto made = MakeLookupTables(table, bits, gain, nullptr);
    const unsigned n = 1u << bits;
    ASSERT_EQ(made->entries, n);
    int on_an_edge = 0;
    for (int tap = 0; tap < taps; ++tap) {
        ASSERT_GE(made->tables[static_cast<std::size_t>(tap)].size(), n + 2) << "room for vector loads";
        for (unsigned i = 0; i < n; ++i) {
            const bool rounded = taps == 2 || tap == 0;
            const long double value = PlainValue(table, n, gain, i, tap) + (rounded ? 0.5L : 0.0L);
            const unsigned expected = std::min(static_cast<unsigned>(value), n - 1);
            const unsigned entry = made->tables[static_cast<std::size_t>(tap)][i];
            if (entry == expected) continue;
            // Double and extended precision may fall on different sides of an integer.
            ASSERT_LT(std::abs(value - std::round(value)), 1e-9L) << "tap " << tap << " entry " << i << ": " << entry;
            ASSERT_LE(std::abs(static_cast<int>(entry) - static_cast<int>(expected)), 1);
            ++on_an_edge;
        }
    }
    EXPECT_LE(on_an_edge, 2);
}

INSTANTIATE_TEST_SUITE_P(Sets, LookupTableTest,
                         testing::Values(Case{2, 12, 0, 30}, Case{2, 14, 350, 41}, Case{4, 14, 350, 41},
                                         Case{4, 12, 1023, 17}, Case{2, 12, -60, 1000}, Case{4, 14, 0, 4}));

// On purpose: tap 1 is rounded, the other three of four taps are truncated; both of two taps are rounded.
TEST(LookupTableValuesTest, OnlyTapOneOfFourIsRounded) {
    const auto four = MakeLookupTables(Flat(8, 4, 2.0f), 12, 0, nullptr);
    const auto two = MakeLookupTables(Flat(8, 2, 2.0f), 12, 0, nullptr);
    for (const unsigned i : {1u, 2u, 3u, 1001u, 4095u}) {
        EXPECT_EQ(four->tables[0][i], (i + 1) / 2);
        for (const std::size_t tap : {1u, 2u, 3u}) EXPECT_EQ(four->tables[tap][i], i / 2);
        for (const std::size_t tap : {0u, 1u}) EXPECT_EQ(two->tables[tap][i], (i + 1) / 2);
    }
}

// On purpose: below the first row the line goes through rows 1 to 4, between the first two through rows 0 to 3.
TEST(LookupTableValuesTest, BelowTheFirstRowTheFirstRowDoesNotCount) {
    TapTable table = Flat(8, 2, 1.0f);
    for (int row = 0; row < 8; ++row) {
        const float gain = row == 0 ? 1.5f : 1.0f;
        table.SetRow(row, {static_cast<float>(100 + 100 * row), {gain, gain}});
    }
    const auto made = MakeLookupTables(table, 12, 0, nullptr);
    // 4095 is 2000 mV / 1.8836 = 1061.8 mV: entry 300 is at 77.8 mV, entry 500 at 129.6 mV.
    EXPECT_EQ(made->tables[0][300], 300);
    EXPECT_LT(made->tables[0][500], 400);
}

// The gain of every level above the last row is that of the last row.
TEST(LookupTableValuesTest, AboveTheLastRowTheGainStays) {
    TapTable table(10, 2);
    for (int row = 0; row < 10; ++row) {
        const float gain = 1.0f + 0.05f * static_cast<float>(row);
        table.SetRow(row, {static_cast<float>(40 * row), {gain, gain}});
    }
    const auto made = MakeLookupTables(table, 12, 0, nullptr);
    for (unsigned i = 1400; i < 4096; ++i) {  // the last row is entry 1388
        ASSERT_EQ(made->tables[0][i], static_cast<unsigned>(i / 1.45 + 0.5)) << i;
    }
}

// On purpose: where a window of a four-tap table begins with two equal levels, its entries are the largest value.
TEST(LookupTableValuesTest, EqualLevelsOfFourTapsGiveTheLargestValue) {
    for (const int taps : {2, 4}) {
        TapTable top = Flat(8, taps, 1.0f);
        top.SetRow(5, {400.0f, {1, 1, 1, 1}});  // as row 4, where the last window begins
        EXPECT_EQ(MakeLookupTables(top, 12, 0, nullptr)->tables[1][1928], taps == 4 ? 4095 : 1928) << "at 500 mV";
        TapTable low = Flat(8, taps, 1.0f);
        low.SetRow(1, {0.0f, {1, 1, 1, 1}});  // as row 0
        EXPECT_EQ(MakeLookupTables(low, 12, 0, nullptr)->tables[0][0], taps == 4 ? 4095 : 0)
            << "x equals row 0's level";
    }
}

// On purpose: a gain of 0 leaves the entry as it was; nothing in the upper half of a two-tap table is black.
TEST(LookupTableValuesTest, AGainOfZeroKeepsTheEntry) {
    for (const int taps : {2, 4}) {
        const auto before = MakeLookupTables(Flat(8, taps, 2.0f), 12, 0, nullptr);
        const auto kept = MakeLookupTables(Flat(8, taps, 0.0f), 12, 0, before.get());
        for (std::size_t tap = 0; tap < static_cast<std::size_t>(taps); ++tap) {
            EXPECT_EQ(Entries(*kept, tap), Entries(*before, tap));
        }
        const auto fresh = MakeLookupTables(Flat(8, taps, 0.0f), 12, 0, nullptr);
        EXPECT_EQ(fresh->tables[1][2048], 0);
        EXPECT_EQ(fresh->tables[1][2049], taps == 2 ? 4095 : 0);
    }
}

// Whatever the values are, entries are computed and lie inside the table.
TEST(LookupTableValuesTest, NonsenseValuesStayInside) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const float bad : {nan, infinity, -infinity, -1.0f, 1e-30f, 3e38f}) {
        for (const float gain : {0.0f, 1e9f, -1e9f}) {
            for (const int taps : {2, 4}) {
                TapTable table = MakeTable(20, taps);
                for (const int row : {0, 7, 19}) table.SetRow(row, {bad, {bad, bad, bad, bad}});
                const auto made = MakeLookupTables(table, 12, gain, nullptr);
                for (const std::uint16_t entry : made->tables[1]) ASSERT_LE(entry, 4095);
            }
        }
    }
    EXPECT_EQ(MakeLookupTables(MakeTable(20, 2), 0, 0, nullptr)->entries, 1u);
}

// Both products, and every compiler, make the same entries.
TEST(LookupTableValuesTest, EntriesAreTheSameOnEverySystem) {
    Sha1 sha;
    for (const int taps : {2, 4}) {
        const TapTable table = MakeTable(50, taps);
        for (int gain = 0; gain < 1024; gain += 33) {
            const auto made = MakeLookupTables(table, 14, static_cast<float>(gain), nullptr);
            for (std::size_t tap = 0; tap < static_cast<std::size_t>(taps); ++tap) {
                for (const unsigned entry : Entries(*made, tap)) {
                    sha.Update(std::array{static_cast<std::uint8_t>(entry), static_cast<std::uint8_t>(entry >> 8)});
                }
            }
        }
    }
    const Sha1::Digest digest = sha.Finish();
    EXPECT_EQ(DigestText(digest), "fc4d940ccf63f12af5b2878d094378b81f7a");
}

}  // namespace
}  // namespace zel::test
