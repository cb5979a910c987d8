#include <algorithm>

#include "tests/link/SyncTableFixture.h"
#include "tests/support/RecordedLog.h"

namespace zel::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

class SyncTableLogTest : public SyncTableFixture {
  protected:
    RecordedLog m_Log;

    // Messages with their times of day replaced by TIME; forgets them.
    std::vector<std::string> Take(int level = -1) {
        std::vector<std::string> messages = m_Log.Messages("SyncTable", level);
        for (std::string& message : messages) ReplaceTime(message);
        m_Log.Clear();
        return messages;
    }

    static void ReplaceTime(std::string& message) {
        const std::string form = "dd:dd:dd.ddd";
        const auto fits = [](char c, char f) { return f == 'd' ? c >= '0' && c <= '9' : c == f; };
        const auto time = std::search(message.begin(), message.end(), form.begin(), form.end(), fits);
        if (time != message.end()) message.replace(time, time + static_cast<std::ptrdiff_t>(form.size()), "TIME");
    }
};

TEST_F(SyncTableLogTest, SuccessfulReadOfAValue) {
    m_Camera.QueueReply(ValueReply(640));
    int value = 0;
    EXPECT_TRUE(m_Table.Get(H_SIZE, &value));
    EXPECT_THAT(m_Log.Messages("", 0), IsEmpty());
    EXPECT_THAT(
        Take(),
        ElementsAre("SyncTable::Get(index:H_SIZE) is not LOCKED. min:0 max:0 value:0\n",
                    "command:SYNC_TABLE_CMD_GET index:H_SIZE value:0) - entry", "calling m_Camera->SendData(len:10)",
                    "command:SYNC_TABLE_CMD_GET index:H_SIZE value:0 - exit success",
                    "calling m_Camera->RecvData(bytes_to_recv:3)", "calling m_Camera->RecvData(bytes_to_recv:7)",
                    "len:4", "CommandRecv() value :640\n", "calling m_Camera->RecvData(bytes_to_recv:3)",
                    "CommandRecv()  datagram exception size :0",
                    "(index:13 (0x0000000d) (H_SIZE), value_ptr:640 value:640)", " Exiting returning true\n"));
}

TEST_F(SyncTableLogTest, LockStateShowsLimitsAndValue) {
    const SyncTableAttributes record = MakeAttributes(H_SIZE, "width", 16, 2048, 640);
    EXPECT_TRUE(m_Table.OverloadAttr(H_SIZE, &record));
    m_Table.SetFlags(H_SIZE, SYNC_TABLE_FLAG_LOCKED | SYNC_TABLE_FLAG_READABLE_FROM_CACHE);
    m_Table.SetCachedReads(1);
    EXPECT_TRUE(m_Table.Get(H_SIZE, nullptr));
    m_Table.SetFlags(H_SIZE, SYNC_TABLE_FLAG_USE_TARGET_VALUE);
    EXPECT_TRUE(m_Table.Get(H_SIZE, nullptr));
    EXPECT_THAT(Take(), ElementsAre("SyncTable::OverloadAttr(index:H_SIZE)\n",
                                    "SyncTable::Get(index:H_SIZE) is LOCKED.  min:16  max:2048  value:640\n",
                                    "SyncTable::Get() - SYNC_TABLE_FLAG_USE_TARGET_VALUE\n"));
}

TEST_F(SyncTableLogTest, RetriesAndTheirEnd) {
    m_Camera.QueueReplies(4, ExceptionReply(0x11));
    EXPECT_FALSE(m_Table.Get(H_SIZE, nullptr));
    std::vector<std::string> expected;
    for (const char* end :
         {"retry attempt:1", "retry attempt:2", "retry attempt:3", "no retry, exiting with failure"}) {
        expected.push_back("CHANGE EXCEPTION");
        expected.push_back(std::string("TIME: SyncTable::Get(index:H_SIZE) CommandRecv() failed - ") + end + "\n");
    }
    EXPECT_THAT(Take(0), ElementsAreArray(expected));
}

