// Log lines of the camera object that its users search for.
#include "camera/ZelCameraFactory.h"
#include "tests/camera/CameraFixture.h"
#include "tests/support/RecordedLog.h"

namespace zel::test {
namespace {

class CameraLogTest : public CameraTest {
  protected:
    RecordedLog m_Log;
};

TEST_F(CameraLogTest, ConnectionAndModel) {
    ASSERT_TRUE(m_Camera->Open());
    EXPECT_EQ(m_Log.Count("CameraModelStr:A30-M\n", kLogTrace), 1);
    m_Table.m_Blocks[HW_MODEL] = TextBytes("Z");
    m_Camera->ConnectCommon();
    EXPECT_EQ(m_Log.Count("***ERROR****: uknown camera type\n", kLogError), 1);
    m_Transport.m_Answers.disconnect = 1;
    m_Camera->Close();
    EXPECT_EQ(m_Log.Count("ZelCameraControl::Close() - m_Camera->Disconnect() failed", kLogError), 1);
}

TEST_F(CameraLogTest, Parameters) {
    const ZelParamAttrId selection{ZEL_PARAM_HSIZE, ZEL_ATTR_MAX_VALUE};
    m_Camera->SetParameter(ZEL_PARAM_CMD_ID_ATTR_ID, &selection);
    int value = 0;
    m_Camera->GetParameter(ZEL_PARAM_VSIZE, 4, &value);
    EXPECT_EQ(m_Log.Count(">>> CAMERA SIDE PARAMETER <<< ZEL_PARAM_HSIZE"), 1) << "on purpose: the selection is named";
    m_Camera->GetParameter(99, 4, &value);
    EXPECT_EQ(m_Log.Count("((param_id < 0) || (param_id > ZEL_MAX_PARAMS))", kLogError), 1);
    m_Log.Clear();
    m_Camera->SetParameterValue(ZEL_MAX_PARAMS, 1);
    EXPECT_TRUE(m_Log.Lines().empty());
    m_Camera->SetParameterValue(ZEL_PARAM_DROPPED_FRAMES, 1);
    EXPECT_EQ(m_Log.Count("ZEL_PARAM_DROPPED_FRAMES is a read-only parameter!", kLogWarning), 1);
}

// Every way in which the tap balance learns the analog gain.
TEST_F(CameraLogTest, TapBalanceFollowsTheGain) {
    m_Table.m_Values[VGA_GAIN] = 300;
    m_Table.m_Texts["tb f s"] = "ERR no flash";
    EXPECT_FALSE(m_Camera->TapBalanceEnable(true));
    ASSERT_TRUE(m_Camera->Open());
    EXPECT_EQ(m_Log.Count("SetGain - gain:300.000000"), 1) << "connection";
    EXPECT_EQ(
        m_Log.CountContaining("no calibration in use, the taps of this camera are not balanced: its flash memory"), 1);
    m_Camera->SetParameterValue(ZEL_PARAM_GAIN, 400);
    EXPECT_EQ(m_Log.Count("SetGain - gain:400.000000"), 1);
    m_Camera->SetParameterValue(ZEL_PARAM_VGA_GAIN, 50);
    EXPECT_EQ(m_Log.Count("SetGain - gain:50.000000"), 1);
    m_Table.m_Values[VGA_GAIN] = -7;
    EXPECT_TRUE(m_Camera->SyncTapBalanceGain());
    EXPECT_EQ(m_Log.Count("SetGain - gain:-7.000000"), 1) << "the transport's request";
}

// Why a small color camera's pictures have no colors.
TEST_F(CameraLogTest, ColorPath) {
    m_Camera->ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_16_BIT, 17);
    EXPECT_EQ(m_Log.Messages("ZelColorTransformMatrix", kLogError),
              std::vector<std::string>{"Invalid bit depth specified!"});
    const auto picture = [this] {
        m_Camera->ConnectCommon();
        m_Camera->StartCommon();
        m_Camera->SetPendingImage(m_Camera->GetFreeImage());
        m_Camera->GetPendingColorImage();
    };
    const char* no_space = "The color space has not been defined for this camera model/unit";
    m_Table.m_Exceptions.erase(CFA_TYPE);
    m_Table.m_Values[CFA_PHASE] = 7;
    m_Table.m_Blocks[CCM_OUTPUT_COLOR_SPACE] = TextBytes("sRGB");
    const unsigned short entries[4] = {};
    m_Camera->SetInputLinearizationTable(entries, 1, 4);
    picture();
    EXPECT_EQ(m_Log.Count(no_space, kLogError), 1);
    EXPECT_EQ(m_Log.Count("Failed to demosaic the color image!", kLogError), 1);
    EXPECT_EQ(m_Log.Count("Color input linearization step failed!", kLogError), 1);
    m_Log.Clear();
    m_Table.m_Blocks[CCM_OUTPUT_COLOR_SPACE] = TextBytes("XYZ");
    m_Table.m_Values[H_BIN] = m_Table.m_Values[V_BIN] = 2;
    picture();
    EXPECT_EQ(m_Log.Count(no_space, kLogError), 0);
    EXPECT_EQ(m_Log.Count("The color pipeline has been deactivated because xbin > 1 and/or ybin > 1 with a single "
                          "sensor camera!",
                          kLogError),
              1);
}

TEST_F(CameraLogTest, RetriesAreCountedFromTwo) {
    Refuse(CAMERA_STATE);
    m_Camera->Start();
    const std::string line = "ZelCameraControl::Start() - m_SyncTable.Set(CAMERA_STATE, 2) failed - retry attempt #";
    for (const char* number : {"2", "3", "4"}) EXPECT_EQ(m_Log.CountContaining(line + number), 1);
}

TEST_F(CameraLogTest, Events) {
    for (const auto& [id, lines] : {std::pair(8u, 1u), {10u, 1u}, {11u, 0u}}) {
        m_Log.Clear();
        const ZelCameraEvent event{id, 0, {}};
        m_Camera->EventCallback(&event);
        EXPECT_EQ(m_Log.Lines().size(), lines) << id;
    }
}

TEST_F(CameraLogTest, Creation) {
    zel_camera_control_create(nullptr, "");
    EXPECT_EQ(m_Log.Count("ICameraInterface is NULL!", kLogError), 1);
    CameraControlLogger().Destroy();
}

}  // namespace
}  // namespace zel::test
