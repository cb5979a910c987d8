// A calibration table to the byte: in flash, in a cache file and under its digest.
#include <gmock/gmock.h>

#include <clocale>
#include <cmath>

#include "calibration/TableDirectory.h"
#include "calibration/TableText.h"

namespace zel::test {
namespace {

TEST(TableTest, BytesInTheFlash) {
    TapTable table(1, 4);
    const TapRow row = {1.0f, {0.5f, 2.0f, -1.0f, 1.0000001f}};
    table.SetRow(0, row);
    const std::vector<std::uint8_t> bytes = {0, 0,  0x80, 0x3F, 0,    0,    0, 0x3F, 0,    0,
                                             0, 64, 0,    0,    0x80, 0xBF, 1, 0,    0x80, 0x3F};
    EXPECT_EQ(table.FlashBytes(), bytes);
    EXPECT_EQ(DecodeRow(bytes), row);
    TableDirectory directory{2, {{{0x0102, 3, 0x12345678u, {}}, {4, 5, 6, {}}}}};
    directory.entries[0].digest.fill(0xD1);
    directory.entries[1].digest.fill(0xD2);
    std::vector<std::uint8_t> expected = {2, 2, 1, 3, 0, 0x78, 0x56, 0x34, 0x12};
    expected.insert(expected.end(), 20, 0xD1);
    for (const int byte : {4, 0, 5, 0, 6, 0, 0, 0}) expected.push_back(static_cast<std::uint8_t>(byte));
    expected.insert(expected.end(), 20, 0xD2);
    EXPECT_THAT(directory.Encode(), testing::ElementsAreArray(expected));
}

TEST(TableTest, BoundsOfAGoodRowBelongToIt) {
    EXPECT_TRUE(IsGoodRow({5000.0f, {2.0f, 0.0f, 3.0f}}, 2) && IsGoodRow({0.0f, {0.0f, 2.0f, 3.0f}}, 2));
    for (const auto& [level, gain] : {std::pair(5000.1f, 1.0f), {10, 2.0001f}, {10, -0.1f}, {NAN, 1}}) {
        EXPECT_FALSE(IsGoodRow({level, {gain, 1}}, 2) || IsGoodRow({level, {1, gain}}, 2)) << level << " " << gain;
    }
}

// Digests computed with another program from the same bytes.
TEST(TableTest, DigestCoversTapsRowsAndColumns) {
    for (const auto& [taps, digest] : {std::pair{2, "c98e293455413886eeb085f726eeb277c56fe55d"},
                                       std::pair{4, "f6686df9382b1ec2a034413dcf64425821c89161"}}) {
        TapTable table(4, taps);
        for (int row = 0; row < 4; ++row)
            table.SetRow(row, {static_cast<float>(row), {1.0f, 0.5f, row == 3 ? 9.0f : 0}});
        EXPECT_EQ(DigestText(table.Digest()), digest);
    }
}

// A German application's decimal comma does not get into the files.
TEST(TableTest, TheAgreedTextInEveryLocale) {
    TapTable table(1, 2);
    table.SetRow(0, {1.5f, {0.9f, 1.0000001f}});
    Sha1::Digest digest{255};
    digest[19] = 7;
    EXPECT_EQ(DigestText(digest), "ff0000000000000000007") << "no leading zeros";
    const std::string text = "255 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 7\n1 2\n1.5000000 0.9000000 1.0000001 0 0\n";
    for (const char* locale : {"C", "de_DE.UTF-8", "German_Germany.1252"}) {
        std::printf("%s: %s\n", locale, std::setlocale(LC_ALL, locale) ? "set" : "not installed here");
        EXPECT_EQ(FormatCacheFile(table, digest), text) << locale;
        TableTextFault fault;
        const std::optional<CacheFile> file = ParseCacheFile(text, fault);
        ASSERT_TRUE(file) << locale;
        EXPECT_EQ(FormatCacheFile(file->table, file->digest), text) << locale;
    }
    std::setlocale(LC_ALL, "C");
}

}  // namespace
}  // namespace zel::test
