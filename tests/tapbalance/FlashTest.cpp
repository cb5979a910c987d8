// Tables coming from the camera.
#include "tests/tapbalance/TapBalanceFixture.h"

namespace zel::test {
namespace {

using testing::ElementsAre;
using testing::Pair;

class FlashTest : public TapBalanceTest {
  protected:
    // Loads both and compares them with what was installed, by way of the cache file's digests.
    void ExpectLoaded(const TapTable& first, const TapTable& second) {
        m_Flash.Install(first, second);
        m_TapBalance.ForgetFlash();
        ASSERT_TRUE(m_TapBalance.LoadDataFromCamera());
        EXPECT_TRUE(m_TapBalance.CheckDownload());
    }
};

TEST(ParseHexNumbersTest, ExactlyAsManyAsAskedFor) {
    const struct {
        const char* text;
        std::size_t count;
        bool good;
    } cases[] = {{"10 ff 0 3c", 4, true}, {"0x10 0XFF", 2, true},  {" 1  2\r\n", 2, true}, {"ffffffff", 1, true},
                 {"10 ff 0", 4, false},   {"10 ff 0 1", 3, false}, {"", 1, false},         {"100000000", 1, false},
                 {"0x", 1, false},        {"12 fg", 2, false},     {"-1", 1, false},       {"OK", 1, false},
                 {"1,2", 2, false},       {"1", 0, false},         {"", 0, true}};
    for (const auto& c : cases) {
        std::vector<std::uint32_t> numbers(c.count);
        EXPECT_EQ(ParseHexNumbers(c.text, numbers), c.good) << c.text;
    }
    std::uint32_t numbers[4];
    ASSERT_TRUE(ParseHexNumbers("10 ff 0 3c", numbers));
    EXPECT_THAT(numbers, ElementsAre(16u, 255u, 0u, 60u));
}

TEST_F(FlashTest, CommandsOfTheFirstExchanges) {
    m_Flash.Install(MakeTable(20, 2), MakeTable(5, 4));
    int rows = 0;
    int taps = 0;
    ASSERT_TRUE(m_TapBalance.GetTableConfig(&rows, &taps));
    EXPECT_THAT(std::pair(rows, taps), Pair(20, 2));
    EXPECT_THAT(m_Flash.m_Commands,
                ElementsAre("tb f s", "tb p s", "tb p n", "tb g 0", "tb r 0 8", "tb r 8 8", "tb r 10 8", "tb r 18 8",
                            "tb r 20 8", "tb r 28 8", "tb r 30 8", "tb r 38 1"));
    m_Flash.m_Commands.clear();
    float mv = 0;
    float gains[2] = {};
    ASSERT_TRUE(m_TapBalance.GetTableData(1, &mv, gains));
    EXPECT_THAT(m_Flash.m_Commands, ElementsAre("tb g 1", "tb r 16 8", "tb r 1e 4"));
    EXPECT_EQ(mv, MakeTable(20, 2).Millivolts()[1]);
    EXPECT_EQ(gains[1], MakeTable(20, 2).Gains(1)[1]);
    m_Flash.m_Commands.clear();
    ASSERT_TRUE(m_TapBalance.GetTableData(2, &mv, gains));
    EXPECT_THAT(m_Flash.m_Commands, ElementsAre("tb r 22 8", "tb r 2a 4")) << "the page is in the buffer";
}

// 10 bytes into page 1, rows of 20 bytes: row 12 begins at byte 250 of a 256-byte page.
TEST_F(FlashTest, ARowThatCrossesAPageIsReadByteByByte) {
    const TapTable table = MakeTable(20, 4);
    m_Flash.Install(table, table);
    ASSERT_TRUE(m_TapBalance.GetTableConfig(nullptr, nullptr));
    m_Flash.m_Commands.clear();
    float mv = 0;
    float gains[4] = {};
    ASSERT_TRUE(m_TapBalance.GetTableData(12, &mv, &gains[0], &gains[1], &gains[2], &gains[3]));
    EXPECT_EQ(mv, table.Millivolts()[12]);
    for (int tap = 0; tap < 4; ++tap) EXPECT_EQ(gains[tap], table.Gains(tap)[12]);
    std::vector<std::string> expected{"tb g 1"};
    for (const char* offset : {"fa", "fb", "fc", "fd", "fe", "ff"})
        expected.push_back(std::string("tb r ") + offset + " 1");
    expected.push_back("tb g 2");
    for (const char* offset : {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "a", "b", "c", "d"}) {
        expected.push_back(std::string("tb r ") + offset + " 1");
    }
    EXPECT_EQ(m_Flash.m_Commands, expected);
}

TEST_F(FlashTest, TablesOfEveryShapeOverPagesOfEverySize) {
    for (const std::size_t page_size : {1u, 7u, 57u, 64u, 264u, 4096u}) {
        for (const int rows : {4, 21, 200}) {
            SCOPED_TRACE(std::to_string(page_size) + " bytes, " + std::to_string(rows) + " rows");
            m_Flash = ScriptedFlash(page_size, 16384 / page_size);
            ExpectLoaded(MakeTable(rows, 2), MakeTable(rows + 1, 4, 3));
        }
    }
}

// Page queries, directory, and each table: pages, rows in pieces of eight bytes, rows across pages in bytes.
TEST_F(FlashTest, AWholeDownloadTakesTheExchangesThatItNeeds) {
    for (const int taps : {2, 4}) {
        for (const int rows : {24, 100}) {
            const TapTable table = MakeTable(rows, taps);
            m_Flash = ScriptedFlash(264, 64);
            m_Flash.Install(table, table);
            m_TapBalance.ForgetFlash();
            ASSERT_TRUE(m_TapBalance.LoadDataFromCamera());
            const int row_bytes = 4 * (taps + 1);
            int needed = 3 + 1 + 8;
            int page = 0;
            for (int i = 0; i < 2 * rows; ++i) {
                const int start = 264 + 10 + i * row_bytes + (i < rows ? 0 : 6);
                const int last_page = (start + row_bytes - 1) / 264;
                needed += start / 264 != last_page ? row_bytes : (row_bytes + 7) / 8;
                needed += last_page - page;
                page = last_page;
            }
            const int used = static_cast<int>(m_Flash.m_Commands.size());
            std::printf("%d taps, %d rows: %d exchanges, %d needed\n", taps, rows, used, needed);
            EXPECT_EQ(used, needed);
        }
    }
}

TEST_F(FlashTest, ReadsAreRetriedOnceWhateverWentWrong) {
    m_Flash.Install(MakeTable(20, 2), MakeTable(20, 2));
    for (const char* reply : {"", "ERR busy", "nonsense", "1 2 3", "1 2 3 4 5 6 7 100", "1 2 3 4 5 6 7 8 9"}) {
        for (const int failures : {1, 2}) {
            int left = failures;
            m_Flash.m_Fault = [&](const std::string& command) -> std::optional<std::string> {
                if (command != "tb r 22 8" || left == 0) return std::nullopt;
                --left;
                return reply;
            };
            EXPECT_EQ(m_TapBalance.LoadDataFromCamera(), failures == 1) << reply;
            EXPECT_EQ(left, 0);
        }
    }
}

TEST_F(FlashTest, AFaultInTheMiddleKeepsTheTablesThatWereThere) {
    const TapTable good = MakeTable(20, 2);
    LoadAndEnable(good, good);
    const TapTables before[] = {m_TapBalance.TablesFor(0), m_TapBalance.TablesFor(1)};
    m_Flash.Install(MakeTable(20, 2, 5), MakeTable(20, 2, 6));
    for (const char* lost : {"tb g 1", "tb g 2"}) {  // in the first table, in the second
        m_Flash.m_Fault = [&](const std::string& command) -> std::optional<std::string> {
            if (command == lost) return "";
            return std::nullopt;
        };
        EXPECT_FALSE(m_TapBalance.LoadDataFromCamera());
        for (const int select : {0, 1}) EXPECT_EQ(m_TapBalance.TablesFor(select).owner, before[select].owner) << lost;
    }
    m_Flash.m_Fault = nullptr;
    EXPECT_TRUE(m_TapBalance.LoadDataFromCamera());
    for (const int select : {0, 1}) EXPECT_NE(m_TapBalance.TablesFor(select).owner, before[select].owner);
}

// A silent camera costs one budget, not one for each row.
TEST_F(FlashTest, ASilentCameraEndsTheDownloadSoon) {
    m_Flash.Install(MakeTable(20, 2), MakeTable(20, 2));
    for (const char* last_answered : {"tb", "tb f s", "tb g 0", "tb r 16 8"}) {
        bool silent = false;
        m_Flash.m_Fault = [&](const std::string& command) -> std::optional<std::string> {
            if (silent || std::string_view(last_answered) == "tb") return "";
            silent = command == last_answered;
            return std::nullopt;
        };
        m_TapBalance.ForgetFlash();
        const std::uint32_t start = m_Clock.Elapsed();
        EXPECT_FALSE(m_TapBalance.LoadDataFromCamera()) << last_answered;
        EXPECT_LT(m_Clock.Elapsed() - start, 12000u) << last_answered;
    }
    EXPECT_FALSE(m_TapBalance.Enable(true));
}

struct Progress {
    std::vector<std::pair<int, int>> rows;
    std::vector<int> tables;
};

TEST_F(FlashTest, ProgressIsReportedRowByRow) {
    m_Flash.Install(MakeTable(4, 2), MakeTable(5, 2));
    Progress progress;
    m_TapBalance.SetPercentCompleteCallback(
        [](void* context, int done, int total) { static_cast<Progress*>(context)->rows.emplace_back(done, total); },
        &progress);
    const auto begins = [](void* context, int select) { static_cast<Progress*>(context)->tables.push_back(select); };
    ASSERT_TRUE(m_TapBalance.LoadDataFromCamera(begins, &progress));
    EXPECT_THAT(progress.tables, ElementsAre(0, 1));
    EXPECT_THAT(progress.rows, ElementsAre(Pair(0, 4), Pair(1, 4), Pair(2, 4), Pair(3, 4), Pair(0, 5), Pair(1, 5),
                                           Pair(2, 5), Pair(3, 5), Pair(4, 5)));
}

TEST_F(FlashTest, BoundsOfAGoodRowBelongToIt) {
    const std::pair<TapRow, int> rows[] = {{{5000.0f, {2.0f, 0.0f}}, 1}, {{0.0f, {0.0f, 2.0f}}, 1},
                                           {{5000.1f, {1.0f, 1.0f}}, 2}, {{10.0f, {2.0001f, 1.0f}}, 2},
                                           {{10.0f, {1.0f, -0.1f}}, 2},  {{std::nanf(""), {1.0f, 1.0f}}, 2}};
    for (const auto& [row, readings] : rows) {
        TapTable table = MakeTable(10, 2);
        table.SetRow(3, row);
        m_Flash.Install(table, MakeTable(10, 2));
        m_Flash.m_Commands.clear();
        EXPECT_TRUE(m_TapBalance.LoadDataTableFromCamera(0));
        EXPECT_EQ(m_Flash.Count("tb r 2e 8"), readings) << row.millivolts << " " << row.gains[0];
    }
}

// On purpose: the second reading of a bad row is stored whatever it holds.
TEST_F(FlashTest, TheSecondReadingOfABadRowIsTaken) {
    TapTable table = MakeTable(10, 2);
    m_Flash.Install(table, table);
    int readings = 0;
    m_Flash.m_Fault = [&](const std::string& command) -> std::optional<std::string> {
        if (command != "tb r 2e 8" || ++readings > 1) return std::nullopt;
        return "0 0 c8 42 0 0 c8 42";  // 100 mV, a gain of 100
    };
    EXPECT_TRUE(m_TapBalance.LoadDataFromCamera());
    EXPECT_EQ(readings, 2);
    EXPECT_TRUE(m_TapBalance.CheckDownload()) << "the good second reading counts";
    table.SetRow(3, {100.0f, {3.0f, 3.0f}});
    m_Flash.Install(table, table);
    EXPECT_TRUE(m_TapBalance.LoadDataFromCamera());
    EXPECT_TRUE(m_TapBalance.CheckDownload()) << "as bad as it lies in the flash";
}

TEST_F(FlashTest, ADamagedDownloadIsNotUsed) {
    m_Flash.Install(MakeTable(10, 2), MakeTable(10, 2));
    m_Flash.m_Fault = [&](const std::string& command) -> std::optional<std::string> {
        if (command != "tb r 2e 8") return std::nullopt;
        return "0 0 c8 42 0 0 80 3f";  // 100 mV, a gain of 1
    };
    EXPECT_TRUE(m_TapBalance.LoadDataFromCamera());
    EXPECT_FALSE(m_TapBalance.CheckDownload());
    EXPECT_FALSE(m_TapBalance.Enable(true));
}

TEST_F(FlashTest, RowsAndSelectionsOutsideAreRefused) {
    float mv = 7;
    float gains[4] = {};
    EXPECT_FALSE(m_TapBalance.GetTableData(0, &mv, gains)) << "not configured";
    m_Flash.Install(MakeTable(10, 2), MakeTable(10, 4));
    ASSERT_TRUE(m_TapBalance.GetTableConfig(nullptr, nullptr));
    for (const int row : {-1, 10, 1 << 30}) EXPECT_FALSE(m_TapBalance.GetTableData(row, &mv, gains)) << row;
    EXPECT_FALSE(m_TapBalance.GetTableData(0, &mv, gains, gains, gains, gains)) << "the four-tap form of two taps";
    EXPECT_TRUE(m_TapBalance.GetTableData(0, nullptr, nullptr));
    EXPECT_TRUE(m_TapBalance.SelectTable(1));
    EXPECT_FALSE(m_TapBalance.GetTableData(0, &mv, gains, gains)) << "the two-tap form of four taps";
    EXPECT_EQ(mv, 7);
    for (const int select : {2, -1}) {
        EXPECT_FALSE(m_TapBalance.SelectTable(select));
        EXPECT_FALSE(m_TapBalance.GetTableConfig(nullptr, nullptr));
        EXPECT_FALSE(m_TapBalance.GetTableData(0, &mv, gains));
        EXPECT_FALSE(m_TapBalance.LoadDataTableFromCamera(select));
        EXPECT_FALSE(m_TapBalance.WriteDataToFile());
        EXPECT_FALSE(m_TapBalance.LoadDataFromFile("x", false));
        EXPECT_FALSE(m_TapBalance.PrintTable());
        Sha1::Digest digest{};
        EXPECT_FALSE(m_TapBalance.GetTableHashFromCamera(select, digest));
    }
}

}  // namespace
}  // namespace zel::test
