// Directories and files that lie: each gives its message, and nothing is corrected with it.
#include <functional>

#include "tests/support/RecordedLog.h"
#include "tests/tapbalance/TapBalanceFixture.h"

namespace zel::test {
namespace {

struct Lie {
    const char* name;
    int tables;
    Entry first;
    Entry second;
    const char* message;
};

std::ostream& operator<<(std::ostream& out, const Lie& lie) { return out << lie.name; }

class LyingDirectoryTest : public TapBalanceTest, public testing::WithParamInterface<Lie> {};

TEST_P(LyingDirectoryTest, EndsTheDownloadWithItsMessage) {
    RecordedLog log;
    TapBalance tap_balance(m_TextProtocol, "recorded");
    const Lie& lie = GetParam();
    m_Flash.PutTable(256, MakeTable(20, 2));
    m_Flash.PutDirectory(lie.tables, lie.first, lie.second);
    EXPECT_FALSE(tap_balance.LoadDataFromCamera());
    EXPECT_EQ(log.Count(lie.message, kLogError), 1) << testing::PrintToString(log.Messages("TapBalance", kLogError));
    EXPECT_FALSE(tap_balance.Enable(true));
    EXPECT_FALSE(tap_balance.TablesFor(0) || tap_balance.TablesFor(1));
    float values[5] = {};
    for (const int select : {0, 1}) {
        tap_balance.SelectTable(select);
        tap_balance.GetTableData(0, values, values + 1);
        tap_balance.GetTableData(999, values, values + 1);
    }
}

constexpr const char* kBounds0 =
    "***ERROR***: rows:1001 (<= 0 || > 1000) || num_taps:2 (<= 0 || > 4) is out of bounds returning false";
INSTANTIATE_TEST_SUITE_P(
    Lies, LyingDirectoryTest,
    testing::Values(
        Lie{"Erased", 255, {20, 3, 256}, {20, 3, 256}, "***ERROR***: Invalid table data."},
        Lie{"NoRows", 2, {0, 3, 256}, {20, 3, 256}, "***ERROR***: 20 mhz - rows (0) < 0  || num_taps (2) < 0"},
        Lie{"NoRowsAt40", 2, {20, 3, 256}, {0, 3, 256}, "***ERROR***: 40 mhz - rows (0) < 0  || num_taps (2) < 0"},
        Lie{"OneColumn", 2, {20, 1, 256}, {20, 3, 256}, "***ERROR***: 20 mhz - rows (20) < 0  || num_taps (0) < 0"},
        Lie{"NoColumn", 2, {20, 0, 256}, {20, 3, 256}, "***ERROR***: 20 mhz - rows (20) < 0  || num_taps (-1) < 0"},
        Lie{"ManyRows", 2, {1001, 3, 256}, {20, 3, 256}, kBounds0},
        Lie{"MostRows",
            2,
            {65535, 3, 256},
            {20, 3, 256},
            "***ERROR***: rows:65535 (<= 0 || > 1000) || num_taps:2 (<= 0 || > 4) is out of bounds returning false"},
        Lie{"FiveTaps",
            2,
            {20, 6, 256},
            {20, 3, 256},
            "***ERROR***: rows:20 (<= 0 || > 1000) || num_taps:5 (<= 0 || > 4) is out of bounds returning false"},
        Lie{"ThreeTaps", 2, {20, 4, 256}, {20, 3, 256}, "***ERROR***: m_Numcols is invalid"},
        Lie{"OneTap", 2, {20, 2, 256}, {20, 3, 256}, "***ERROR***: m_Numcols is invalid"},
        Lie{"ThreeRows", 2, {3, 3, 256}, {20, 3, 256}, "***ERROR***: table 0 has 3 rows, a line needs 4"},
        Lie{"OffsetAtTheEnd",
            2,
            {20, 3, 64 * 256 - 8},
            {20, 3, 256},
            "***ERROR***: 12 bytes at offset 0x00003ff8 lie outside the flash (64 x 256)"},
        Lie{"OffsetFarAway",
            2,
            {20, 3, -1},
            {20, 3, 256},
            "***ERROR***: 12 bytes at offset 0xffffffff lie outside the flash (64 x 256)"}),
    [](const auto& chosen) { return std::string(chosen.param.name); });

struct Geometry {
    const char* command;
    const char* reply;
    const char* message;
};

TEST_F(TapBalanceTest, FlashesOfNonsenseSizeAreRefused) {
    RecordedLog log;
    TapBalance tap_balance(m_TextProtocol, "recorded");
    m_Flash.Install(MakeTable(20, 2), MakeTable(20, 2));
    const Geometry cases[] = {
        {"tb p s", "0", "***ERROR***: page size 0 is out of bounds"},
        {"tb p s", "7fffffff", "***ERROR***: page size 2147483647 is out of bounds"},
        {"tb p s", "80000000", "***ERROR***: the reply to \"tb p s\" is no number: \"80000000\""},
        {"tb p s", "OK", "***ERROR***: the reply to \"tb p s\" is no number: \"OK\""},
        {"tb p s", "ERR x", "***ERROR***: the camera refused \"tb p s\": \"ERR x\""},
        {"tb f s", "", "***ERROR***: no reply to \"tb f s\""},
        {"tb p n", "0", "***ERROR***: number of pages 0 is out of bounds"},
        {"tb p n", "fffffff", "***ERROR***: number of pages 268435455 is out of bounds"},
        {"tb g 0", "ERR", "***ERROR***: the camera refused \"tb g 0\": \"ERR\""},
        {"tb r 8 8", "", "***ERROR***: \"tb r 8 8\" failed, retry failed. Giving up"},
    };
    for (const Geometry& c : cases) {
        log.Clear();
        m_Flash.m_Fault = [&](const std::string& command) -> std::optional<std::string> {
            if (command == c.command) return c.reply;
            return std::nullopt;
        };
        tap_balance.ForgetFlash();
        EXPECT_FALSE(tap_balance.LoadDataFromCamera());
        EXPECT_EQ(log.Count(c.message, kLogError), 1)
            << c.message << testing::PrintToString(log.Messages("TapBalance", kLogError));
    }
    EXPECT_EQ(log.Count("***ERROR***: \"tb r 8 8\" failed, attempting retry."), 1);
}

struct BadFile {
    const char* name;
    std::string text;
    const char* message;
};

std::ostream& operator<<(std::ostream& out, const BadFile& file) { return out << file.name; }

const std::string kDigest = "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20\n";
const std::string kRows = "1 1 1 0 0\n2 1 1 0 0\n3 1 1 0 0\n4 1 1 0 0\n";

class BadFileTest : public TapBalanceTest, public testing::WithParamInterface<BadFile> {};

// As a cache file, and where the rest is a table also as a master file.
TEST_P(BadFileTest, IsRefusedWithItsMessage) {
    RecordedLog log;
    TapBalance tap_balance(m_TextProtocol, "recorded");
    const BadFile& file = GetParam();
    const std::string path = testing::TempDir() + "zel_bad_20MHz.txt";
    WriteText(path, file.text);
    EXPECT_FALSE(tap_balance.LoadDataFromFile(path.c_str(), false));
    EXPECT_EQ(log.Count(file.message, kLogError), 1) << testing::PrintToString(log.Messages("TapBalance"));
    if (file.text.starts_with(kDigest)) {
        log.Clear();
        WriteText(path, file.text.substr(kDigest.size()));
        EXPECT_FALSE(tap_balance.LoadDataFromMasterFile(path.c_str()));
        EXPECT_EQ(log.Count(file.message, kLogError), 1) << testing::PrintToString(log.Messages("TapBalance"));
    }
    EXPECT_FALSE(tap_balance.Enable(true));
    std::remove(path.c_str());
}

INSTANTIATE_TEST_SUITE_P(
    Files, BadFileTest,
    testing::Values(
        BadFile{"Empty", "", "***HASH PARSE ERROR***. Expected 20 bytes data and got 0"},
        BadFile{"NineteenNumbers", "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19\n4 2\n" + kRows,
                "***HASH PARSE ERROR***. Expected 20 bytes data and got 19"},
        BadFile{"NoByte", "1 2 256 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20\n4 2\n" + kRows,
                "***HASH PARSE ERROR***. Expected 20 bytes data and got 2"},
        BadFile{"NoShape", kDigest, "***PARSE ERROR***. Row:0 Expected 2 cols of data and got 0"},
        BadFile{"HalfAShape", kDigest + "4\n" + kRows, "***PARSE ERROR***. Row:0 Expected 2 cols of data and got 1"},
        BadFile{"HugeShape", kDigest + "4 99999999999\n" + kRows,
                "***PARSE ERROR***. Row:0 Expected 2 cols of data and got 1"},
        BadFile{"ThreeTaps", kDigest + "4 3\n" + kRows, "***PARSE ERROR***. 3 taps: a table has 2 or 4"},
        BadFile{"NoRows", kDigest + "0 2\n" + kRows, "***PARSE ERROR***. 0 rows: a table has 1 to 1000"},
        BadFile{"ManyRows", kDigest + "1001 2\n" + kRows, "***PARSE ERROR***. 1001 rows: a table has 1 to 1000"},
        BadFile{"NegativeRows", kDigest + "-4 2\n" + kRows, "***PARSE ERROR***. -4 rows: a table has 1 to 1000"},
        BadFile{"EndsBetweenRows", kDigest + "5 2\n" + kRows,
                "***PARSE ERROR***. Row:5 Expected 5 cols of data and got 0"},
        BadFile{"EndsInARow", kDigest + "5 2\n" + kRows + "5 1 1",
                "***PARSE ERROR***. Row:5 Expected 5 cols of data and got 3"},
        BadFile{"NoNumber", kDigest + "4 2\n1 x 1 0 0\n", "***PARSE ERROR***. Row:1 Expected 5 cols of data and got 1"},
        BadFile{"Comma", kDigest + "4 2\n1,5 1 1 0 0\n", "***PARSE ERROR***. Row:1 Expected 5 cols of data and got 0"},
        BadFile{"TwoSigns", kDigest + "4 2\n1 +-1 1 0 0\n",
                "***PARSE ERROR***. Row:1 Expected 5 cols of data and got 1"},
        BadFile{"NotANumber", kDigest + "4 2\nnan 1 1 0 0\n" + kRows,
                "***PARSE ERROR***. Row:1 holds a value that no table can have"},
        BadFile{"Infinity", kDigest + "4 2\n1 1 -inf 0 0\n" + kRows,
                "***PARSE ERROR***. Row:1 holds a value that no table can have"},
        BadFile{"Huge", kDigest + "4 2\n1 1e999 1 0 0\n" + kRows,
                "***PARSE ERROR***. Row:1 Expected 5 cols of data and got 1"},
        BadFile{"ZeroByte", kDigest + std::string("4 2\n1 \0 1 0 0\n", 13),
                "***PARSE ERROR***. Row:1 Expected 5 cols of data and got 1"},
        BadFile{"ThreeRows", kDigest + "3 2\n" + kRows, "***ERROR***: table 0 has 3 rows, a line needs 4"}),
    [](const auto& chosen) { return std::string(chosen.param.name); });

// The lines that tell why nothing is corrected.
TEST_F(TapBalanceTest, TheLogTellsWhyNothingIsCorrected) {
    RecordedLog log;
    TapBalance tap_balance(m_TextProtocol, "recorded");
    unsigned short pixel = 5;
    EXPECT_FALSE(tap_balance.Enable(true));
    EXPECT_EQ(log.Count("enable:1  m_DataValid:0 m_DataFault:0"), 1);
    EXPECT_TRUE(tap_balance.TranslatePixels(1, 1, 2, 0, &pixel));
    EXPECT_EQ(log.Count("TapBalance::TranslatePixels() - m_Enabled is false\n"), 1);
    m_Flash.Install(MakeTable(20, 2), MakeTable(20, 2));
    ASSERT_TRUE(tap_balance.LoadDataFromCamera() && tap_balance.Enable(true));
    EXPECT_EQ(log.Count("num_tables:2"), 1);
    EXPECT_EQ(log.Count("table 1 - num_cols:3 0x00000003"), 1);
    EXPECT_EQ(log.Count("EXIT - page size: 256"), 1);
    EXPECT_EQ(log.Count("num pages: 64"), 1);
    EXPECT_EQ(log.Count("PAGE_TABLE_DIR size:57") * log.Count("PAGE_TABLE_ENTRY size:28"), 1);
    EXPECT_EQ(log.Count("TapBalance::LoadDataFromCamera() - 40MHz rows:20 num_taps:2\n"), 1);
    EXPECT_EQ(log.Count("CalculateLUT() gain:0.000000 num_entries:16384 num_taps:2 m_MaxNumPixelValues:16384"), 2);
    EXPECT_FALSE(tap_balance.TranslatePixels(1, 1, 2, 2, &pixel));
    EXPECT_EQ(log.Count("TapBalance::TranslatePixels() - m_TapBalanceData[select:2] is 0\n"), 1);
    EXPECT_TRUE(tap_balance.TranslatePixels(1, 1, 2, 1, &pixel));
    EXPECT_EQ(log.Count("TapBalance::TranslatePixels(w:1 h:1 num_taps:2 select:1)\n"), 1);
    EXPECT_EQ(log.Count("PostProcessTapBalance() took 0 ms\n"), 1);
    tap_balance.SetGain(0);
    EXPECT_EQ(log.Count("TapBalance::SetGain(gain:0.000000) is equal to m_Gain:0.000000"), 1);
    m_Flash.m_Fault = [](const std::string&) -> std::optional<std::string> { return "ERR"; };
    const std::string path = testing::TempDir() + "zel_unchecked.txt";
    WriteText(path, kDigest + "4 2\n" + kRows);
    tap_balance.SelectTable(0);
    EXPECT_FALSE(tap_balance.LoadDataFromFile(path.c_str(), true));
    EXPECT_EQ(log.Count("TapBalance::LoadDataFromFile(filename:" + path +
                            ") ***ERROR***. GetTableHashFromCamera(select:0) failed",
                        kLogError),
              1);
    EXPECT_EQ(log.Count("**** DATA FAULT ****", kLogError), 1);
    EXPECT_FALSE(tap_balance.TranslatePixels(1, 1, 2, 0, &pixel));
    EXPECT_EQ(log.Count("m_DataFault == true", kLogError), 1);
    std::remove(path.c_str());
}

// Whatever answers false says why, at the level of errors.
TEST_F(TapBalanceTest, EveryFailureIsAnErrorLine) {
    RecordedLog log;
    TapBalance tap_balance(m_TextProtocol, "recorded");
    m_Flash = ScriptedFlash(256, 1);
    const auto with = [&](int selected, auto operation) {
        return [&tap_balance, selected, operation] {
            tap_balance.SelectTable(selected);
            return operation();
        };
    };
    const std::string none = testing::TempDir() + "zel_none_20MHz.txt";
    Sha1::Digest digest{};
    const struct {
        std::function<bool()> operation;
        std::string message;
    } cases[] = {
        {[&] { return tap_balance.SelectTable(2); }, "***ERROR***: table 2 is none"},
        {[&] { return tap_balance.GetTableHashFromCamera(-1, digest); }, "***ERROR***: table -1 is none"},
        {with(0, [&] { return tap_balance.LoadDataFromFile(none.c_str(), true); }),
         "***ERROR***: " + none + " can't be read"},
        {[&] { return tap_balance.LoadDataFromMasterFile(none.c_str()); }, "***ERROR***: " + none + " can't be read"},
        {with(0, [&] { return tap_balance.WriteDataToFile(); }),
         "***ERROR***: there is no table to write to " + CachePath(0)},
        {with(3, [&] { return tap_balance.WriteDataToFile(); }), "***ERROR***: select is not set to valid value"},
        {[&] { return tap_balance.FlashTest(); }, "***ERROR***: a flash of one page has none for the test"},
    };
    tap_balance.SetCameraTexts("test model", "EveryFailureIsAnErrorLine");
    for (const auto& c : cases) {
        log.Clear();
        EXPECT_FALSE(c.operation()) << c.message;
        EXPECT_EQ(log.Count(c.message, kLogError), 1) << testing::PrintToString(log.Messages("TapBalance"));
    }
}

TEST_F(TapBalanceTest, AMismatchIsLoggedWithAllThreeDigests) {
    RecordedLog log;
    TapBalance tap_balance(m_TextProtocol, "recorded");
    const TapTable table = MakeTable(4, 2);
    m_Flash.PutDirectory(2, {4, 3, 256, Bytes(20, 0x0A)}, {4, 3, 512});
    const std::string path = testing::TempDir() + "zel_mismatch.txt";
    WriteText(path, kDigest + "4 2\n" + kRows);
    EXPECT_FALSE(tap_balance.LoadDataFromFile(path.c_str(), true));
    EXPECT_EQ(log.Count("***ERROR***. hash values do not match", kLogError), 1);
    EXPECT_EQ(log.Count("camera_hash: aaaaaaaaaaaaaaaaaaaa"), 1);
    EXPECT_EQ(log.Count("hash : 123456789abcdef1011121314"), 1);
    EXPECT_EQ(log.CountContaining("data_hash : "), 1);
    std::remove(path.c_str());
}

}  // namespace
}  // namespace zel::test
