#include "link/TextProtocol.h"

#include <string>

#include "tests/link/SyncTableFixture.h"

namespace zel::test {
namespace {

using testing::ElementsAre;

struct TextProtocolTest : SyncTableFixture {
    static inline const std::string kUntouched = std::string(TextProtocol::kReplyCapacity, '#');

    TextProtocol m_Protocol{&m_Camera, "test", m_Lock};
    std::string m_Out = kUntouched;
};

TEST_F(TextProtocolTest, SendAddsNothingToTheTextAndCutsItAt252Characters) {
    m_Camera.SetShortSend(7);  // whatever the transport answers
    for (const std::string& text : {std::string("info"), std::string("trig sw off\r\n"), std::string(),
                                    std::string(252, 'x'), std::string(253, 'x'), std::string(1000, 'x')}) {
        m_Camera.ForgetSent();
        EXPECT_TRUE(m_Protocol.Send(text.c_str()));
        const std::string sent = text.substr(0, 252);
        EXPECT_THAT(m_Camera.Sent(),
                    ElementsAre(Bytes{9, 0, static_cast<unsigned char>(sent.size())} + TextBytes(sent)));
    }
}

TEST_F(TextProtocolTest, LastThreePayloadBytesAreDroppedWhateverTheyAre) {
    const std::pair<Bytes, std::string> cases[] = {
        {TextBytes("OK") + Bytes{'\r', '\n', 0}, "OK"},
        {TextBytes("version"), "vers"},
        {TextBytes("abc"), ""},
        {TextBytes("a"), ""},
        {Bytes(4095, 'z'), std::string(4092, 'z')},
    };
    for (const auto delivery : {ScriptedTransport::Delivery::kWhole, ScriptedTransport::Delivery::kOneByte}) {
        m_Camera.SetDelivery(delivery);
        for (const auto& [payload, text] : cases) {
            m_Out = kUntouched;
            m_Camera.Feed(Datagram(77, payload));
            EXPECT_TRUE(m_Protocol.Recv(m_Out.data(), 5000)) << text;
            const std::string expected = text + std::string(payload.size() - text.size(), '\0') + "#";
            EXPECT_EQ(expected, m_Out.substr(0, expected.size()));
            m_Camera.Feed(Datagram(77, payload));
            EXPECT_TRUE(m_Protocol.Recv(nullptr, 5000)) << "read and dropped";
            EXPECT_EQ(0u, m_Camera.UnreadBytes());
        }
    }
}

TEST_F(TextProtocolTest, NothingIsAskedForAfterAnEmptyPayloadOrALengthBeyond4095) {
    for (const int length : {0, 4096, 0x7FFF, 0x8000, 0xFFFF}) {
        ScriptedTransport camera(&m_Clock);
        TextProtocol protocol(&camera, "test", m_Lock);
        camera.Feed({9, static_cast<unsigned char>(length >> 8), static_cast<unsigned char>(length), 'a', 'b'});
        EXPECT_EQ(length == 0, protocol.Recv(m_Out.data(), 5000)) << length;
        EXPECT_EQ(2u, camera.UnreadBytes()) << length;
        EXPECT_EQ(1, camera.ReceiveCalls()) << length;
    }
    EXPECT_EQ(kUntouched, m_Out);
}

// The budget covers all calls of a stage together; one that is completed by the call that crosses it has timed out too.
TEST_F(TextProtocolTest, EachStageHasFiveSeconds) {
    // The clock's start, what a call costs, and the bytes that come, one in each; the result and the time it takes.
    const std::tuple<std::uint32_t, std::uint32_t, Bytes, bool, std::uint32_t> cases[] = {
        {1000, 0, {}, false, 5500},
        {0xFFFFFF00u, 0, {}, false, 5500},
        {1000, 0, {9, 0, 6, 'a', 'b'}, false, 5500},
        {1000, 1666, Datagram(9, {'a', 'b', 'c'}), true, 6 * 1666},
        {1000, 1667, Datagram(9, {'a', 'b', 'c'}), false, 3 * 1667},
        {1000, 1250, Datagram(9, {'a', 'b', 'c', 'd'}), true, 7 * 1250},
        {1000, 1250, Datagram(9, {'a', 'b', 'c', 'd', 'e'}), false, 8 * 1250},
    };
    for (const auto& [start, cost, bytes, result, elapsed] : cases) {
        SCOPED_TRACE(elapsed);
        FakeClock clock(start);
        ScriptedTransport camera(&clock);
        TextProtocol protocol(&camera, "test", m_Lock);
        camera.SetDelivery(ScriptedTransport::Delivery::kOneByte);
        camera.SetReceiveCost(cost);
        camera.Feed(bytes);
        m_Out = kUntouched;
        EXPECT_EQ(result, protocol.Recv(m_Out.data(), 1));
        EXPECT_EQ(elapsed, clock.Elapsed());
        EXPECT_EQ(result, m_Out != kUntouched);
        EXPECT_EQ(500, camera.LastReceiveTimeout());
    }
}

TEST_F(TextProtocolTest, RestOfALatePayloadIsReadAsTheNextHeader) {
    m_Camera.Feed({9, 0, 6, 'a', 'b'});
    EXPECT_FALSE(m_Protocol.Recv(m_Out.data(), 5000));
    m_Camera.Feed(Bytes{9, 0, 4} + TextBytes("x") + Bytes{'\r', '\n', 0});
    EXPECT_TRUE(m_Protocol.Recv(m_Out.data(), 5000));
    EXPECT_STREQ("x", m_Out.data());
}

TEST_F(TextProtocolTest, ExchangeHoldsTheLockFromCommandToReplyAndFailsWithoutATransport) {
    m_Camera.SetHandler([&](const Bytes& command) {
        EXPECT_FALSE(LockIsFree());
        return command == TextRequest("info") ? TextReply("MODEL 1") : Bytes{};
    });
    EXPECT_TRUE(m_Protocol.Exchange("info", m_Out.data()));
    EXPECT_STREQ("MODEL 1", m_Out.data());
    EXPECT_FALSE(m_Protocol.Exchange("silence", m_Out.data()) || m_Protocol.Exchange("silence", nullptr));
    EXPECT_STREQ("", m_Out.data()) << "a failed exchange leaves an empty text";

    TextProtocol nowhere(nullptr, "none", m_Lock);
    const std::uint32_t start = m_Clock.Elapsed();
    EXPECT_FALSE(nowhere.Send("info") || nowhere.Recv(m_Out.data(), 5000) || nowhere.Exchange("info", nullptr));
    EXPECT_EQ(start, m_Clock.Elapsed());
}

}  // namespace
}  // namespace zel::test
