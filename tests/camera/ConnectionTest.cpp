// Opening, closing and recognising the model.
#include "camera/ZelCameraFactory.h"
#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

class ConnectionTest : public CameraTest {
  protected:
    std::uint64_t FirstModelValue() {
        std::uint64_t value = 1;
        m_Camera->GetParameter(ZEL_PARAM_MODEL_VALUE_1, 8, &value);
        return value;
    }
};

TEST_F(ConnectionTest, OpensOnceAndClosesAgain) {
    int open = 7;
    EXPECT_FALSE(m_Camera->IsOpen(nullptr));
    EXPECT_TRUE(m_Camera->IsOpen(&open));
    EXPECT_EQ(open, 0);
    m_Transport.ForgetCalls();
    EXPECT_TRUE(m_Camera->Open());
    EXPECT_TRUE(m_Camera->Open());
    EXPECT_THAT(m_Transport.Calls(), testing::ElementsAre("Connect", "Stop"));
    EXPECT_TRUE(m_Camera->IsOpen(&open));
    EXPECT_EQ(open, 1);
    EXPECT_TRUE(SentTexts().empty()) << "a plain connection needs no text command";
    EXPECT_TRUE(m_Camera->Close());
    m_Camera->IsOpen(&open);
    EXPECT_EQ(open, 0);
}

TEST_F(ConnectionTest, TransportFailuresAreKeptAsLastError) {
    m_Transport.m_Answers.connect = ZEL_ERROR_CAMERA_COMM_FAILURE;
    EXPECT_FALSE(m_Camera->Open());
    EXPECT_EQ(m_Camera->GetLastError(), ZEL_ERROR_CAMERA_COMM_FAILURE);
    EXPECT_STREQ(m_Camera->GetLastErrorStr(), "ZEL_ERROR_CAMERA_COMM_FAILURE");
    m_Transport.m_Answers.connect = 0;
    m_Transport.m_Answers.stop = ZEL_ERROR_UNSUPPORTED;
    EXPECT_FALSE(m_Camera->Open());
    EXPECT_EQ(m_Camera->GetLastError(), ZEL_ERROR_UNSUPPORTED);
    m_Transport.m_Answers.stop = 0;
    EXPECT_TRUE(m_Camera->Open());
    m_Transport.m_Answers.disconnect = ZEL_ERROR_UNKNOWN;
    EXPECT_FALSE(m_Camera->Close());
    int open = 0;
    m_Camera->IsOpen(&open);
    EXPECT_EQ(open, 1) << "a failed close leaves the camera open";
    EXPECT_EQ(m_Camera->GetLastErrorStr(), nullptr) << "the last code has no name";
    EXPECT_TRUE(m_Camera->ClearLastError());
    EXPECT_EQ(m_Camera->GetLastError(), 0);
}

TEST_F(ConnectionTest, ErrorNames) {
    const std::pair<int, const char*> names[] = {{0, "ZEL_NO_ERROR"},
                                                 {15, "ZEL_ERROR_TOO_MANY_IMAGE_BUFFERS"},
                                                 {16, "ZEL_ERROR_INVALID_BINNING_SELECTIONZEL_ERROR_UNKNOWN"}};
    for (const auto& [code, name] : names) {
        *m_Camera->GetLastErrorPtr() = code;
        EXPECT_STREQ(m_Camera->GetLastErrorStr(), name);
    }
    for (const int code : {17, 18, -1, 1000}) {
        *m_Camera->GetLastErrorPtr() = code;
        EXPECT_EQ(m_Camera->GetLastErrorStr(), nullptr);
    }
}

TEST_F(ConnectionTest, TheFirstModelCodeOfTheTableWins) {
    const std::pair<const char*, std::uint64_t> models[] = {
        {"ZEL D800 A30", 35000000}, {"B150-C", 34700000}, {"xC400", 34300000}, {"D800", 37000000}};
    for (const auto& [text, value] : models) {
        m_Table.m_Blocks[HW_MODEL] = TextBytes(text);
        EXPECT_EQ(m_Camera->ConnectCommon(), 0);
        EXPECT_EQ(FirstModelValue(), value) << text;
    }
    m_Table.m_Blocks[HW_MODEL] = TextBytes("a30");
    EXPECT_EQ(m_Camera->ConnectCommon(), 0);
    EXPECT_EQ(FirstModelValue(), 37000000u) << "an unknown model leaves the values as they were";
}

TEST_F(ConnectionTest, OnlyOneKindOfLinkLooksTheModelUp) {
    for (const int type : {CAMERA_TYPE_EDT_CAMERA_LINK, CAMERA_TYPE_PLEORA_EBUS, 0}) {
        m_Transport.m_Answers.interface_type = type;
        EXPECT_EQ(m_Camera->ConnectCommon(), 0);
        EXPECT_EQ(FirstModelValue(), kNoModelValue) << type;
    }
}

TEST_F(ConnectionTest, FilterTextTellsMonochromeFromColor) {
    EXPECT_EQ(m_Camera->ConnectCommon(), 0);
    EXPECT_TRUE(m_Camera->IsMonochrome());
    m_Table.m_Exceptions.clear();
    m_Table.m_Blocks[CFA_TYPE] = TextBytes("Bayer");
    EXPECT_EQ(m_Camera->ConnectCommon(), 0);
    EXPECT_FALSE(m_Camera->IsMonochrome());
}

TEST_F(ConnectionTest, ASilentCameraConnectsWithinItsBudgets) {
    m_Transport.SetHandler(nullptr);
    EXPECT_EQ(m_Camera->ConnectCommon(), 0);
    // Nine reads of four attempts, 5 s each, and the attributes of one entry.
    EXPECT_LT(m_Clock.Elapsed(), 190000u);
    EXPECT_TRUE(m_Camera->IsMonochrome());
}

TEST_F(ConnectionTest, TheFactoryNeedsATransport) {
    EXPECT_EQ(zel_camera_control_create(nullptr, "x"), nullptr);
    ScriptedTransport transport;
    ZelCamera* camera = zel_camera_control_create(&transport, nullptr);
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(transport.CountCalls("SetCameraCommon"), 1);
    EXPECT_EQ(zel_camera_control_interface(camera), &transport);
    zel_camera_control_destroy(camera);
    EXPECT_EQ(transport.Common(), nullptr) << "the transport forgets a destroyed camera object";
}

}  // namespace
}  // namespace zel::test
