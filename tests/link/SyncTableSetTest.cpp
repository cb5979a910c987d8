#include <cstring>

#include "tests/link/SyncTableFixture.h"

namespace zel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SyncTableSetTest : public SyncTableFixture {
  protected:
    // A buffer for the block form: the first word, six bytes that are not read, and the data.
    static Bytes BlockBuffer(int first_word, const Bytes& data) {
        return LittleEndian(first_word) + Bytes(6, 0xEE) + data;
    }
    bool SetBlock(int index, const Bytes& buffer) {
        return m_Table.Set(index, buffer.data(), static_cast<int>(buffer.size()) - SyncTable::kBlockDataOffset);
    }
};

TEST_F(SyncTableSetTest, ValueGoesOverTheWireLittleEndian) {
    m_Camera.QueueReply(SetReply());
    EXPECT_TRUE(m_Table.Set(EXPOSURE_TIME, static_cast<int>(0x81020304u)));
    EXPECT_THAT(m_Camera.Sent(), ElementsAre(Bytes{0, 0, 11, 78, 0, 8, 9, 0, 0, 0, 0x04, 0x03, 0x02, 0x81}));
    EXPECT_EQ(static_cast<int>(0x81020304u), Target(EXPOSURE_TIME));
    EXPECT_EQ(0, CachedValue(EXPOSURE_TIME)) << "the value is what was read last";
    EXPECT_EQ(0u, m_Camera.UnreadBytes());
}

TEST_F(SyncTableSetTest, WritesAreNotRetriedAndTheTargetStays) {
    m_Camera.QueueReplies(2, ExceptionReply(0x11));
    EXPECT_FALSE(m_Table.Set(VGA_GAIN, 5));
    EXPECT_EQ(1, m_Camera.Exchanges());
    EXPECT_EQ(5, Target(VGA_GAIN));

    m_Camera.SetShortSend(1);
    EXPECT_FALSE(m_Table.Set(VGA_GAIN, 6));
    EXPECT_EQ(2, m_Camera.Exchanges());
    EXPECT_EQ(6, Target(VGA_GAIN));
    EXPECT_EQ(0u, m_Clock.Elapsed());
}

TEST_F(SyncTableSetTest, OnlyHBinStartsAtOne) {
    for (int i = 0; i < SYNC_TABLE_SELECT_MAX; ++i) {
        EXPECT_EQ(i == 15 ? 1 : 0, Target(i)) << i;
        EXPECT_EQ(i == 15 ? 1 : 0, CachedValue(i)) << i;
        EXPECT_EQ(0x02, m_Table.GetFlags(i)) << i;
    }
    EXPECT_TRUE(m_Table.GetTarget(H_BIN, nullptr));
    EXPECT_THAT(m_Camera.Sent(), IsEmpty());
}

TEST_F(SyncTableSetTest, HostOnlyEntriesAreStoredWithoutTraffic) {
    m_Table.SetFlags(OB_LEVEL, SYNC_TABLE_FLAG_USE_TARGET_VALUE | SYNC_TABLE_FLAG_LOCKED);
    EXPECT_TRUE(m_Table.Set(OB_LEVEL, 44));
    EXPECT_EQ(44, Target(OB_LEVEL));
    EXPECT_EQ(44, CachedValue(OB_LEVEL));
    EXPECT_TRUE(SetBlock(OB_LEVEL, BlockBuffer(45, {1, 2})));
    EXPECT_EQ(45, Target(OB_LEVEL));
    EXPECT_EQ(45, CachedValue(OB_LEVEL));
    EXPECT_THAT(m_Camera.Sent(), IsEmpty());

    // Answered from the target, written to the camera.
    m_Table.SetFlags(OB_LEVEL, SYNC_TABLE_FLAG_ANSWER_FROM_TARGET);
    m_Camera.QueueReply(SetReply());
    EXPECT_TRUE(m_Table.Set(OB_LEVEL, 46));
    EXPECT_THAT(m_Camera.Sent(), ElementsAre(SetRequest(OB_LEVEL, 46)));
}

TEST_F(SyncTableSetTest, RefusedWritesReportSuccess) {
    m_Table.SetFlags(VGA_GAIN, SYNC_TABLE_FLAG_LOCKED);
    EXPECT_TRUE(m_Table.Set(VGA_GAIN, 1));
    EXPECT_EQ(0, Target(VGA_GAIN));
    EXPECT_EQ(0, CachedValue(VGA_GAIN));
    EXPECT_THAT(m_Camera.Sent(), IsEmpty());
}

