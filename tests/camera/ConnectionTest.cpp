// Opening, closing, recognising the model; small operations, and a camera object that has no transport.
#include "camera/ZelCameraFactory.h"
#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

struct ConnectionTest : CameraTest {
    bool Opened() {
        int open = 7;
        EXPECT_TRUE(m_Camera->IsOpen(&open));
        return open != 0;
    }
};

TEST_F(ConnectionTest, OpensOnceAndClosesAgain) {
    EXPECT_FALSE(m_Camera->IsOpen(nullptr) || Opened());
    m_Transport.ForgetCalls();
    EXPECT_TRUE(m_Camera->Open() && m_Camera->Open());
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
    for (int* answer : {&m_Transport.m_Answers.stop, &m_Transport.m_Answers.connect}) {
        *answer = answer == &m_Transport.m_Answers.stop ? ZEL_ERROR_UNSUPPORTED : ZEL_ERROR_CAMERA_COMM_FAILURE;
        EXPECT_FALSE(m_Camera->Open());
        EXPECT_EQ(m_Camera->GetLastError(), *answer);
    }
}

TEST_F(ConnectionTest, CodesThatAreAskedFor) {
    for (const auto& [code, size] : {std::pair(0, 0), {3, 4}, {5, 8}, {9, 1}, {-1, 4}, {99, 4}}) {
        EXPECT_EQ(m_Camera->GetDataTypeSize(code), size) << code;
    }
    for (const auto& [type, kind] : {std::pair(3, 1), {4, 0}, {5, 2}, {6, 0}}) {
        m_Transport.m_Answers.interface_type = type;
        EXPECT_EQ(m_Camera->GetCameraInterfaceType(), kind) << type;
    }
    *m_Camera->GetLastErrorPtr() = 16;
    EXPECT_STREQ(m_Camera->GetLastErrorStr(), "ZEL_ERROR_INVALID_BINNING_SELECTIONZEL_ERROR_UNKNOWN");
    for (const int code : {17, -1, 1000}) {
        *m_Camera->GetLastErrorPtr() = code;
        EXPECT_EQ(m_Camera->GetLastErrorStr(), nullptr);
    }
}

TEST_F(ConnectionTest, TheFirstModelCodeOfTheTableWins) {
    const struct {
        int type;
        const char* text;
        std::uint64_t value;
    } rows[] = {{CAMERA_TYPE_PLEORA_EBUS, "A30-M", kNoModelValue},  // one kind of link alone looks the model up
                {CAMERA_TYPE_USB, "ZEL D800 A30", 35000000},
                {CAMERA_TYPE_USB, "D800", 37000000},
                {CAMERA_TYPE_USB, "a30", 37000000}};  // unknown: the values stay
    for (const auto& [type, text, value] : rows) {
        m_Transport.m_Answers.interface_type = type;
        m_Table.m_Blocks[HW_MODEL] = TextBytes(text);
        EXPECT_EQ(m_Camera->ConnectCommon(), 0);
        std::uint64_t read = 1;
        m_Camera->GetParameter(ZEL_PARAM_MODEL_VALUE_1, 8, &read);
        EXPECT_EQ(read, value) << text;
    }
}

TEST_F(ConnectionTest, TheFactoryNeedsATransport) {
    EXPECT_EQ(zel_camera_control_create(nullptr, "x"), nullptr);
    ZelCamera* camera = zel_camera_control_create(&m_Transport, nullptr);
    ASSERT_NE(camera, nullptr);
    EXPECT_NE(m_Transport.Common(), m_Camera.get());
    zel_camera_control_destroy(camera);
    EXPECT_EQ(m_Transport.Common(), nullptr) << "the transport forgets a destroyed camera object";
}

TEST(WithoutTransport, EveryOperationAnswersItsNothing) {
    ZelCameraControl camera(nullptr, nullptr);
    int word = 0;
    EXPECT_FALSE(camera.Open() || camera.Close() || camera.Start() || camera.Stop() || camera.ResetCamera());
    EXPECT_FALSE(camera.StartTriggerAcquisition() || camera.SoftwareTrigger() || camera.SetTextCommand("x"));
    EXPECT_FALSE(camera.GetParameter(ZEL_PARAM_HSIZE, 4, &word) || camera.SetExposureToDefault());
    EXPECT_FALSE(camera.SetTransportValue(1) || camera.SetImageCallback(nullptr, nullptr));
    EXPECT_TRUE(camera.GetParameter(ZEL_PARAM_DROPPED_FRAMES, 4, &word));
    EXPECT_EQ(camera.GetCameraName(), nullptr);
    EXPECT_EQ(static_cast<ZelCamera&>(camera).GetPendingImage(), nullptr);
    EXPECT_EQ(camera.GetLastPendingImage(), nullptr);
    EXPECT_EQ(camera.RecvData(nullptr, 0, 0), 0);
    EXPECT_EQ(camera.StartCommon(), 1);
}

}  // namespace
}  // namespace zel::test
