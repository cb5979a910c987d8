// Opening, closing, recognising the model; small operations, and a camera object that has no transport.
#include "camera/ZelCameraFactory.h"
#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

class ConnectionTest : public CameraTest {
  protected:
    bool Opened() {
        int open = 7;
        EXPECT_TRUE(m_Camera->IsOpen(&open));
        return open != 0;
    }
    std::uint64_t FirstModelValue() {
        std::uint64_t value = 1;
        m_Camera->GetParameter(ZEL_PARAM_MODEL_VALUE_1, 8, &value);
        return value;
    }
};

TEST_F(ConnectionTest, OpensOnceAndClosesAgain) {
    EXPECT_FALSE(m_Camera->IsOpen(nullptr));
    EXPECT_FALSE(Opened());
    m_Transport.ForgetCalls();
    EXPECT_TRUE(m_Camera->Open());
    EXPECT_TRUE(m_Camera->Open());
    EXPECT_THAT(m_Transport.Calls(), testing::ElementsAre("Connect", "Stop"));
    EXPECT_TRUE(Opened());
    m_Transport.m_Answers.disconnect = ZEL_ERROR_UNKNOWN;
    EXPECT_FALSE(m_Camera->Close());
    EXPECT_TRUE(Opened()) << "a failed close leaves the camera open";
    m_Transport.m_Answers.disconnect = 0;
    EXPECT_TRUE(m_Camera->Close());
    EXPECT_FALSE(Opened());
}

TEST_F(ConnectionTest, TransportFailuresAreKeptAsLastError) {
    m_Transport.m_Answers.connect = ZEL_ERROR_CAMERA_COMM_FAILURE;
    EXPECT_FALSE(m_Camera->Open());
    EXPECT_EQ(m_Camera->GetLastError(), ZEL_ERROR_CAMERA_COMM_FAILURE);
    m_Transport.m_Answers.connect = 0;
    m_Transport.m_Answers.stop = ZEL_ERROR_UNSUPPORTED;
    EXPECT_FALSE(m_Camera->Open());
    EXPECT_EQ(m_Camera->GetLastError(), ZEL_ERROR_UNSUPPORTED);
}

TEST_F(ConnectionTest, CodesThatAreAskedFor) {
    for (const auto& [code, size] : {std::pair(0, 0), {3, 4}, {5, 8}, {9, 1}, {-1, 4}, {99, 4}}) {
        EXPECT_EQ(m_Camera->GetDataTypeSize(code), size) << code;
    }
    for (const auto& [type, kind] : {std::pair(3, 1), {4, 0}, {5, 2}, {6, 0}}) {
        m_Transport.m_Answers.interface_type = type;
        EXPECT_EQ(m_Camera->GetCameraInterfaceType(), kind) << type;
    }
}

TEST_F(ConnectionTest, ErrorNames) {
    *m_Camera->GetLastErrorPtr() = 16;
    EXPECT_STREQ(m_Camera->GetLastErrorStr(), "ZEL_ERROR_INVALID_BINNING_SELECTIONZEL_ERROR_UNKNOWN");
    for (const int code : {17, -1, 1000}) {
        *m_Camera->GetLastErrorPtr() = code;
        EXPECT_EQ(m_Camera->GetLastErrorStr(), nullptr);
    }
}

TEST_F(ConnectionTest, TheFirstModelCodeOfTheTableWins) {
    m_Transport.m_Answers.interface_type = CAMERA_TYPE_PLEORA_EBUS;
    EXPECT_EQ(m_Camera->ConnectCommon(), 0);
    EXPECT_EQ(FirstModelValue(), kNoModelValue) << "one kind of link alone looks the model up";
    m_Transport.m_Answers.interface_type = CAMERA_TYPE_USB;
    // An unknown model leaves the values as they were.
    for (const auto& [text, value] : {std::pair("ZEL D800 A30", 35000000u), {"D800", 37000000u}, {"a30", 37000000u}}) {
        m_Table.m_Blocks[HW_MODEL] = TextBytes(text);
        EXPECT_EQ(m_Camera->ConnectCommon(), 0);
        EXPECT_EQ(FirstModelValue(), value) << text;
    }
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
    zel_camera_control_destroy(camera);
    EXPECT_EQ(transport.Common(), nullptr) << "the transport forgets a destroyed camera object";
}

TEST(WithoutTransport, EveryOperationAnswersItsNothing) {
    ZelCameraControl camera(nullptr, nullptr);
    int word = 0;
    EXPECT_FALSE(camera.Open());
    EXPECT_FALSE(camera.Close());
    EXPECT_EQ(camera.GetCameraName(), nullptr);
    EXPECT_FALSE(camera.GetParameter(ZEL_PARAM_HSIZE, 4, &word));
    EXPECT_TRUE(camera.GetParameter(ZEL_PARAM_DROPPED_FRAMES, 4, &word));
    EXPECT_FALSE(camera.ResetCamera());
    EXPECT_EQ(static_cast<ZelCamera&>(camera).GetPendingImage(), nullptr);
    EXPECT_EQ(camera.GetLastPendingImage(), nullptr);
    EXPECT_FALSE(camera.Start());
    EXPECT_FALSE(camera.Stop());
    EXPECT_FALSE(camera.SetTransportValue(1));
    EXPECT_FALSE(camera.SetExposureToDefault());
    EXPECT_FALSE(camera.SetTextCommand("x"));
    EXPECT_FALSE(camera.SetImageCallback(nullptr, nullptr));
    EXPECT_FALSE(camera.StartTriggerAcquisition());
    EXPECT_FALSE(camera.SoftwareTrigger());
    EXPECT_EQ(camera.RecvData(nullptr, 0, 0), 0);
    EXPECT_EQ(camera.StartCommon(), 1);
}

}  // namespace
}  // namespace zel::test
