#include "tapbalance/LookupTables.h"

#include <gtest/gtest.h>

#include "calibration/TableText.h"
#include "tests/tapbalance/ScriptedFlash.h"

namespace zel::test {
namespace {

// A table of one gain.
TapTable Flat(int taps, float gain, int first_level = 0) {
    TapTable table(8, taps);
    for (int row = 0; row < 8; ++row) {
        table.SetRow(row, {static_cast<float>(first_level + 100 * row), {gain, gain, gain, gain}});
    }
    return table;
}

// On purpose: tap 1 is rounded, the other three of four taps are truncated; both of two taps are rounded.
TEST(LookupTableTest, OnlyTapOneOfFourIsRounded) {
    const auto four = MakeLookupTables(Flat(4, 2.0f), 12, 0, nullptr);
    const auto two = MakeLookupTables(Flat(2, 2.0f), 12, 0, nullptr);
    for (const unsigned i : {1u, 2u, 3u, 1001u, 4095u}) {
        EXPECT_EQ(four->tables[0][i], (i + 1) / 2);
        for (const std::size_t tap : {1u, 2u, 3u}) EXPECT_EQ(four->tables[tap][i], i / 2);
        for (const std::size_t tap : {0u, 1u}) EXPECT_EQ(two->tables[tap][i], (i + 1) / 2);
    }
}

// On purpose: below the first row the line goes through rows 1 to 4, between the first two through rows 0 to 3.
TEST(LookupTableTest, BelowTheFirstRowTheFirstRowDoesNotCount) {
    TapTable table = Flat(2, 1.0f, 100);
    table.SetRow(0, {100.0f, {1.5f, 1.5f}});
    const auto made = MakeLookupTables(table, 12, 0, nullptr);
    // 4095 is 2000 mV / 1.8836 = 1061.8 mV: entry 300 is at 77.8 mV, entry 500 at 129.6 mV.
    EXPECT_EQ(made->tables[0][300], 300);
    EXPECT_LT(made->tables[0][500], 400);
}

// On purpose: where a window of a four-tap table begins with two equal levels, its entries are the largest value.
TEST(LookupTableTest, EqualLevelsOfFourTapsGiveTheLargestValue) {
    for (const int taps : {2, 4}) {
        TapTable table = Flat(taps, 1.0f);
        table.SetRow(5, table.Row(4));  // where the last window begins
        table.SetRow(1, table.Row(0));
        const auto made = MakeLookupTables(table, 12, 0, nullptr);
        EXPECT_EQ(made->tables[1][1928], taps == 4 ? 4095 : 1928) << "at 500 mV";
        EXPECT_EQ(made->tables[0][0], taps == 4 ? 4095 : 0) << "at row 0's level";
    }
}

// On purpose: a gain of 0 leaves the entry as it was; nothing in the upper half of a two-tap table is black.
TEST(LookupTableTest, AGainOfZeroKeepsTheEntry) {
    for (const int taps : {2, 4}) {
        const auto before = MakeLookupTables(Flat(taps, 2.0f), 12, 0, nullptr);
        EXPECT_EQ(MakeLookupTables(Flat(taps, 0.0f), 12, 0, before.get())->tables, before->tables);
        const auto fresh = MakeLookupTables(Flat(taps, 0.0f), 12, 0, nullptr);
        EXPECT_EQ(fresh->tables[1][2048], 0);
        EXPECT_EQ(fresh->tables[1][2049], taps == 2 ? 4095 : 0);
    }
}

// Every product, and every compiler, makes the same entries; they were once compared with a plain computation in
// extended precision.
TEST(LookupTableTest, EntriesAreTheSameOnEverySystem) {
    std::vector<std::uint8_t> bytes;
    for (const int taps : {2, 4}) {
        for (int gain = 0; gain < 1024; gain += 33) {
            const auto made = MakeLookupTables(MakeTable(50, taps), 14, static_cast<float>(gain), nullptr);
            for (std::size_t tap = 0; tap < static_cast<std::size_t>(taps); ++tap) {
                for (const unsigned entry : std::span(made->tables[tap]).first(made->entries)) {
                    bytes.push_back(static_cast<std::uint8_t>(entry));
                    bytes.push_back(static_cast<std::uint8_t>(entry >> 8));
                }
            }
        }
    }
    EXPECT_EQ(DigestText(Sha1::Of(bytes)), "fc4d940ccf63f12af5b2878d094378b81f7a");
}

}  // namespace
}  // namespace zel::test
