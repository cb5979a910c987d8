#include <gmock/gmock.h>

#include <array>

#include "link/TextProtocol.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/ScriptedTransport.h"

namespace zel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TextProtocolLogTest : public testing::Test {
  protected:
    RecordedLog m_Log;
    FakeClock m_Clock;
    ScriptedTransport m_Camera{&m_Clock};
    ExchangeLock m_Lock;
    TextProtocol m_Protocol{&m_Camera, "camera 3", m_Lock};
    std::array<char, TextProtocol::kReplyCapacity> m_Out{"before"};
};

TEST_F(TextProtocolLogTest, CommandAndReply) {
    m_Protocol.Send("info");
    m_Camera.Feed(Datagram(5, TextBytes("OK") + Bytes{'\r', '\n', 0}));
    EXPECT_TRUE(m_Protocol.Recv(m_Out.data(), 5000));
    EXPECT_THAT(m_Log.Messages("TextProtocol", 2),
                ElementsAre("ENTRY", "Sending \"info\"", "datagram:   9 len:7 ", "datagram_id:5   len:5", "EXIT"));
    EXPECT_THAT(m_Log.Messages("", 0), IsEmpty());
}

TEST_F(TextProtocolLogTest, MissingTransport) {
    TextProtocol protocol(nullptr, nullptr, m_Lock);
    protocol.Send("info");
    EXPECT_THAT(m_Log.Messages(), ElementsAre("ENTRY", "m_Camera is 0"));
    m_Log.Clear();
    protocol.Recv(m_Out.data(), 5000);
    EXPECT_THAT(m_Log.Messages(), IsEmpty());
}

TEST_F(TextProtocolLogTest, TimeOutsOfBothStagesAndBadLength) {
    m_Camera.Feed({9});
    m_Protocol.Recv(m_Out.data(), 1);
    EXPECT_THAT(m_Log.Messages("", 0),
                ElementsAre("\n***ERROR***: TextProtocol::Recv() - stage 1, timeout (timeout_ms:5000) bytes_to_recv:2 "
                            "rx_index:1 str:\"before\"\n"));
    m_Log.Clear();
    m_Camera.Feed({9, 0, 6, 'a', 'b'});
    m_Protocol.Recv(nullptr, 1);
    EXPECT_THAT(m_Log.Messages("", 0), ElementsAre("***ERROR***: stage 2, timeout (timeout_ms:5000) bytes_to_recv:4 "
                                                   "rx_index:5 str:\"(null)\""));
    m_Log.Clear();
    m_Camera.Feed({9, 0x10, 0});
    m_Protocol.Recv(m_Out.data(), 1);
    EXPECT_THAT(m_Log.Messages("", 0), ElementsAre("***ERROR***: TextProtocol::Recv() - bad length value 4096\n"));
}

}  // namespace
}  // namespace zel::test
