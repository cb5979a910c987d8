#include <array>
#include <cstring>
#include <limits>

#include "tests/link/SyncTableFixture.h"

namespace zel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SyncTableGetTest : public SyncTableFixture {};

TEST_F(SyncTableGetTest, ValueGoesOverTheWireLittleEndian) {
    m_Camera.QueueReply({0, 0, 7, 77, 0, 4, 0x04, 0x03, 0x02, 0x81, 0, 0, 0});
    int value = 0;
    EXPECT_TRUE(m_Table.Get(EXPOSURE_TIME, &value));
    EXPECT_EQ(static_cast<int>(0x81020304u), value);
    EXPECT_THAT(m_Camera.Sent(), ElementsAre(Bytes{0, 0, 7, 77, 0, 4, 9, 0, 0, 0}));
    EXPECT_EQ(0u, m_Camera.UnreadBytes());
    EXPECT_EQ(value, CachedValue(EXPOSURE_TIME));
}

TEST_F(SyncTableGetTest, ExchangeRunsUnderTheLockWithRaisedTimerResolution) {
    bool was_free = true;
    int raised = 0;
    m_Camera.SetHandler([&](const Bytes&) {
        was_free = LockIsFree();
        raised = platform::TimerResolution::LiveCount();
        return ValueReply(1);
    });
    int value = 0;
    EXPECT_TRUE(m_Table.Get(H_SIZE, &value));
    EXPECT_FALSE(was_free);
    EXPECT_GT(raised, 0);
}

TEST_F(SyncTableGetTest, BlocksAreCutAt32Bytes) {
    for (const std::size_t size : {0u, 1u, 31u, 32u, 40u, 252u}) {
        std::array<unsigned char, 64> out;
        out.fill(0xEE);
        m_Camera.QueueReply(BlockReply(Bytes(size, 0x41)));
        EXPECT_TRUE(m_Table.Get(FW_VERSION, out.data()));
        const auto stored = std::min<std::size_t>(size, 32);
        EXPECT_EQ(stored, static_cast<std::size_t>(std::count(out.begin(), out.end(), 0x41))) << size;
        EXPECT_EQ(64 - stored, static_cast<std::size_t>(std::count(out.begin(), out.end(), 0xEE))) << size;
    }
    m_Camera.QueueReply(BlockReply(Bytes(8, 1)));
    EXPECT_TRUE(m_Table.Get(FW_VERSION, nullptr));
}

TEST_F(SyncTableGetTest, BytesThatNeverCameReadAsZero) {
    int value = -1;
    m_Camera.QueueReply(Bytes{0, 0, 5, 77, 0, 4, 0x12, 0x34} + NoException());
    EXPECT_TRUE(m_Table.Get(H_SIZE, &value));
    EXPECT_EQ(0x3412, value);
    for (const Bytes& reply : {Bytes{0, 0, 0}, Bytes{0, 0, 2, 77, 0}}) {
        value = -1;
        m_Camera.QueueReply(reply + NoException());
        EXPECT_TRUE(m_Table.Get(H_SIZE, &value));
        EXPECT_EQ(0, value);
    }

    std::array<unsigned char, 33> block;
    block.fill(0xEE);
    m_Camera.QueueReply(Bytes{0, 0, 4, 77, 0xFF, 0xFF, 0x41} + NoException());
    EXPECT_TRUE(m_Table.Get(CAMERA_NAME, block.data()));
    EXPECT_EQ(0x41, block[0]);
    EXPECT_EQ(31, std::count(block.begin() + 1, block.end(), 0));
    EXPECT_EQ(0xEE, block[32]);
}

struct ReplyCase {
    const char* name;
    Bytes reply;
    int attempts;
};
void PrintTo(const ReplyCase& c, std::ostream* stream) { *stream << c.name; }

class SyncTableFailingReplyTest : public SyncTableFixture, public testing::WithParamInterface<ReplyCase> {};

TEST_P(SyncTableFailingReplyTest, IsRetriedThreeTimesUnlessTheIndexIsBad) {
    const ReplyCase& c = GetParam();
    m_Camera.QueueReplies(10, c.reply);
    int value = 0;
    EXPECT_FALSE(m_Table.Get(H_SIZE, &value));
    EXPECT_EQ(c.attempts, m_Camera.Exchanges());
    EXPECT_EQ(c.attempts, m_Camera.CountSent(GetRequest(H_SIZE)));
    EXPECT_EQ(c.attempts - 1, m_Clock.CountSleeps(100));
    EXPECT_EQ(100u * static_cast<unsigned>(c.attempts - 1), m_Clock.Elapsed()) << "waited for bytes that nobody wants";
    EXPECT_EQ(0u, m_Camera.UnreadBytes());
    EXPECT_EQ(0, CachedValue(H_SIZE));
}

