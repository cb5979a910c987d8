// Directories and files that lie: each gives its message, and nothing is corrected with it.
#include "tests/support/RecordedLog.h"
#include "tests/tapbalance/TapBalanceFixture.h"

namespace zel::test {
namespace {

TEST_F(TapBalanceTest, ALyingFlashEndsTheDownloadWithItsMessage) {
    static constexpr TableEntry good{20, 3, 256};
    const struct {
        const char* message;
        TableEntry first = good;
        const char *command = "nothing fails", *reply = "";
        int tables = 2;
    } cases[] = {
        {"page size 0 is out of bounds", good, "tb p s", "0"},
        {"the reply to \"tb p s\" is no number: \"80000000\"", good, "tb p s", "80000000"},
        {"no reply to \"tb f s\"", good, "tb f s"},
        {"number of pages 268435455 is out of bounds", good, "tb p n", "fffffff"},
        {"the camera refused \"tb g 0\": \"ERR\"", good, "tb g 0", "ERR"},
        {"\"tb r 8 8\" failed, retry failed. Giving up", good, "tb r 8 8"},
        {"Invalid table data.", good, "nothing fails", "", 255},
        {"20 mhz - rows (0) < 0  || num_taps (2) < 0", {0, 3, 256}},
        {"20 mhz - rows (20) < 0  || num_taps (-1) < 0", {20, 0, 256}},
        {"rows:1001 (<= 0 || > 1000) || num_taps:2 (<= 0 || > 4) is out of bounds returning false", {1001, 3, 256}},
        {"rows:20 (<= 0 || > 1000) || num_taps:5 (<= 0 || > 4) is out of bounds returning false", {20, 6, 256}},
        {"m_Numcols is invalid", {20, 4, 256}},
        {"table 0 has 3 rows, a line needs 4", {3, 3, 256}},
        {"12 bytes at offset 0x00003ff8 lie outside the flash (64 x 256)", {20, 3, 64 * 256 - 8}},
        {"12 bytes at offset 0xffffffff lie outside the flash (64 x 256)", {20, 3, ~0u}}};
    m_Flash.Put(256, MakeTable(20, 2).FlashBytes());
    for (const auto& [message, first, command, reply, tables] : cases) {
        RecordedLog log;
        TapBalance tap_balance(m_TextProtocol, "recorded");
        m_Flash.PutDirectory(tables, first, good);
        m_Flash.Fail(command, reply);
        EXPECT_FALSE(tap_balance.LoadDataFromCamera());
        EXPECT_EQ(log.Count(std::string("***ERROR***: ") + message, kLogError), 1) << message;
        EXPECT_FALSE(tap_balance.Enable(true) || tap_balance.TablesFor(0) || tap_balance.TablesFor(1));
    }
}

const std::string kDigest = "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20\n";
const std::string kRows = "1 1 1 0 0\n2 1 1 0 0\n3 1 1 0 0\n4 1 1 0 0\n";

// As a cache file, and where the rest is a table also as a master file.
TEST_F(TapBalanceTest, ABadFileIsRefusedWithItsMessage) {
    const std::pair<std::string, const char*> files[] = {
        {"", "***HASH PARSE ERROR***. Expected 20 bytes data and got 0"},
        {"1 2 256 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20\n4 2\n" + kRows,
         "***HASH PARSE ERROR***. Expected 20 bytes data and got 2"},
        {kDigest, "***PARSE ERROR***. Row:0 Expected 2 cols of data and got 0"},
        {kDigest + "4 3\n" + kRows, "***PARSE ERROR***. 3 taps: a table has 2 or 4"},
        {kDigest + "1001 2\n" + kRows, "***PARSE ERROR***. 1001 rows: a table has 1 to 1000"},
        {kDigest + "5 2\n" + kRows + "5 1 1", "***PARSE ERROR***. Row:5 Expected 5 cols of data and got 3"},
        {kDigest + "4 2\n1 1 -inf 0 0\n" + kRows, "***PARSE ERROR***. Row:1 holds a value that no table can have"},
        {kDigest + std::string("4 2\n1 \0 1 0 0\n", 13), "***PARSE ERROR***. Row:1 Expected 5 cols of data and got 1"},
        {kDigest + "3 2\n" + kRows.substr(0, 30), "***ERROR***: table 0 has 3 rows, a line needs 4"}};
    const std::string path = testing::TempDir() + "zel_bad_20MHz.txt";
    for (const auto& [text, message] : files) {
        for (const bool master : {false, true}) {
            if (master && !text.starts_with(kDigest)) continue;
            RecordedLog log;
            TapBalance tap_balance(m_TextProtocol, "recorded");
            WriteText(path, master ? text.substr(kDigest.size()) : text);
            EXPECT_FALSE(master ? tap_balance.LoadDataFromMasterFile(path.c_str())
                                : tap_balance.LoadDataFromFile(path.c_str(), false));
            EXPECT_EQ(log.Count(message, kLogError), 1) << message;
        }
    }
    std::remove(path.c_str());
}

// What is compared, what ends the correction, and the lines that tell it.
TEST_F(TapBalanceTest, TheLogTellsWhyNothingIsCorrected) {
    RecordedLog log;
    TapBalance tap_balance(m_TextProtocol, "recorded");
    unsigned short pixel = 5;
    EXPECT_FALSE(tap_balance.Enable(true));
    EXPECT_TRUE(tap_balance.TranslatePixels(1, 1, 2, 0, &pixel));
    m_Flash.Install(MakeTable(20, 2), MakeTable(20, 2));
    ASSERT_TRUE(tap_balance.LoadDataFromCamera() && tap_balance.Enable(true));
    Sha1::Digest tens;
    tens.fill(0x0A);
    m_Flash.PutDirectory(2, {4, 3, 256}, {4, 3, 512, tens});
    tap_balance.SelectTable(1);
    const std::string path = testing::TempDir() + "zel_unchecked.txt";
    WriteText(path, kDigest + "4 2\n" + kRows);
    EXPECT_FALSE(tap_balance.LoadDataFromFile(path.c_str(), true));
    tap_balance.SelectTable(0);
    m_Flash.Fail("tb", "ERR");
    EXPECT_FALSE(tap_balance.LoadDataFromFile(path.c_str(), true));
    EXPECT_FALSE(tap_balance.TranslatePixels(1, 1, 2, 0, &pixel));
    EXPECT_EQ(pixel, 5);
    EXPECT_TRUE(tap_balance.DataFault());
    EXPECT_FALSE(tap_balance.Enable(true) || tap_balance.Enabled());
    const std::string asked = "TapBalance::LoadDataFromFile(filename:" + path;
    const std::string lines[] = {"enable:1  m_DataValid:0 m_DataFault:0",
                                 "TapBalance::TranslatePixels() - m_Enabled is false\n",
                                 "***ERROR***. hash values do not match",
                                 "camera_hash: aaaaaaaaaaaaaaaaaaaa",
                                 "hash : 123456789abcdef1011121314",
                                 asked + ") ***ERROR***. GetTableHashFromCamera(select:0) failed",
                                 "**** DATA FAULT ****",
                                 "m_DataFault == true"};
    for (const std::string& line : lines) EXPECT_EQ(log.Count(line), 1) << line;
    std::remove(path.c_str());
}

}  // namespace
}  // namespace zel::test
