// Tables going to the camera: what is written reads back with the same digest.
#include "tests/tapbalance/TapBalanceFixture.h"

namespace zel::test {
namespace {

struct WritingTest : TapBalanceTest {
    bool Enter(int select, const TapTable& table) {
        bool taken = m_TapBalance.SetTableConfig(select, table.Rows(), table.Taps());
        m_TapBalance.SelectTable(select);
        for (int row = 0; row < table.Rows() && taken; ++row) {
            const TapRow values = table.Row(row);
            taken = m_TapBalance.SetTableData(row, values.millivolts, values.gains.data());
        }
        return taken;
    }
};

TEST_F(WritingTest, WhatIsWrittenReadsBackWithTheSameDigest) {
    for (const int taps : {2, 4}) {
        for (const std::size_t page_size : {64u, 264u}) {
            const ScriptedFlash empty(page_size, 65536 / page_size);
            m_Flash = empty;
            m_TapBalance.ForgetFlash();
            LoadAndEnable(MakeTable(30, taps, 9), MakeTable(45, taps, 9));
            m_Flash = empty;
            m_Flash.Put(57, {1, 2, 3});  // behind the directory
            const TapTable first = MakeTable(30, taps), second = MakeTable(45, taps, 4);
            ASSERT_TRUE(Enter(1, second) && Enter(0, first)) << "in any order";
            ASSERT_TRUE(m_TapBalance.WriteTableConfigToCamera() && m_TapBalance.WriteDataToCamera());
            const TapTables corrected = m_TapBalance.TablesFor(1);
            ScriptedFlash expected = empty;
            expected.PutTables(page_size, page_size - first.FlashBytes().size() % page_size, first, second);
            expected.Put(57, {1, 2, 3});
            EXPECT_EQ(m_Flash.Content(), expected.Content());
            EXPECT_TRUE(m_TapBalance.LoadDataFromCamera() && m_TapBalance.CheckDownload());
            EXPECT_TRUE(std::ranges::equal(corrected.lut[1], m_TapBalance.TablesFor(1).lut[1]))
                << "what was written is corrected with at once";
        }
    }
}

TEST_F(WritingTest, NonsenseIsRefusedBeforeTheCameraIsTouched) {
    m_Flash = ScriptedFlash(256, 8);
    EXPECT_FALSE(m_TapBalance.SetTableConfig(0, 100, 4)) << "2000 bytes on seven pages";
    const int shapes[][3] = {{-1, 10, 2}, {2, 10, 2}, {0, 0, 2}, {0, 1001, 2}, {0, 10, 3}, {0, 10, 5}};
    for (const auto& [table, rows, taps] : shapes)
        EXPECT_FALSE(m_TapBalance.SetTableConfig(table, rows, taps)) << rows << " " << taps;
    const float good[2] = {1, 1}, nan = std::nanf("");
    EXPECT_FALSE(m_TapBalance.SetTableData(0, 1, good)) << "not configured";
    ASSERT_TRUE(m_TapBalance.SetTableConfig(0, 10, 2));
    EXPECT_FALSE(m_TapBalance.WriteDataToCamera()) << "table 1 is missing";
    // What is a good row has a test of its own.
    const std::pair<float, std::array<float, 2>> rows[] = {{nan, {1, 1}}, {1, {nan, 1}}, {1, {1, 2.5f}}};
    for (const auto& [mv, gains] : rows) EXPECT_FALSE(m_TapBalance.SetTableData(0, mv, gains.data())) << mv;
    EXPECT_FALSE(m_TapBalance.SetTableData(-1, 1, good) || m_TapBalance.SetTableData(10, 1, good));
    EXPECT_FALSE(m_TapBalance.SetTableData(0, 1, nullptr));
    EXPECT_EQ(m_Flash.Count("tb w") + m_Flash.Count("tb s"), 0);
}

TEST_F(WritingTest, ARefusedWriteIsAFailure) {
    ASSERT_TRUE(Enter(0, MakeTable(10, 2)) && Enter(1, MakeTable(10, 2)));
    for (const char* refused : {"tb p c", "tb w 10 ", "tb w 70 ", "tb s 1", "tb s 2"}) {
        m_Flash.Fail(refused, "ERR");
        EXPECT_FALSE(m_TapBalance.WriteDataToCamera()) << refused;
    }
    m_Flash.Fail("tb w", "", 1);
    EXPECT_TRUE(m_TapBalance.WriteDataToCamera()) << "a single loss is repeated";
}

TEST_F(WritingTest, TheFlashTestLeavesTheFlashAsItWas) {
    m_Flash.Put(63 * 256, {9, 8, 7});
    const Bytes before = m_Flash.Content();
    EXPECT_TRUE(m_TapBalance.FlashTest()) << "an empty flash";
    EXPECT_EQ(m_Flash.Content(), before);
    EXPECT_EQ(m_Flash.Count("tb s 3f"), 3);
    m_Flash.Fail("tb s 3f", "OK", 1);  // but nothing was stored
    EXPECT_FALSE(m_TapBalance.FlashTest());
    EXPECT_EQ(m_Flash.Content(), before);
    m_Flash.m_Fault = nullptr;
    m_Flash.PutDirectory(2, {10, 3, 256}, {14, 3, 63 * 256 - 160});
    EXPECT_FALSE(m_TapBalance.FlashTest()) << "a table ends in the last page";
}

}  // namespace
}  // namespace zel::test
