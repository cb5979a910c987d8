#include "link/TextProtocol.h"

#include <array>
#include <string>

#include "tests/link/SyncTableFixture.h"

namespace zel::test {
namespace {

using testing::ElementsAre;

class TextProtocolTest : public SyncTableFixture {
  protected:
    TextProtocol m_Protocol{&m_Camera, "test", m_Lock};
    std::array<char, TextProtocol::kReplyCapacity> m_Out = Filled();

    static std::array<char, TextProtocol::kReplyCapacity> Filled() {
        std::array<char, TextProtocol::kReplyCapacity> out;
        out.fill('#');
        return out;
    }
};

TEST_F(TextProtocolTest, SendAddsNothingToTheText) {
    EXPECT_TRUE(m_Protocol.Send("info"));
    EXPECT_TRUE(m_Protocol.Send("trig sw off\r\n"));
    EXPECT_TRUE(m_Protocol.Send(""));
    EXPECT_THAT(m_Camera.Sent(), ElementsAre(Bytes{9, 0, 4, 'i', 'n', 'f', 'o'},
                                             Bytes{9, 0, 13} + TextBytes("trig sw off\r\n"), Bytes{9, 0, 0}));
    m_Camera.SetShortSend(7);
    EXPECT_TRUE(m_Protocol.Send("info")) << "whatever the transport answers";
}

TEST_F(TextProtocolTest, CommandsAreCutAt252Characters) {
    for (const std::size_t length : {251u, 252u, 253u, 256u, 1000u}) {
        m_Camera.ForgetSent();
        const std::string text(length, 'x');
        EXPECT_TRUE(m_Protocol.Send(text.c_str()));
        const std::size_t sent = std::min<std::size_t>(length, 252);
        EXPECT_THAT(m_Camera.Sent(), ElementsAre(TextRequest(text.substr(0, sent)))) << length;
    }
}

TEST_F(TextProtocolTest, WithoutATransportEverythingFails) {
    TextProtocol protocol(nullptr, "none", m_Lock);
    EXPECT_FALSE(protocol.Send("info"));
    EXPECT_FALSE(protocol.Recv(m_Out.data(), 5000));
    EXPECT_FALSE(protocol.Exchange("info", m_Out.data()));
    EXPECT_EQ(0u, m_Clock.Elapsed());
}

TEST_F(TextProtocolTest, LastThreePayloadBytesAreDroppedWhateverTheyAre) {
    struct Case {
        Bytes payload;
        std::string text;
    };
    const Case cases[] = {
        {TextBytes("OK") + Bytes{'\r', '\n', 0}, "OK"},
        {TextBytes("version"), "vers"},
        {TextBytes("abc"), ""},
        {TextBytes("ab"), ""},
        {TextBytes("a"), ""},
        {Bytes(4095, 'z'), std::string(4092, 'z')},
    };
    for (const auto delivery : {ScriptedTransport::Delivery::kWhole, ScriptedTransport::Delivery::kOneByte}) {
        m_Camera.SetDelivery(delivery);
        for (const Case& c : cases) {
            m_Out = Filled();
            m_Camera.Feed(Datagram(77, c.payload));
            ASSERT_TRUE(m_Protocol.Recv(m_Out.data(), 5000)) << c.payload.size();
            EXPECT_EQ(c.text, std::string(m_Out.data()));
            EXPECT_EQ('#', m_Out[c.payload.size()]) << "written past the payload";
            EXPECT_EQ(0u, m_Camera.UnreadBytes());
        }
    }
}

TEST_F(TextProtocolTest, EmptyPayloadWritesNothingAndAsksForNothing) {
    m_Camera.Feed(Datagram(9, {}));
    EXPECT_TRUE(m_Protocol.Recv(m_Out.data(), 5000));
    EXPECT_EQ(Filled(), m_Out);
    EXPECT_EQ(1, m_Camera.ReceiveCalls());
}

TEST_F(TextProtocolTest, ReplyWithoutABufferIsReadAndDropped) {
    m_Camera.Feed(TextReply("ignored"));
    EXPECT_TRUE(m_Protocol.Recv(nullptr, 5000));
    EXPECT_EQ(0u, m_Camera.UnreadBytes());
}

TEST_F(TextProtocolTest, LengthsBeyond4095AreRefusedAndThePayloadStaysUnread) {
    for (const int length : {4096, 0x7FFF, 0x8000, 0xFFFF}) {
        ScriptedTransport camera(&m_Clock);
        TextProtocol protocol(&camera, "test", m_Lock);
        camera.Feed({9, static_cast<unsigned char>(length >> 8), static_cast<unsigned char>(length), 'a', 'b'});
        EXPECT_FALSE(protocol.Recv(m_Out.data(), 5000)) << length;
        EXPECT_EQ(2u, camera.UnreadBytes()) << length;
        EXPECT_EQ(1, camera.ReceiveCalls()) << length;
    }
    EXPECT_EQ(Filled(), m_Out);
}

TEST_F(TextProtocolTest, SilenceEndsAfterTheStagesOwnBudget) {
    for (const std::uint32_t start : {1000u, 0xFFFFFF00u}) {
        FakeClock clock(start);
        ScriptedTransport camera(&clock);
        TextProtocol protocol(&camera, "test", m_Lock);
        EXPECT_FALSE(protocol.Recv(m_Out.data(), 1));
        EXPECT_EQ(5500u, clock.Elapsed()) << "the first call after 5000 ms";
        EXPECT_EQ(11, camera.ReceiveCalls());
        EXPECT_EQ(500, camera.LastReceiveTimeout());
    }
}

TEST_F(TextProtocolTest, BudgetCoversAllCallsOfAStageTogether) {
    struct Case {
        std::uint32_t cost;
        std::size_t payload;
        bool result;
    };
    // One byte per call. A stage that is completed by the call that crosses 5000 ms has timed out too.
    const Case cases[] = {{1666, 3, true}, {1667, 3, false}, {1250, 4, true}, {1250, 5, false}};
    for (const Case& c : cases) {
        ScriptedTransport camera(&m_Clock);
        TextProtocol protocol(&camera, "test", m_Lock);
        camera.SetDelivery(ScriptedTransport::Delivery::kOneByte);
        camera.SetReceiveCost(c.cost);
        camera.Feed(Datagram(9, Bytes(c.payload, 'a')));
        EXPECT_EQ(c.result, protocol.Recv(m_Out.data(), 5000)) << c.cost << " ms, " << c.payload << " bytes";
    }
}

TEST_F(TextProtocolTest, RestOfALatePayloadIsReadAsTheNextHeader) {
    m_Camera.Feed({9, 0, 6, 'a', 'b'});
    EXPECT_FALSE(m_Protocol.Recv(m_Out.data(), 5000));
    EXPECT_EQ(5500u, m_Clock.Elapsed());
    EXPECT_EQ(Filled(), m_Out);
    m_Camera.Feed(Bytes{9, 0, 4} + TextBytes("x") + Bytes{'\r', '\n', 0});
    EXPECT_TRUE(m_Protocol.Recv(m_Out.data(), 5000));
    EXPECT_STREQ("x", m_Out.data());
}

TEST_F(TextProtocolTest, CountsThatATransportInventsKeepTheBuffer) {
    m_Camera.SetReceiveCost(100);
    for (const int count : {-1, -1000000}) {
        m_Camera.SetFalseReceiveCount(count);
        EXPECT_FALSE(m_Protocol.Recv(m_Out.data(), 5000)) << count;
    }
    m_Camera.SetFalseReceiveCount(1000000);
    EXPECT_TRUE(m_Protocol.Recv(m_Out.data(), 5000)) << "an empty payload of zeros";
    EXPECT_EQ(Filled(), m_Out);
}

TEST_F(TextProtocolTest, ExchangeHoldsTheLockFromCommandToReply) {
    bool was_free = true;
    m_Camera.SetHandler([&](const Bytes&) {
        was_free = LockIsFree();
        return TextReply("MODEL 1");
    });
    EXPECT_TRUE(m_Protocol.Exchange("info", m_Out.data()));
    EXPECT_FALSE(was_free);
    EXPECT_STREQ("MODEL 1", m_Out.data());
    EXPECT_THAT(m_Camera.Sent(), ElementsAre(TextRequest("info")));
}

TEST_F(TextProtocolTest, FailedExchangeLeavesAnEmptyText) {
    EXPECT_FALSE(m_Protocol.Exchange("info", m_Out.data()));
    EXPECT_STREQ("", m_Out.data());
    EXPECT_FALSE(m_Protocol.Exchange("info", nullptr));
}

}  // namespace
}  // namespace zel::test