TEST_F(SyncTableLogTest, FailuresOfARead) {
    m_Camera.QueueReply(ExceptionReply(0x14));
    EXPECT_FALSE(m_Table.Get(H_SIZE, nullptr));
    EXPECT_THAT(Take(0), ElementsAre("BAD INDEX EXCEPTION", "BAD INDEX EXCEPTION"));

    m_Camera.SetShortSend(1);
    EXPECT_FALSE(m_Table.Get(H_SIZE, nullptr));
    EXPECT_THAT(Take(0),
                ElementsAre("***ERROR***:command:SYNC_TABLE_CMD_GET index:H_SIZE value:0) - m_Camera->SendData(len:10) "
                            "failed",
                            "TIME :SyncTable::Get(index:H_SIZE) CommandSend(SYNC_TABLE_CMD_GET) failed\n"));
}

TEST_F(SyncTableLogTest, EachTimeOutAndExceptionHasItsWord) {
    const std::string failed = "TIME :SyncTable::Set(index:H_BIN, value:2) CommandRecv() failed\n";
    const Bytes reply = TableReply(78, {1, 2});
    struct Case {
        Bytes reply;
        std::vector<std::string> lines;
    };
    const Case cases[] = {
        {{}, {"timout", failed}},
        {Bytes{0, 1, 0}, {failed}},  // 256 bytes announced: refused without a word
        {Bytes(reply.begin(), reply.end() - 1), {"timeout", failed}},
        {reply, {"timeout in exception", failed}},
        {reply + Bytes{0, 0, 3, 0}, {failed}},
        {reply + Exception(0x12), {"INCOMPLETE DATA EXCEPTION", failed}},
        {reply + Exception(0x13), {"WRITE TO CONST EXCEPTION", failed}},
        {reply + Exception(0x77), {"UNKNOWN EXCEPTION 119 (0x77)", failed}},
        {reply + Datagram(0, {1}), {"UNKNOWN EXCEPTION 0 (0x00)", failed}},
    };
    for (const Case& c : cases) {
        if (!c.reply.empty()) m_Camera.QueueReply(c.reply);
        EXPECT_FALSE(m_Table.Set(H_BIN, 2));
        EXPECT_EQ(c.lines, Take(0)) << c.reply.size() << " bytes";
    }
}

TEST_F(SyncTableLogTest, Writes) {
    m_Camera.SetReceiveCost(10);
    m_Camera.QueueReplies(2, SetReply());
    EXPECT_TRUE(m_Table.Set(SW_TRIG, 1));
    const std::vector<std::string> lines = Take();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ("SyncTable::Set(index:49 (SW_TRIG), value:1) - enter\n", lines.front());
    EXPECT_EQ("command:SYNC_TABLE_CMD_SET index:SW_TRIG value:1) - entry", lines[1]);
    EXPECT_EQ("calling m_Camera->SendData(len:14)", lines[2]);
    EXPECT_EQ("----------------------SW_TRIG  value:1", lines[lines.size() - 2]);
    EXPECT_EQ("(index:49 (SW_TRIG), value:1) - exit success. took 30 ms\n", lines.back());
    EXPECT_TRUE(m_Table.Set(FRAME_COUNT, 3));
    EXPECT_THAT(Take(), Contains("----------------------FRAME_COUNT  value:3"));

    m_Table.SetFlags(H_BIN, SYNC_TABLE_FLAG_LOCKED);
    EXPECT_TRUE(m_Table.Set(H_BIN, 2));
    EXPECT_THAT(Take(), ElementsAre("SyncTable::Set(index:15 (H_BIN), value:2) - enter\n",
                                    "SyncTable::Set(index:15 (H_BIN), value:2) - PARAMETER IS LOCKED\n"));
    EXPECT_FALSE(m_Table.Set(89, 2));
    EXPECT_THAT(Take(), ElementsAre("SyncTable::Set(index:89 (UNKNOWN), value:2) - enter\n"));
    m_Camera.SetShortSend(1);
    EXPECT_FALSE(m_Table.Set(VGA_GAIN, 2));
    EXPECT_THAT(Take(0), Contains("TIME: SyncTable::Set(index:VGA_GAIN, value:2) CommandSend() failed\n"));
}

