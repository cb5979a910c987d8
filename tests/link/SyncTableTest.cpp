// Reading and writing entries: the bytes on the wire, what a flag changes, and replies that are none.
#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <set>

#include "tests/link/SyncTableFixture.h"
#include "tests/support/TableCamera.h"

namespace zel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct SyncTableTest : SyncTableFixture {
    // A buffer for the block form: the first word, six bytes that are not read, and the data.
    static bool SetBlock(SyncTable& table, int index, int first_word, const Bytes& data) {
        const Bytes buffer = LittleEndian(first_word) + Bytes(6, 0xEE) + data;
        return table.Set(index, buffer.data(), static_cast<int>(data.size()));
    }

    int m_Value = -1;
    SyncTableAttributes m_Record = MakeAttributes(H_BIN, "record", 1, 8, 7);
    // Whatever is done with an entry; the first four talk to the camera.
    enum : std::size_t { kGet, kGetAttribute, kSet, kSetBlock, kExchanges };
    const std::vector<std::function<bool(SyncTable&, int)>> m_Operations{
        [this](SyncTable& table, int index) { return table.Get(index, &m_Value); },
        [this](SyncTable& table, int index) { return table.GetAttribute(index, &m_Record); },
        [](SyncTable& table, int index) { return table.Set(index, 5); },
        [](SyncTable& table, int index) { return SetBlock(table, index, 6, {1}); },
        [this](SyncTable& table, int index) { return table.GetTarget(index, &m_Value); },
        [this](SyncTable& table, int index) { return table.OverloadAttr(index, &m_Record); },
        [](SyncTable& table, int index) { return table.SetFlags(index, 1); },
    };
};

TEST_F(SyncTableTest, ValuesGoOverTheWireLittleEndian) {
    constexpr int kValue = static_cast<int>(0x81020304u);
    m_Camera.QueueReply({0, 0, 7, 77, 0, 4, 0x04, 0x03, 0x02, 0x81, 0, 0, 0});
    EXPECT_TRUE(m_Table.Get(EXPOSURE_TIME, &m_Value));
    EXPECT_EQ(kValue, m_Value);
    m_Camera.QueueReply({0, 0, 3, 78, 0, 0, 0, 0, 0});
    EXPECT_TRUE(m_Table.Set(EXPOSURE_TIME, kValue));
    EXPECT_THAT(m_Camera.Sent(), ElementsAre(Bytes{0, 0, 7, 77, 0, 4, 9, 0, 0, 0},
                                             Bytes{0, 0, 11, 78, 0, 8, 9, 0, 0, 0, 0x04, 0x03, 0x02, 0x81}));
    EXPECT_EQ(0u, m_Camera.UnreadBytes());
}

