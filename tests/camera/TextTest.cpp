// Text commands, names and raw bytes.
#include <thread>

#include "tests/camera/CameraFixture.h"

namespace zel::test {

using TextTest = CameraTest;

TEST_F(TextTest, NamesTravelAsText) {
    m_Table.m_Texts["name"] = std::string(100, 'n');
    EXPECT_EQ(m_Camera->GetCameraName(), std::string(63, 'n'));
    EXPECT_TRUE(m_Camera->SetCameraName("left arm"));
    EXPECT_EQ(Sent(), "name; name left arm; ");
    EXPECT_TRUE(m_Camera->SetCameraName(std::string(5000, 'n').c_str()));
    EXPECT_TRUE(Sent().ends_with("nnn; ")) << "cut, but ended as a command";
    m_Transport.SetHandler(nullptr);
    EXPECT_STREQ(m_Camera->GetCameraName(), "") << "no reply, no name";
    EXPECT_FALSE(m_Camera->SetCameraName(nullptr));
}

TEST_F(TextTest, RawBytesGoBothWays) {
    const unsigned char sent[] = {1, 2, 3};
    unsigned char got[3] = {};
    m_Transport.QueueReply({7, 8});
    EXPECT_EQ(m_Camera->SendData(sent, 3), 3);
    EXPECT_EQ(m_Camera->RecvData(got, 3, 50), 2);
    EXPECT_THAT(got, testing::ElementsAre(7, 8, 0));
    for (const int count : {0, -1}) EXPECT_EQ(m_Camera->SendData(sent, count) + m_Camera->RecvData(got, count, 50), 0);
    EXPECT_EQ(m_Camera->SendData(nullptr, 3) + m_Camera->RecvData(nullptr, 3, 50), 0);
    EXPECT_THAT(m_Transport.Sent(), testing::ElementsAre(Bytes{1, 2, 3}));
    EXPECT_EQ(m_Transport.ReceiveCalls(), 1);
}

// The camera's identity is asked for on several threads while a transport connects anew.
TEST_F(TextTest, ThreadsReadTextsThatAreRenewed) {
    m_Table.m_Texts["name"] = "left arm";
    EXPECT_EQ(m_Camera->ConnectCommon(), 0);
    const auto ask = [this] {
        for (int i = 0; i < 200; ++i) {
            EXPECT_STREQ(m_Camera->GetCameraName(), "left arm");
            EXPECT_TRUE(m_Camera->IsMonochrome());
        }
    };
    const std::jthread asking(ask);
    for (int i = 0; i < 20; ++i) EXPECT_EQ(m_Camera->ConnectCommon(), 0);
}

TEST_F(TextTest, RepliesAreCompleteWithALineEndAZeroByteOrAWholeDatagram) {
    const std::string none = "(none)";  // the command times out
    const std::pair<Bytes, std::string> replies[] = {
        {TextBytes("OK\n"), "OK\n"}, {{'O', 'K', 0}, "OK"},        {TextReply("OK"), "OK\r\n"},
        {Datagram(9, {}), ""},       {{9, 0, 9, 'O', '\n'}, none},  // half a datagram
        {TextBytes("OK"), none},     {Bytes(6000, 'x'), none},     {Datagram(9, Bytes(5000, 'x')), none}};
    for (const auto delivery : {ScriptedTransport::Delivery::kWhole, ScriptedTransport::Delivery::kOneByte}) {
        for (const auto& [bytes, text] : replies) {
            SCOPED_TRACE(testing::Message() << bytes.size() << " bytes with " << text);
            ScriptedTransport transport(&m_Clock);
            ZelCameraControl camera(&transport, "test");
            transport.SetDelivery(delivery);
            transport.QueueReply(bytes);
            std::string heard = none;
            EXPECT_TRUE(camera.SetTextCommandCallback(
                [](const char* reply, void* heard_text) { *static_cast<std::string*>(heard_text) = reply; }, &heard));
            EXPECT_EQ(camera.SetTextCommand("info"), text != none);
            EXPECT_EQ(heard, text);
            EXPECT_EQ(transport.Sent().back(), TextBytes("info\r\n")) << "no header";
        }
    }
}

TEST_F(TextTest, ASilentCameraCostsFiveSeconds) {
    m_Transport.SetHandler(nullptr);
    EXPECT_FALSE(m_Camera->SetTextCommand(std::string(400, 'c').c_str()));
    EXPECT_EQ(m_Transport.Sent().back(), TextBytes(std::string(250, 'c') + "\r\n")) << "cut so that the end fits";
    EXPECT_GT(m_Clock.Elapsed(), 5000u);
    EXPECT_LT(m_Clock.Elapsed(), 6000u);
    EXPECT_EQ(m_Camera->TextCommandCommon("hello", false), 0) << "no reply is waited for";
    EXPECT_EQ(m_Camera->TextCommandCommon("hello", true), 1);
    EXPECT_FALSE(m_Camera->SetTextCommand(nullptr));
    EXPECT_EQ(m_Camera->TextCommandCommon(nullptr, false), 1);
}

TEST_F(TextTest, EntriesForTheTransport) {
    int value = 0;
    m_Table.m_Blocks[SERIAL_NUMBER] = Bytes(32, 'A');
    EXPECT_TRUE(m_Camera->GetCameraParameter(SERIAL_NUMBER, &value)) << "a block gives its first word";
    EXPECT_EQ(value, 0x41414141);
    EXPECT_FALSE(m_Camera->GetCameraParameter(SYNC_TABLE_SELECT_MAX, &value));
    EXPECT_FALSE(m_Camera->GetCameraParameter(H_SIZE, nullptr));
}

}  // namespace zel::test
