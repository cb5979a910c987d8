#include <cstring>

#include "tests/link/SyncTableFixture.h"

namespace zel::test {
namespace {

using testing::ElementsAre;

class SyncTableAttributesTest : public SyncTableFixture {
  protected:
    const SyncTableAttributes m_Exposure = MakeAttributes(EXPOSURE_TIME, "exposure", -5, 1000000, 10000);

    static void ExpectSame(const SyncTableAttributes& expected, const SyncTableAttributes& actual) {
        EXPECT_EQ(0, std::memcmp(&expected, &actual, sizeof expected)) << actual.name;
    }
};

TEST_F(SyncTableAttributesTest, AreReadOnceAndThenServedFromTheCache) {
    m_Camera.QueueReply(AttributesReply(m_Exposure));
    for (int i = 0; i < 3; ++i) {
        SyncTableAttributes record{};
        EXPECT_TRUE(m_Table.GetAttribute(EXPOSURE_TIME, &record));
        ExpectSame(m_Exposure, record);
    }
    EXPECT_THAT(m_Camera.Sent(), ElementsAre(Bytes{0, 0, 7, 81, 0, 4, 9, 0, 0, 0}));
    EXPECT_EQ(0, m_Table.GetFlags(EXPOSURE_TIME));

    m_Table.SetFlags(EXPOSURE_TIME, SYNC_TABLE_FLAG_ATTRIBUTES_UNREAD | SYNC_TABLE_FLAG_LOCKED);
    m_Camera.QueueReply(AttributesReply(m_Exposure));
    EXPECT_TRUE(m_Table.GetAttribute(EXPOSURE_TIME, nullptr));
    EXPECT_EQ(2, m_Camera.Exchanges());
    EXPECT_EQ(SYNC_TABLE_FLAG_LOCKED, m_Table.GetFlags(EXPOSURE_TIME)) << "the other flags stay";
}

TEST_F(SyncTableAttributesTest, FieldsLieAtTheirOffsets) {
    Bytes data(56, 0);
    data[0] = 9;
    data[4] = 'e';
    data[36] = 3;
    data[40] = 1;
    data[44] = data[45] = data[46] = data[47] = 0xFF;
    data[48] = 100;
    data[53] = 1;
    m_Camera.QueueReply(TableReply(81, data) + NoException());
    SyncTableAttributes record{};
    EXPECT_TRUE(m_Table.GetAttribute(EXPOSURE_TIME, &record));
    ExpectSame(MakeAttributes(9, "e", -1, 100, 256), record);
}

TEST_F(SyncTableAttributesTest, ShortRecordsAreFilledWithZeros) {
    const Bytes reply = AttributesReply(m_Exposure);
    m_Camera.QueueReply(reply);
    EXPECT_TRUE(m_Table.GetAttribute(EXPOSURE_TIME, nullptr));
    m_Table.SetFlags(EXPOSURE_TIME, SYNC_TABLE_FLAG_ATTRIBUTES_UNREAD);
    const Bytes data(reply.begin() + 6, reply.begin() + 6 + 46);
    m_Camera.QueueReply(TableReply(81, data) + NoException());
    SyncTableAttributes expected{}, record{};
    std::memset(&record, 0xEE, sizeof record);
    std::memcpy(&expected, data.data(), data.size());
    EXPECT_TRUE(m_Table.GetAttribute(EXPOSURE_TIME, &record));
    ExpectSame(expected, record);
}

TEST_F(SyncTableAttributesTest, LongRecordsAreCut) {
    Bytes data(252, 0x7F);
    m_Camera.QueueReply(TableReply(81, data) + NoException());
    struct {
        SyncTableAttributes record{};
        int guard = 0x55;
    } out;
    EXPECT_TRUE(m_Table.GetAttribute(EXPOSURE_TIME, &out.record));
    EXPECT_EQ(0x7F7F7F7F, out.record.default_value);
    EXPECT_EQ(0x55, out.guard);
}

TEST_F(SyncTableAttributesTest, FailedReadWritesNothingAndIsAskedAgain) {
    SyncTableAttributes record;
    std::memset(&record, 0xEE, sizeof record);
    const SyncTableAttributes untouched = record;
    m_Camera.QueueReply(TableReply(81, Bytes(56, 1)) + Exception(0x11));
    EXPECT_FALSE(m_Table.GetAttribute(EXPOSURE_TIME, &record));
    EXPECT_EQ(1, m_Camera.Exchanges()) << "no retry";
    m_Camera.SetShortSend(1);
    EXPECT_FALSE(m_Table.GetAttribute(EXPOSURE_TIME, &record));
    ExpectSame(untouched, record);
    EXPECT_EQ(0x02, m_Table.GetFlags(EXPOSURE_TIME));

    m_Camera.SetShortSend(0);
    m_Camera.QueueReply(AttributesReply(m_Exposure));
    EXPECT_TRUE(m_Table.GetAttribute(EXPOSURE_TIME, &record));
    ExpectSame(m_Exposure, record);
}

TEST_F(SyncTableAttributesTest, OverloadReplacesTheCamerasAttributes) {
    const SyncTableAttributes first = MakeAttributes(EXPOSURE_TIME, "first", 0, 10, 5);
    const SyncTableAttributes second = MakeAttributes(EXPOSURE_TIME, "second", 1, 20, 7);
    m_Camera.QueueReply(AttributesReply(m_Exposure));
    EXPECT_TRUE(m_Table.GetAttribute(EXPOSURE_TIME, nullptr));
    for (const SyncTableAttributes& overload : {first, second}) {
        EXPECT_TRUE(m_Table.OverloadAttr(EXPOSURE_TIME, &overload));
        EXPECT_EQ(overload.default_value, CachedValue(EXPOSURE_TIME));
        EXPECT_EQ(0, Target(EXPOSURE_TIME));
        m_Table.SetFlags(EXPOSURE_TIME, SYNC_TABLE_FLAG_ATTRIBUTES_UNREAD);
        SyncTableAttributes record{};
        EXPECT_TRUE(m_Table.GetAttribute(EXPOSURE_TIME, &record));
        ExpectSame(overload, record);
    }
    EXPECT_EQ(1, m_Camera.Exchanges());
    EXPECT_FALSE(m_Table.OverloadAttr(EXPOSURE_TIME, nullptr));
}

}  // namespace
}  // namespace zel::test