TEST_F(SyncTableTest, IndicesOutsideTheTableCauseNoTraffic) {
    for (const int index : {-1, 89, 255, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        for (const auto& operation : m_Operations) EXPECT_FALSE(operation(m_Table, index)) << index;
        EXPECT_EQ(0, m_Table.GetFlags(index)) << index;
    }
    EXPECT_EQ(-1, m_Value);
    EXPECT_THAT(m_Camera.Sent(), IsEmpty());
}

TEST_F(SyncTableTest, ExchangesRunUnderTheLockWithRaisedTimerResolution) {
    TableCamera model;
    m_Camera.SetHandler([&](const Bytes& datagram) {
        EXPECT_FALSE(LockIsFree());
        EXPECT_GT(platform::TimerResolution::LiveCount(), 0);
        return model.Answer(datagram);
    });
    SyncTable nowhere(nullptr, "none", m_Lock);
    for (std::size_t i = 0; i < kExchanges; ++i) {
        m_Camera.ForgetSent();
        EXPECT_TRUE(m_Operations[i](m_Table, H_SIZE));
        EXPECT_EQ(1, m_Camera.Exchanges());
        EXPECT_FALSE(m_Operations[i](nowhere, H_SIZE));
    }
}

// On purpose: what becomes of a block depends on the reply alone.
TEST_F(SyncTableTest, AShortSendEndsAnExchangeAtOnceUnlessItIsABlock) {
    m_Camera.SetShortSend(1);
    for (const auto i : {kGet, kGetAttribute, kSet}) EXPECT_FALSE(m_Operations[i](m_Table, H_SIZE));
    EXPECT_EQ(3, m_Camera.Exchanges());
    EXPECT_EQ(0, m_Camera.ReceiveCalls());
    EXPECT_EQ(5, Target(H_SIZE));
    m_Camera.Feed(SetReply());
    EXPECT_TRUE(m_Operations[kSetBlock](m_Table, H_SIZE));
}

TEST_F(SyncTableTest, FlagsDecideWhereValuesComeFromAndWhereTheyGo) {
    constexpr int kUse = SYNC_TABLE_FLAG_USE_TARGET_VALUE, kAnswer = SYNC_TABLE_FLAG_ANSWER_FROM_TARGET;
    constexpr int kCache = SYNC_TABLE_FLAG_READABLE_FROM_CACHE, kLocked = SYNC_TABLE_FLAG_LOCKED;
    constexpr int kOfCamera = 3, kTarget = 12, kCached = 7;
    // Flags, whether reads are cached, and what is seen: the value read; target and cache after the value 5 was
    // written, and after a block of first word 6 was; how many of these two writes and two reads went to the camera.
    const std::tuple<int, int, std::vector<int>> cases[] = {
        {0, 1, {kOfCamera, 5, kOfCamera, 5, kOfCamera, 4}},
        {kCache, 0, {kOfCamera, 5, kOfCamera, 5, kOfCamera, 4}},
        {kCache, 2, {kOfCamera, 5, kOfCamera, 5, kOfCamera, 4}},
        {kCache, 1, {kCached, 5, kCached, 5, kCached, 2}},
        {kAnswer, 0, {kTarget, 5, kCached, 5, kCached, 2}},
        {kUse, 0, {kTarget, 5, 5, 6, 6, 0}},
        {kUse | kLocked, 0, {kTarget, 5, 5, 6, 6, 0}},
        {kLocked, 0, {kOfCamera, kTarget, kOfCamera, kTarget, kOfCamera, 3}},  // on purpose: the block is sent
    };
    m_Camera.SetHandler([](const Bytes&) { return ValueReply(kOfCamera); });
    for (const auto& [flags, cached_reads, expected] : cases) {
        m_Table.SetFlags(VGA_GAIN, 0);
        EXPECT_TRUE(m_Table.Set(VGA_GAIN, kTarget) && m_Table.OverloadAttr(VGA_GAIN, &m_Record));
        m_Camera.ForgetSent();
        m_Table.SetFlags(VGA_GAIN, flags);
        m_Table.SetCachedReads(cached_reads);
        EXPECT_TRUE(m_Table.Get(VGA_GAIN, nullptr) && m_Table.Get(VGA_GAIN, &m_Value));
        std::vector<int> seen{m_Value};
        for (const auto operation : {kSet, kSetBlock}) {
            EXPECT_TRUE(m_Operations[operation](m_Table, VGA_GAIN));
            seen.push_back(Target(VGA_GAIN));
            seen.push_back(CachedValue(VGA_GAIN));
        }
        seen.push_back(m_Camera.Exchanges());
        EXPECT_EQ(expected, seen) << flags << " " << cached_reads;
    }
}

TEST_F(SyncTableTest, LockedCalcStateFollowsWithOneBecomingTwo) {
    m_Table.SetFlags(CALC_STATE, SYNC_TABLE_FLAG_LOCKED);
    for (const auto& [written, cached] : {std::pair(1, 2), {7, 2}, {-1, 2}, {0, 0}, {2, 0}}) {
        EXPECT_TRUE(m_Table.Set(CALC_STATE, written));
        EXPECT_EQ(cached, CachedValue(CALC_STATE)) << written;
    }
    EXPECT_EQ(0, Target(CALC_STATE));
    EXPECT_THAT(m_Camera.Sent(), IsEmpty());
}

TEST_F(SyncTableTest, OnlyHBinStartsAtOne) {
    for (int i = 0; i < SYNC_TABLE_SELECT_MAX; ++i) {
        const int start = i == 15;
        EXPECT_EQ(std::tuple(start, start, 0x02), std::tuple(Target(i), CachedValue(i), m_Table.GetFlags(i))) << i;
    }
    EXPECT_TRUE(m_Table.GetTarget(H_BIN, nullptr));
    EXPECT_THAT(m_Camera.Sent(), IsEmpty());
}

// On purpose: HW_VERSION and CFA_PHASE, 2 and 78, are values among blocks.
TEST_F(SyncTableTest, BlocksAreReadWithUpTo32BytesAndValuesWithFour) {
    std::set<int> blocks{1, 3, 4, 5};
    for (int i = 67; i <= 88; ++i) blocks.insert(i);
    blocks.erase(78);
    for (const std::size_t size : {0u, 1u, 31u, 32u, 40u, 252u}) {
        m_Camera.SetHandler([size](const Bytes&) { return BlockReply(Bytes(size, 0x41)); });
        for (int i = 0; i < SYNC_TABLE_SELECT_MAX; ++i) {
            Bytes out(64, 0xEE);
            EXPECT_TRUE(m_Table.Get(i, out.data()) && m_Table.Get(i, nullptr));
            const std::size_t stored = blocks.count(i) ? std::min<std::size_t>(size, 32) : 4;
            EXPECT_EQ(std::min(size, stored), static_cast<std::size_t>(std::count(out.begin(), out.end(), 0x41))) << i;
            EXPECT_EQ(64 - stored, static_cast<std::size_t>(std::count(out.begin(), out.end(), 0xEE))) << i;
        }
    }
}

TEST_F(SyncTableTest, BytesThatNeverCameReadAsZero) {
    for (const auto& [value, reply] :
         {std::pair(0x3412, Bytes{0, 0, 5, 77, 0, 4, 0x12, 0x34}), {0, Bytes{0, 0, 0}}, {0, Bytes{0, 0, 2, 77, 0}}}) {
        m_Value = -1;
        m_Camera.QueueReply(reply + NoException());
        EXPECT_TRUE(m_Table.Get(H_SIZE, &m_Value));
        EXPECT_EQ(value, m_Value);
    }
    Bytes block(33, 0xEE);
    m_Camera.QueueReply(Bytes{0, 0, 4, 77, 0xFF, 0xFF, 0x41} + NoException());
    EXPECT_TRUE(m_Table.Get(CAMERA_NAME, block.data()));
    EXPECT_EQ(Bytes{0x41} + Bytes(31, 0) + Bytes{0xEE}, block);
}

TEST_F(SyncTableTest, AReadIsRepeatedThreeTimesUnlessTheIndexIsBad) {
    const Bytes reply = TableReply(77, LittleEndian(1));
    constexpr std::uint32_t kSilence = 5500;  // 5000 ms, and the call that crosses them
    const std::tuple<Bytes, std::uint32_t, std::uint32_t> cases[] = {
        {ExceptionReply(0x11), 4, 0},
        {ExceptionReply(0x14), 1, 0},
        {reply + Datagram(0, {0, 0, 0x14, 0}), 1, 0},
        {ExceptionReply(0x16), 4, 0},
        {ExceptionReply(0x99), 4, 0},
        {reply + Datagram(0, {0x14}), 4, 0},
        {reply + Datagram(0, {0x14, 0x14}), 4, 0},
        {reply + Bytes{0, 1, 0}, 4, 0},  // too long
        {Bytes{0, 1, 0}, 4, 0},
        {{}, 4, kSilence},
        {Bytes(reply.begin(), reply.end() - 2), 4, kSilence},
        {reply, 4, kSilence},
        {reply + Bytes{0, 0, 3, 0}, 4, kSilence},
    };
    for (const auto& [bytes, attempts, time] : cases) {
        SCOPED_TRACE(testing::PrintToString(bytes));
        const std::uint32_t start = m_Clock.Elapsed();
        m_Camera.ForgetSent();
        m_Camera.SetHandler([&answer = bytes](const Bytes&) { return answer; });
        EXPECT_FALSE(m_Table.Get(H_SIZE, &m_Value));
        EXPECT_EQ(static_cast<int>(attempts), m_Camera.CountSent(GetRequest(H_SIZE)));
        EXPECT_EQ(attempts * time + (attempts - 1) * 100, m_Clock.Elapsed() - start);
        EXPECT_EQ(0u, m_Camera.UnreadBytes());
        EXPECT_EQ(0, CachedValue(H_SIZE));
        EXPECT_EQ(500, m_Camera.LastReceiveTimeout());
    }
    // The bad index of an earlier call counts no more.
    m_Camera.QueueReply(ExceptionReply(0x14));
    EXPECT_FALSE(m_Table.Get(H_SIZE, &m_Value));
    m_Camera.QueueReplies(3, ExceptionReply(0x11));
    m_Camera.QueueReply(ValueReply(7));
    EXPECT_TRUE(m_Table.Get(H_SIZE, &m_Value));
    EXPECT_EQ(7, m_Value);
}

TEST_F(SyncTableTest, AReadThatIsCalledOffAnswersFalse) {
    struct : ExchangeLock {
        bool Cancelled() override { return m_Cancelled; }
        bool m_Cancelled = false;
    } lock;
    SyncTable table(&m_Camera, "test", lock);
    m_Camera.SetHandler([&](const Bytes&) { return lock.m_Cancelled = true, Bytes(); });
    EXPECT_FALSE(table.Get(H_SIZE, &m_Value));
    EXPECT_EQ(1, m_Camera.CountSent(GetRequest(H_SIZE)));
}

TEST_F(SyncTableTest, AWriteIsNotRepeatedAndItsTargetStays) {
    m_Camera.QueueReplies(2, ExceptionReply(0x11));
    for (const auto operation : {kSet, kSetBlock}) {
        EXPECT_FALSE(m_Operations[operation](m_Table, VGA_GAIN));
        EXPECT_EQ(5, Target(VGA_GAIN));
    }
    EXPECT_EQ(2, m_Camera.Exchanges());
    EXPECT_EQ(0u, m_Clock.Elapsed());
}

TEST_F(SyncTableTest, SlowBytesAreCollected) {
    m_Camera.SetDelivery(ScriptedTransport::Delivery::kOneByte);
    m_Camera.SetReceiveCost(700);
    m_Camera.QueueReply(ValueReply(1234));
    EXPECT_TRUE(m_Table.Get(H_SIZE, &m_Value));
    EXPECT_EQ(1234, m_Value);
    EXPECT_EQ(13u * 700, m_Clock.Elapsed());
}

// On purpose: the argument length goes out as its low byte alone. A first word that equals the target keeps a block
// back.
TEST_F(SyncTableTest, BlocksTakeTheirDataFromOffsetTenOrAreNotSent) {
    for (const std::size_t size : {0u, 3u, 246u, 251u, 252u, 300u, 5000u, 0xFFFFu - 7}) {
        const auto byte = [](std::size_t value) { return static_cast<unsigned char>(value); };
        m_Camera.ForgetSent();
        m_Camera.QueueReply(SetReply());
        EXPECT_TRUE(SetBlock(m_Table, CAMERA_NAME, 1, Bytes(size, 'x')));
        const Bytes head{0, byte((size + 7) >> 8), byte(size + 7), 78, 0, byte(size + 4), 5, 0, 0, 0};
        EXPECT_THAT(m_Camera.Sent(), ElementsAre(head + Bytes(size, 'x'))) << size;
    }
    EXPECT_EQ(0, Target(CAMERA_NAME)) << "a block that was sent leaves no target";
    m_Camera.ForgetSent();
    const Bytes buffer = LittleEndian(1) + Bytes(7, 0);
    for (const int size : {-1, -10, -100, 0xFFFF - 6, 0x7FFFFFFF}) {
        EXPECT_FALSE(m_Table.Set(CAMERA_NAME, buffer.data(), size)) << size;
    }
    EXPECT_FALSE(m_Table.Set(CAMERA_NAME, nullptr, 4));
    EXPECT_TRUE(SetBlock(m_Table, CAMERA_NAME, 0, {1, 2, 3}) && SetBlock(m_Table, H_BIN, 1, {1, 2, 3}));
    EXPECT_THAT(m_Camera.Sent(), IsEmpty());
}

}  // namespace
}  // namespace zel::test
