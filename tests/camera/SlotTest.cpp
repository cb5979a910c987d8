// The small operations, and what the interfaces answer by default.
#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

class SlotTest : public CameraTest {};

TEST_F(SlotTest, DataTypeSizes) {
    const std::pair<int, int> sizes[] = {{0, 0}, {1, 1}, {9, 1}, {2, 2},  {6, 2},  {4, 8}, {5, 8},
                                         {8, 8}, {3, 4}, {7, 4}, {10, 4}, {-1, 4}, {99, 4}};
    for (const auto& [code, size] : sizes) EXPECT_EQ(m_Camera->GetDataTypeSize(code), size) << code;
}

TEST_F(SlotTest, KindsOfLink) {
    const std::pair<int, int> kinds[] = {{3, 1}, {4, 0}, {5, 2}, {6, 0}, {0, 0}};
    for (const auto& [type, kind] : kinds) {
        m_Transport.m_Answers.interface_type = type;
        EXPECT_EQ(m_Camera->GetCameraInterfaceType(), kind) << type;
    }
}

TEST_F(SlotTest, ResetRestartsAndTakesBackTheBinning) {
    Refuse(CAMERA_RESET);
    EXPECT_TRUE(m_Camera->ResetCamera());
    EXPECT_THAT(SentLines(), testing::ElementsAre("set 45 1", "set 15 1", "set 16 1"));
    EXPECT_EQ(m_Clock.CountSleeps(100), 1);
}

TEST_F(SlotTest, DefaultExposureIsTheCameras) {
    m_Table.m_Attributes[EXPOSURE_TIME] = MakeAttributes(EXPOSURE_TIME, "", 1, 9999, 1234);
    EXPECT_TRUE(m_Camera->SetExposureToDefault());
    EXPECT_EQ(m_Table.m_Values[EXPOSURE_TIME], 1234);
}

TEST_F(SlotTest, TransportQueriesPassThrough) {
    m_Transport.m_Answers.status_value = 6;
    m_Transport.m_Answers.throughput = 1.5;
    m_Transport.m_Answers.frame_rate = 2.5;
    m_Transport.m_Answers.latency = 3.5;
    m_Transport.m_Answers.utilization = 4.5;
    EXPECT_EQ(m_Camera->QueryTransportValue(), 6);
    EXPECT_TRUE(m_Camera->SetTransportValue(9));
    EXPECT_EQ(m_Transport.Calls().back(), "SetStatusValue 9");
    EXPECT_EQ(m_Camera->GetLinkThroughput(), 1.5);
    EXPECT_EQ(m_Camera->GetLinkFrameRate(), 2.5);
    EXPECT_EQ(m_Camera->GetLinkLatency(), 3.5);
    EXPECT_EQ(m_Camera->GetLinkUtilization(), 4.5);
    EXPECT_EQ(m_Camera->GetCameraInterface(), &m_Transport);
}

TEST(WithoutTransport, EveryOperationAnswersItsNothing) {
    ZelCameraControl camera(nullptr, nullptr);
    int word = 0;
    EXPECT_FALSE(camera.Open());
    EXPECT_FALSE(camera.Close());
    EXPECT_EQ(camera.GetCameraName(), nullptr);
    EXPECT_FALSE(camera.SetCameraName("x"));
    EXPECT_FALSE(camera.GetParameter(ZEL_PARAM_HSIZE, 4, &word));
    EXPECT_TRUE(camera.GetParameter(ZEL_PARAM_DROPPED_FRAMES, 4, &word));
    EXPECT_FALSE(camera.ResetCamera());
    EXPECT_EQ(static_cast<ZelCamera&>(camera).GetPendingImage(), nullptr);
    EXPECT_EQ(camera.GetLastPendingImage(), nullptr);
    EXPECT_FALSE(camera.FreeImage(nullptr));
    EXPECT_FALSE(camera.Start());
    EXPECT_FALSE(camera.Start(1));
    EXPECT_FALSE(camera.Stop());
    EXPECT_EQ(camera.QueryTransportValue(), 0);
    EXPECT_FALSE(camera.SetTransportValue(1));
    EXPECT_FALSE(camera.SetExposureToDefault());
    EXPECT_FALSE(camera.SetTextCommand("x"));
    EXPECT_FALSE(camera.SetImageCallback(nullptr, nullptr));
    EXPECT_FALSE(camera.SetCameraControlCallback(nullptr, nullptr));
    EXPECT_FALSE(camera.StartTriggerAcquisition());
    EXPECT_FALSE(camera.StopTriggerAcquisition(1));
    EXPECT_FALSE(camera.SoftwareTrigger());
    EXPECT_EQ(camera.GetLinkThroughput(), 0.0);
    EXPECT_EQ(camera.SendData(nullptr, 0), 0);
    EXPECT_EQ(camera.RecvData(nullptr, 0, 0), 0);
    EXPECT_EQ(camera.StartCommon(), 1);
    EXPECT_EQ(camera.StopCommon(), 1);
}

// An interface that implements nothing, as an application built against an older library meets it.
class BareCamera : public ZelCameraInternal {};

TEST(Defaults, AreTheTablesLastColumn) {
    BareCamera camera;
    int flag = 5;
    EXPECT_TRUE(camera.Open() && camera.Close() && camera.IsOpen(&flag) && !camera.IsOpen(nullptr));
    EXPECT_EQ(flag, 5);
    EXPECT_EQ(camera.GetCameraName(), nullptr);
    EXPECT_EQ(camera.GetDataTypeSize(5), 0);
    EXPECT_TRUE(camera.GetParameter(1, 4, &flag) && camera.SetParameter(1, &flag) && camera.SetParameterValue(1, 2));
    EXPECT_EQ(camera.GetParameterValue(5), 0);
    EXPECT_TRUE(camera.Start() && camera.Start(3) && camera.Stop() && camera.FreeAllPendingImages());
    EXPECT_FALSE(camera.FreeImage(nullptr));
    EXPECT_EQ(camera.GetPendingImage(), nullptr);
    EXPECT_EQ(camera.Reserved19() + camera.Reserved20() + camera.QueryTransportValue() + camera.GetLastError(), 0);
    EXPECT_EQ(camera.GetLastErrorStr(), nullptr);
    EXPECT_TRUE(camera.Reserved27(1, 2, 3) && camera.Reserved38() && camera.Reserved59());
    EXPECT_TRUE(camera.SetTextCommand("x") && camera.SoftwareTrigger() && camera.StopTriggerAcquisition(0));
    EXPECT_EQ(camera.GetPendingColorImage(), nullptr);
    EXPECT_EQ(camera.GetLinkLatency(), 0.0);
}

}  // namespace
}  // namespace zel::test