TEST_F(SyncTableSetTest, LockedCalcStateFollowsWithOneBecomingTwo) {
    m_Table.SetFlags(CALC_STATE, SYNC_TABLE_FLAG_LOCKED);
    const std::pair<int, int> cases[] = {{1, 2}, {7, 2}, {0, 0}, {-1, 0}, {2, 0}, {1, 2}, {0, 0}};
    for (const auto& [written, cached] : cases) {
        EXPECT_TRUE(m_Table.Set(CALC_STATE, written));
        EXPECT_EQ(cached, CachedValue(CALC_STATE)) << written;
    }
    EXPECT_EQ(0, Target(CALC_STATE));
    EXPECT_THAT(m_Camera.Sent(), IsEmpty());
}

TEST_F(SyncTableSetTest, BlockTakesItsDataFromOffsetTen) {
    m_Camera.QueueReplies(2, SetReply());
    EXPECT_TRUE(SetBlock(CAMERA_NAME, BlockBuffer(1, TextBytes("cam\0"))));
    EXPECT_TRUE(SetBlock(CAMERA_NAME, BlockBuffer(1, {})));
    EXPECT_THAT(m_Camera.Sent(), ElementsAre(Bytes{0, 0, 10, 78, 0, 7, 5, 0, 0, 0, 'c', 'a', 'm'},
                                             Bytes{0, 0, 7, 78, 0, 4, 5, 0, 0, 0}));
    EXPECT_EQ(0, Target(CAMERA_NAME)) << "a block that was sent leaves no target";
}

TEST_F(SyncTableSetTest, BlockArgumentLengthIsSentAsItsLowByteAlone) {
    for (const std::size_t size : {246u, 251u, 252u, 300u, 5000u}) {
        m_Camera.ForgetSent();
        m_Camera.QueueReply(SetReply());
        EXPECT_TRUE(SetBlock(CAMERA_NAME, BlockBuffer(1, Bytes(size, 'x'))));
        ASSERT_EQ(1, m_Camera.Exchanges());
        const Bytes sent = m_Camera.Sent()[0];
        ASSERT_EQ(size + 10, sent.size());
        EXPECT_EQ(size + 7, sent[1] * 256u + sent[2]);
        EXPECT_EQ(0, sent[4]);
        EXPECT_EQ((size + 4) & 0xFF, sent[5]);
        EXPECT_EQ('x', sent.back());
    }
}

TEST_F(SyncTableSetTest, BlockSizesTheHeaderCannotTellAreRefused) {
    const Bytes buffer = BlockBuffer(1, {1});
    for (const int size : {-1, -10, -100, 0xFFFF - 6, 0x7FFFFFFF}) {
        EXPECT_FALSE(m_Table.Set(CAMERA_NAME, buffer.data(), size)) << size;
    }
    EXPECT_FALSE(m_Table.Set(CAMERA_NAME, nullptr, 4));
    EXPECT_THAT(m_Camera.Sent(), IsEmpty());
}

TEST_F(SyncTableSetTest, BlockWhoseFirstWordEqualsTheTargetIsNotSent) {
    EXPECT_TRUE(SetBlock(CAMERA_NAME, BlockBuffer(0, {1, 2, 3})));
    EXPECT_TRUE(SetBlock(H_BIN, BlockBuffer(1, {1, 2, 3})));
    EXPECT_THAT(m_Camera.Sent(), IsEmpty());
}

TEST_F(SyncTableSetTest, LockDoesNotHoldABlockBack) {
    m_Table.SetFlags(CAMERA_NAME, SYNC_TABLE_FLAG_LOCKED);
    m_Camera.QueueReply(SetReply());
    EXPECT_TRUE(SetBlock(CAMERA_NAME, BlockBuffer(1, {1})));
    EXPECT_EQ(1, m_Camera.Exchanges());
}

TEST_F(SyncTableSetTest, BlockDependsOnTheReplyNotOnTheSend) {
    m_Camera.QueueReply(ExceptionReply(0x13));
    EXPECT_FALSE(SetBlock(CAMERA_NAME, BlockBuffer(1, {1})));
    EXPECT_EQ(1, m_Camera.Exchanges());
    m_Camera.SetShortSend(2);
    m_Camera.Feed(SetReply());
    EXPECT_TRUE(SetBlock(CAMERA_NAME, BlockBuffer(1, {1})));
}

}  // namespace
}  // namespace zel::test
