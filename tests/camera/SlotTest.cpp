// The small operations, and a camera object that has no transport.
#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

class SlotTest : public CameraTest {};

TEST_F(SlotTest, DataTypeSizes) {
    for (const auto& [code, size] : {std::pair(0, 0), {3, 4}, {5, 8}, {9, 1}, {-1, 4}, {99, 4}}) {
        EXPECT_EQ(m_Camera->GetDataTypeSize(code), size) << code;
    }
}

TEST_F(SlotTest, KindsOfLink) {
    for (const auto& [type, kind] : {std::pair(3, 1), {4, 0}, {5, 2}, {6, 0}}) {
        m_Transport.m_Answers.interface_type = type;
        EXPECT_EQ(m_Camera->GetCameraInterfaceType(), kind) << type;
    }
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
