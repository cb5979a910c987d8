// Tables coming from the camera.
#include "tests/tapbalance/TapBalanceFixture.h"

namespace zel::test {
namespace {

using testing::ElementsAre;
using testing::Pair;

using FlashTest = TapBalanceTest;

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
    ASSERT_TRUE(m_TapBalance.GetTableData(1, nullptr, nullptr));
    EXPECT_THAT(m_Flash.m_Commands, ElementsAre("tb g 1", "tb r 16 8", "tb r 1e 4"));
}

TEST_F(FlashTest, TablesOfEveryShapeOverPagesOfEverySize) {
    for (const std::size_t page_size : {1u, 7u, 57u, 64u, 264u, 4096u}) {
        for (const int rows : {4, 21, 200}) {
            SCOPED_TRACE(std::to_string(page_size) + " bytes, " + std::to_string(rows) + " rows");
            m_Flash = ScriptedFlash(page_size, 16384 / page_size);
            m_Flash.Install(MakeTable(rows, 2), MakeTable(rows + 1, 4, 3));
            m_TapBalance.ForgetFlash();
            ASSERT_TRUE(m_TapBalance.LoadDataFromCamera());
            EXPECT_TRUE(m_TapBalance.CheckDownload());
        }
    }
}

TEST_F(FlashTest, ReadsAreRetriedOnceWhateverWentWrong) {
    m_Flash.Install(MakeTable(20, 2), MakeTable(20, 2));
    for (const char* reply : {"", "ERR busy", "nonsense", "1 2 3", "1 2 3 4 5 6 7 100", "1 2 3 4 5 6 7 8 9",
                              "1 2 3 4 5 6 7 -1", "1 2 3 4 5 6 7 100000000"}) {
        for (const int failures : {1, 2}) {
            m_Flash.Fail("tb r 22 8", reply, failures);
            m_Flash.m_Commands.clear();
            EXPECT_EQ(m_TapBalance.LoadDataFromCamera(), failures == 1) << reply;
            EXPECT_GE(m_Flash.Count("tb r 22 8"), 2);
        }
    }
}

TEST_F(FlashTest, AFaultInTheMiddleKeepsTheTablesThatWereThere) {
    const TapTable good = MakeTable(20, 2);
    LoadAndEnable(good, good);
    const TapTables before[] = {m_TapBalance.TablesFor(0), m_TapBalance.TablesFor(1)};
    m_Flash.Install(MakeTable(20, 2, 5), MakeTable(20, 2, 6));
    for (const char* lost : {"tb g 1", "tb g 2"}) {  // in the first table, in the second
        m_Flash.Fail(lost, "");
        EXPECT_FALSE(m_TapBalance.LoadDataFromCamera());
        for (const int select : {0, 1}) EXPECT_EQ(m_TapBalance.TablesFor(select).owner, before[select].owner) << lost;
    }
}

// A silent camera costs one budget, not one for each row.
TEST_F(FlashTest, ASilentCameraEndsTheDownloadSoon) {
    m_Flash.Install(MakeTable(20, 2), MakeTable(20, 2));
    for (const char* last_answered : {"tb f s", "tb g 0", "tb r 16 8"}) {
        bool silent = false;
        m_Flash.m_Fault = [&](const std::string& command) -> std::optional<std::string> {
            if (silent) return "";
            silent = command == last_answered;
            return std::nullopt;
        };
        m_TapBalance.ForgetFlash();
        const std::uint32_t start = m_Clock.Elapsed();
        EXPECT_FALSE(m_TapBalance.LoadDataFromCamera()) << last_answered;
        EXPECT_LT(m_Clock.Elapsed() - start, 12000u) << last_answered;
    }
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
    m_Flash.Fail("tb r 2e 8", "0 0 c8 42 0 0 c8 42", 1);  // 100 mV, a gain of 100
    EXPECT_TRUE(m_TapBalance.LoadDataFromCamera());
    EXPECT_TRUE(m_TapBalance.CheckDownload()) << "the good second reading counts";
    table.SetRow(3, {100.0f, {3.0f, 3.0f}});
    m_Flash.Install(table, table);
    EXPECT_TRUE(m_TapBalance.LoadDataFromCamera() && m_TapBalance.CheckDownload()) << "as bad as it lies in the flash";
}

TEST_F(FlashTest, ADamagedDownloadIsNotUsed) {
    m_Flash.Install(MakeTable(10, 2), MakeTable(10, 2));
    m_Flash.Fail("tb r 2e 8", "0 0 c8 42 0 0 80 3f");  // 100 mV, a gain of 1
    EXPECT_TRUE(m_TapBalance.LoadDataFromCamera());
    EXPECT_FALSE(m_TapBalance.CheckDownload());
    EXPECT_FALSE(m_TapBalance.Enable(true));
}

TEST_F(FlashTest, RowsAndSelectionsOutsideAreRefused) {
    float mv = 7;
    float gains[4] = {};
    m_Flash.Install(MakeTable(10, 2), MakeTable(10, 4));
    ASSERT_TRUE(m_TapBalance.GetTableConfig(nullptr, nullptr));
    for (const int row : {-1, 10, 1 << 30}) EXPECT_FALSE(m_TapBalance.GetTableData(row, &mv, gains)) << row;
    EXPECT_TRUE(m_TapBalance.SelectTable(1));
    EXPECT_FALSE(m_TapBalance.GetTableData(0, &mv, gains, gains)) << "the two-tap form of four taps";
    EXPECT_EQ(mv, 7);
    for (const int select : {2, -1}) {
        EXPECT_FALSE(m_TapBalance.SelectTable(select));
        EXPECT_FALSE(m_TapBalance.GetTableData(0, &mv, gains));
        EXPECT_FALSE(m_TapBalance.LoadDataTableFromCamera(select));
        EXPECT_FALSE(m_TapBalance.WriteDataToFile());
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

}  // namespace
}  // namespace zel::test