INSTANTIATE_TEST_SUITE_P(
    Replies, SyncTableFailingReplyTest,
    testing::Values(ReplyCase{"Change", ExceptionReply(0x11), 4}, ReplyCase{"BadIndex", ExceptionReply(0x14), 1},
                    ReplyCase{"RequiresCalc", ExceptionReply(0x16), 4}, ReplyCase{"Unknown", ExceptionReply(0x99), 4},
                    ReplyCase{"ExceptionOfOneByte", TableReply(77, LittleEndian(1)) + Datagram(0, {0x14}), 4},
                    ReplyCase{"ExceptionOfTwoBytes", TableReply(77, LittleEndian(1)) + Datagram(0, {0x14, 0x14}), 4},
                    ReplyCase{"ExceptionTooLong", TableReply(77, LittleEndian(1)) + Bytes{0, 1, 0}, 4},
                    ReplyCase{"ReplyTooLong", Bytes{0, 1, 0}, 4}),
    [](const auto& test) { return test.param.name; });

TEST_F(SyncTableGetTest, RetryThatSucceedsIsASuccess) {
    m_Camera.QueueReplies(3, ExceptionReply(0x12));
    m_Camera.QueueReply(ValueReply(7));
    int value = 0;
    EXPECT_TRUE(m_Table.Get(H_SIZE, &value));
    EXPECT_EQ(7, value);
    EXPECT_EQ(4, m_Camera.Exchanges());
}

TEST_F(SyncTableGetTest, BadIndexOfAnEarlierCallDoesNotStopRetries) {
    m_Camera.QueueReply(ExceptionReply(0x14));
    m_Camera.QueueReply(ExceptionReply(0x11));
    m_Camera.QueueReply(ValueReply(7));
    int value = 0;
    EXPECT_FALSE(m_Table.Get(H_SIZE, &value));
    EXPECT_TRUE(m_Table.Get(H_SIZE, &value));
}

TEST_F(SyncTableGetTest, EachPartOfAReplyHasItsOwnBudget) {
    struct Case {
        Bytes reply;
        std::uint32_t elapsed;
    };
    // Every attempt waits for one part, 5000 ms and the call that crosses them; three pauses lie between.
    const Bytes complete = ValueReply(1) + Bytes{0, 0};
    const Case cases[] = {
        {{}, 4 * 5500 + 300},
        {Bytes(complete.begin(), complete.begin() + 8), 4 * 5500 + 300},
        {TableReply(77, LittleEndian(1)), 4 * 5500 + 300},
        {TableReply(77, LittleEndian(1)) + Bytes{0, 0, 3, 0}, 4 * 5500 + 300},
    };
    for (const Case& c : cases) {
        FakeClock clock;
        ScriptedTransport camera(&clock);
        SyncTable table(&camera, "test", m_Lock);
        int attempt = 0;
        camera.SetHandler([&](const Bytes&) {
            ++attempt;
            return c.reply;
        });
        int value = 0;
        EXPECT_FALSE(table.Get(H_SIZE, &value));
        EXPECT_EQ(4, attempt);
        EXPECT_EQ(c.elapsed, clock.Elapsed()) << c.reply.size() << " bytes";
        EXPECT_EQ(500, camera.LastReceiveTimeout());
    }
}

TEST_F(SyncTableGetTest, SlowBytesWithinTheBudgetAreCollected) {
    m_Camera.SetDelivery(ScriptedTransport::Delivery::kOneByte);
    m_Camera.SetReceiveCost(700);
    m_Camera.QueueReply(ValueReply(1234));
    int value = 0;
    EXPECT_TRUE(m_Table.Get(H_SIZE, &value));
    EXPECT_EQ(1234, value);
    EXPECT_EQ(13u * 700, m_Clock.Elapsed());
}

