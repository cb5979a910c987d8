#include <cstring>
#include <numeric>

#include "tests/link/SyncTableFixture.h"

namespace zel::test {
namespace {

using testing::ElementsAre;

struct SyncTableAttributesTest : SyncTableFixture {
    const SyncTableAttributes m_Exposure = MakeAttributes(EXPOSURE_TIME, "exposure", -5, 1000000, 10000);
    SyncTableAttributes m_Record = MakeAttributes(-1, "untouched", -1, -1, -1);

    void ExpectRecord(const SyncTableAttributes& expected) {
        EXPECT_EQ(0, std::memcmp(&expected, &m_Record, sizeof expected)) << expected.name << ", " << m_Record.name;
    }
};

TEST_F(SyncTableAttributesTest, AreReadOnceAndThenServedFromTheCache) {
    m_Camera.QueueReply(AttributesReply(m_Exposure));
    for (int i = 0; i < 3; ++i) {
        m_Record = {};
        EXPECT_TRUE(m_Table.GetAttribute(EXPOSURE_TIME, &m_Record));
        ExpectRecord(m_Exposure);
    }
    EXPECT_THAT(m_Camera.Sent(), ElementsAre(Bytes{0, 0, 7, 81, 0, 4, 9, 0, 0, 0}));
    EXPECT_EQ(0, m_Table.GetFlags(EXPOSURE_TIME));

    m_Table.SetFlags(EXPOSURE_TIME, SYNC_TABLE_FLAG_ATTRIBUTES_UNREAD | SYNC_TABLE_FLAG_LOCKED);
    m_Camera.QueueReply(AttributesReply(m_Exposure));
    EXPECT_TRUE(m_Table.GetAttribute(EXPOSURE_TIME, nullptr));
    EXPECT_EQ(2, m_Camera.Exchanges());
    EXPECT_EQ(SYNC_TABLE_FLAG_LOCKED, m_Table.GetFlags(EXPOSURE_TIME)) << "the other flags stay";
}

TEST_F(SyncTableAttributesTest, AreZeroWhereARecordIsShortAndCutWhereItIsLong) {
    Bytes data(252);
    std::iota(data.begin(), data.end(), static_cast<unsigned char>(1));
    for (const std::size_t size : {0u, 252u, 46u, 1u, 57u, 56u}) {
        m_Table.SetFlags(EXPOSURE_TIME, SYNC_TABLE_FLAG_ATTRIBUTES_UNREAD);
        m_Camera.QueueReply(TableReply(81, {data.data(), data.data() + size}) + NoException());
        SyncTableAttributes expected{}, out[2] = {{}, m_Record};
        std::memcpy(&expected, data.data(), std::min(size, sizeof expected));
        EXPECT_TRUE(m_Table.GetAttribute(EXPOSURE_TIME, out));
        EXPECT_EQ(0, std::memcmp(&expected, &out[0], sizeof expected)) << size;
        EXPECT_EQ(0, std::memcmp(&m_Record, &out[1], sizeof expected)) << size << ": written past the record";
    }
    EXPECT_TRUE(m_Table.GetAttribute(EXPOSURE_TIME, &m_Record));
    const auto& [index, name, data_type, flags, minimum, maximum, default_value] = m_Record;
    EXPECT_THAT((std::vector<int>{index, name[0], data_type, flags, minimum, maximum, default_value}),
                ElementsAre(0x04030201, 5, 0x28272625, 0x2c2b2a29, 0x302f2e2d, 0x34333231, 0x38373635));
}

TEST_F(SyncTableAttributesTest, FailedReadWritesNothingAndIsAskedAgain) {
    const SyncTableAttributes untouched = m_Record;
    m_Camera.QueueReply(TableReply(81, Bytes(56, 1)) + Exception(0x11));
    EXPECT_FALSE(m_Table.GetAttribute(EXPOSURE_TIME, &m_Record));
    EXPECT_EQ(1, m_Camera.Exchanges()) << "no retry";
    ExpectRecord(untouched);
    EXPECT_EQ(0x02, m_Table.GetFlags(EXPOSURE_TIME));
    m_Camera.QueueReply(AttributesReply(m_Exposure));
    EXPECT_TRUE(m_Table.GetAttribute(EXPOSURE_TIME, &m_Record));
    ExpectRecord(m_Exposure);
}

TEST_F(SyncTableAttributesTest, OverloadReplacesTheCamerasAttributes) {
    for (const auto& overload :
         {MakeAttributes(EXPOSURE_TIME, "first", 0, 10, 5), MakeAttributes(EXPOSURE_TIME, "second", 1, 20, 7)}) {
        EXPECT_TRUE(m_Table.OverloadAttr(EXPOSURE_TIME, &overload));
        EXPECT_EQ(overload.default_value, CachedValue(EXPOSURE_TIME));
        EXPECT_EQ(0, Target(EXPOSURE_TIME));
        EXPECT_EQ(SYNC_TABLE_FLAG_ATTRIBUTES_UNREAD, m_Table.GetFlags(EXPOSURE_TIME));
        EXPECT_TRUE(m_Table.GetAttribute(EXPOSURE_TIME, &m_Record));
        ExpectRecord(overload);
    }
    EXPECT_EQ(0, m_Camera.Exchanges());
    EXPECT_FALSE(m_Table.OverloadAttr(EXPOSURE_TIME, nullptr));
}

}  // namespace
}  // namespace zel::test
