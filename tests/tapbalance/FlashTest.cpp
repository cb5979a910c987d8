// Tables coming from the camera.
#include "tests/tapbalance/TapBalanceFixture.h"

namespace zel::test {
namespace {

using testing::ElementsAre;
using FlashTest = TapBalanceTest;

TEST_F(FlashTest, CommandsOfTheFirstExchanges) {
    m_Flash.Install(MakeTable(20, 2), MakeTable(5, 4));
    int rows = 0, taps = 0;
    EXPECT_TRUE(m_TapBalance.GetTableConfig(&rows, &taps) && rows == 20 && taps == 2);
    EXPECT_THAT(m_Flash.m_Commands,
                ElementsAre("tb f s", "tb p s", "tb p n", "tb g 0", "tb r 0 8", "tb r 8 8", "tb r 10 8", "tb r 18 8",
                            "tb r 20 8", "tb r 28 8", "tb r 30 8", "tb r 38 1"));
    m_Flash.m_Commands.clear();
    ASSERT_TRUE(m_TapBalance.GetTableData(1, nullptr, nullptr));
    EXPECT_THAT(m_Flash.m_Commands, ElementsAre("tb g 1", "tb r 16 8", "tb r 1e 4"));
}

// Each page is loaded once, in the order of the rows, whether they end with it or cross into the next.
TEST_F(FlashTest, TablesOfEveryShapeOverPagesOfEverySize) {
    for (const int page_size : {1, 7, 57, 64, 264, 4096}) {
        for (const int rows : {4, 21, 200}) {
            SCOPED_TRACE(std::to_string(page_size) + " bytes, " + std::to_string(rows) + " rows");
            m_Flash = ScriptedFlash(static_cast<std::size_t>(page_size), 16384u / static_cast<unsigned>(page_size));
            m_Flash.Install(MakeTable(rows, 2), MakeTable(rows + 1, 4, 3));
            m_TapBalance.ForgetFlash();
            ASSERT_TRUE(m_TapBalance.LoadDataFromCamera());
            const int start = std::max(page_size, 57) + 10, end = start + 12 * rows + 6 + 20 * (rows + 1);
            if (page_size >= 57) {
                EXPECT_EQ(m_Flash.Count("tb g"), 1 + (end - 1) / page_size - start / page_size + 1);
            }
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
            EXPECT_EQ(m_TapBalance.LoadDataFromCamera(), failures == 1) << reply;
        }
    }
}

// And a silent camera costs one budget, not one for each row.
TEST_F(FlashTest, AFaultInTheMiddleKeepsTheTablesThatWereThere) {
    LoadAndEnable(MakeTable(20, 2), MakeTable(20, 2));
    const TapTables before[] = {m_TapBalance.TablesFor(0), m_TapBalance.TablesFor(1)};
    m_Flash.Install(MakeTable(20, 2, 5), MakeTable(20, 2, 6));
    for (const char* lost : {"tb p s", "tb g 0", "tb g 1", "tb r 16", "tb g 2"}) {  // the last in the second table
        m_Flash.m_Fault = [&, silent = false](const std::string& command) mutable {
            silent = silent || command.starts_with(lost);
            return silent ? std::optional<std::string>("") : std::nullopt;
        };
        m_TapBalance.ForgetFlash();
        const std::uint32_t start = m_Clock.Elapsed();
        EXPECT_FALSE(m_TapBalance.LoadDataFromCamera());
        EXPECT_LT(m_Clock.Elapsed() - start, 12000u) << lost;
        for (const int select : {0, 1}) EXPECT_EQ(m_TapBalance.TablesFor(select).owner, before[select].owner) << lost;
    }
}

// On purpose: the second reading of a bad row is stored whatever it holds. A good row is not read twice: what came
// damaged is found by its digest.
TEST_F(FlashTest, TheSecondReadingOfABadRowIsTaken) {
    TapTable table = MakeTable(10, 2);
    m_Flash.Install(table, table);
    m_Flash.Fail("tb r 2e 8", "0 0 c8 42 0 0 c8 42", 1);  // 100 mV, a gain of 100
    EXPECT_TRUE(m_TapBalance.LoadDataFromCamera());
    EXPECT_TRUE(m_TapBalance.CheckDownload()) << "the good second reading counts";
    m_Flash.Fail("tb r 2e 8", "0 0 c8 42 0 0 80 3f", 1);  // 100 mV, a gain of 1
    EXPECT_TRUE(m_TapBalance.LoadDataFromCamera());
    EXPECT_FALSE(m_TapBalance.CheckDownload() || m_TapBalance.Enable(true)) << "damaged on the way";
    table.SetRow(3, {100.0f, {3.0f, 3.0f}});
    m_Flash.Install(table, table);
    EXPECT_TRUE(m_TapBalance.LoadDataFromCamera() && m_TapBalance.CheckDownload()) << "as bad as it lies in the flash";
}

TEST_F(FlashTest, RowsAndSelectionsOutsideAreRefused) {
    float mv = 7, gains[4] = {};
    m_Flash.Install(MakeTable(10, 2), MakeTable(10, 4));
    ASSERT_TRUE(m_TapBalance.GetTableConfig(nullptr, nullptr));
    for (const int row : {-1, 10, 1 << 30}) EXPECT_FALSE(m_TapBalance.GetTableData(row, &mv, gains)) << row;
    EXPECT_TRUE(m_TapBalance.SelectTable(1));
    EXPECT_FALSE(m_TapBalance.GetTableData(0, &mv, gains, gains)) << "the two-tap form of four taps";
    for (const int none : {2, -1}) {
        EXPECT_FALSE(m_TapBalance.SelectTable(none) || m_TapBalance.GetTableData(0, &mv, gains));
        EXPECT_FALSE(m_TapBalance.LoadDataTableFromCamera(none) || m_TapBalance.WriteDataToFile());
    }
    EXPECT_EQ(mv, 7);
}

}  // namespace
}  // namespace zel::test