TEST_F(SyncTableGetTest, ShortSendEndsTheReadAtOnce) {
    m_Camera.SetShortSend(1);
    int value = 0;
    EXPECT_FALSE(m_Table.Get(H_SIZE, &value));
    EXPECT_EQ(1, m_Camera.Exchanges());
    EXPECT_EQ(0, m_Camera.ReceiveCalls());
}

TEST_F(SyncTableGetTest, CountsThatATransportInventsKeepTheBuffer) {
    m_Camera.SetReceiveCost(500);
    int value = 0;
    for (const int count : {-1, std::numeric_limits<int>::min()}) {
        m_Camera.SetFalseReceiveCount(count);
        EXPECT_FALSE(m_Table.Get(H_SIZE, &value)) << count;
    }
    m_Camera.SetFalseReceiveCount(std::numeric_limits<int>::max());
    EXPECT_TRUE(m_Table.Get(H_SIZE, &value)) << "a reply of zeros";
    EXPECT_EQ(0, value);
}

TEST_F(SyncTableGetTest, HostOnlyEntriesAreAnsweredFromTheTarget) {
    m_Camera.QueueReply(SetReply());
    EXPECT_TRUE(m_Table.Set(VGA_GAIN, 12));
    for (const int flag : {SYNC_TABLE_FLAG_USE_TARGET_VALUE, SYNC_TABLE_FLAG_ANSWER_FROM_TARGET}) {
        m_Table.SetFlags(VGA_GAIN, flag);
        int value = 0;
        EXPECT_TRUE(m_Table.Get(VGA_GAIN, &value));
        EXPECT_EQ(12, value);
        EXPECT_TRUE(m_Table.Get(VGA_GAIN, nullptr));
    }
    EXPECT_EQ(1, m_Camera.Exchanges());
}

TEST_F(SyncTableGetTest, CacheServesOnlyWithFlagAndSwitch) {
    m_Camera.SetHandler([](const Bytes&) { return ValueReply(3); });
    struct Case {
        int flags, cached_reads, exchanges;
    };
    const Case cases[] = {{SYNC_TABLE_FLAG_READABLE_FROM_CACHE, 1, 0},
                          {SYNC_TABLE_FLAG_READABLE_FROM_CACHE, 0, 1},
                          {SYNC_TABLE_FLAG_READABLE_FROM_CACHE, 2, 1},
                          {0, 1, 1}};
    for (const Case& c : cases) {
        m_Camera.ForgetSent();
        m_Table.SetFlags(SENSOR_TEMP, c.flags);
        m_Table.SetCachedReads(c.cached_reads);
        int value = -1;
        EXPECT_TRUE(m_Table.Get(SENSOR_TEMP, &value));
        EXPECT_EQ(c.exchanges, m_Camera.Exchanges()) << c.flags << ", " << c.cached_reads;
        EXPECT_EQ(c.exchanges || &c != cases ? 3 : 0, value);
    }
}

TEST_F(SyncTableGetTest, IndicesOutsideTheTableCauseNoTraffic) {
    SyncTableAttributes record{};
    const Bytes block(16, 1);
    int value = -1;
    for (const int index : {-1, 89, 255, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_FALSE(m_Table.Get(index, &value)) << index;
        EXPECT_FALSE(m_Table.Set(index, 1)) << index;
        EXPECT_FALSE(m_Table.Set(index, block.data(), 6)) << index;
        EXPECT_FALSE(m_Table.GetTarget(index, &value)) << index;
        EXPECT_FALSE(m_Table.GetAttribute(index, &record)) << index;
        EXPECT_FALSE(m_Table.OverloadAttr(index, &record)) << index;
        EXPECT_FALSE(m_Table.SetFlags(index, 1)) << index;
        EXPECT_EQ(0, m_Table.GetFlags(index)) << index;
    }
    EXPECT_EQ(-1, value);
    EXPECT_THAT(m_Camera.Sent(), IsEmpty());
}

TEST_F(SyncTableGetTest, WithoutATransportExchangesFail) {
    SyncTable table(nullptr, "none", m_Lock);
    SyncTableAttributes record{};
    const Bytes block(16, 1);
    int value = 0;
    EXPECT_FALSE(table.Get(H_SIZE, &value));
    EXPECT_FALSE(table.Set(H_SIZE, 1));
    EXPECT_FALSE(table.Set(CAMERA_NAME, block.data(), 6));
    EXPECT_FALSE(table.GetAttribute(H_SIZE, &record));
}

}  // namespace
}  // namespace zel::test