TEST_F(SyncTableLogTest, BlockWrites) {
    const Bytes buffer = LittleEndian(7) + Bytes(8, 0);
    m_Camera.QueueReply(SetReply());
    EXPECT_TRUE(m_Table.Set(CAMERA_NAME, buffer.data(), 2));
    const std::vector<std::string> lines = Take();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ("\nTIME :SyncTable::Set(index:  5 (CAMERA_NAME), num_bytes:    2) value:7 - enter\n", lines[0]);
    EXPECT_EQ("command:SYNC_TABLE_CMD_SET index:CAMERA_NAME num_bytes:2 - entry", lines[1]);
    EXPECT_EQ("command:SYNC_TABLE_CMD_SET index:CAMERA_NAME num_bytes:2 - exit success", lines[2]);
    EXPECT_EQ(" Exiting returning true\n", lines.back());

    m_Camera.QueueReply(ExceptionReply(0x15));
    EXPECT_FALSE(m_Table.Set(CAMERA_NAME, buffer.data(), 2));
    EXPECT_THAT(Take(0), ElementsAre("WRITE TO READ ONLY EXCEPTION",
                                     testing::StartsWith("TIME :SyncTable::Set(index:CAMERA_NAME) CommandRecv() "
                                                         "failed. line:")));
    EXPECT_FALSE(m_Table.Set(CAMERA_NAME, buffer.data(), -1));
    EXPECT_THAT(Take(0), ElementsAre("TIME :SyncTable::Set(index:CAMERA_NAME, num_bytes:-1) - CommandSend() failed\n"));
}

TEST_F(SyncTableLogTest, Attributes) {
    const SyncTableAttributes record = MakeAttributes(H_BIN, "h bin", 1, 8, 1);
    m_Camera.QueueReply(AttributesReply(record));
    SyncTableAttributes out{};
    EXPECT_TRUE(m_Table.GetAttribute(H_BIN, &out));
    const std::vector<std::string> lines = Take();
    ASSERT_GE(lines.size(), 4u);
    EXPECT_EQ("SyncTable::GetAttribute(15 H_BIN) enter", lines[0]);
    EXPECT_EQ("SyncTable::GetAttribute(H_BIN) - PARAMETER ATTRIB are NOT OVERLOADED\n", lines[1]);
    EXPECT_EQ(" name:          h bin  flags:0x00000001 min:    1 max:    8 def:    1\n", lines[lines.size() - 2]);
    EXPECT_EQ(" 15 (H_BIN)) - exit success. took 0 ms", lines.back());

    EXPECT_TRUE(m_Table.OverloadAttr(H_BIN, &record));
    EXPECT_TRUE(m_Table.GetAttribute(H_BIN, &out));
    EXPECT_THAT(Take(), Contains("SyncTable::GetAttribute(H_BIN) - min:1 max:8 PARAMETER ATTRIB are OVERLOADED\n"));

    m_Camera.QueueReply(ExceptionReply(0x16));
    EXPECT_FALSE(m_Table.GetAttribute(V_BIN, &out));
    EXPECT_THAT(Take(0),
                ElementsAre("REQUIRES CALC EXCEPTION", "CommandRecv(SYNC_TABLE_CMD_GET_ATTRIBUTES) 16 V_BIN failed"));
    m_Camera.SetShortSend(1);
    EXPECT_FALSE(m_Table.GetAttribute(V_BIN, &out));
    EXPECT_THAT(m_Log.CountContaining("EXIT"), 1);
    EXPECT_THAT(Take(0), Contains("CommandSend(SYNC_TABLE_CMD_GET_ATTRIBUTES) 16 V_BIN failed"));
}

}  // namespace
}  // namespace zel::test
