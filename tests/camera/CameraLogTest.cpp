// Log lines of the camera object that its users search for.
#include <cstdio>
#include <fstream>

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
    EXPECT_EQ(m_Log.Count("ZelCameraControl::Open() - ENTRY", kLogTrace), 1);
    EXPECT_EQ(m_Log.Count("CameraModelStr:A30-M\n", kLogTrace), 1);
    EXPECT_EQ(m_Log.Count("A30\n", kLogTrace), 1);
    m_Camera->Open();
    EXPECT_EQ(m_Log.Count("ZelCameraControl::Open() - m_CameraOpened == 1", kLogTrace), 1);
    m_Table.m_Blocks[HW_MODEL] = TextBytes("Z");
    m_Camera->ConnectCommon();
    EXPECT_EQ(m_Log.Count("***ERROR****: uknown camera type\n", kLogError), 1);
    m_Transport.m_Answers.disconnect = 1;
    m_Camera->Close();
    EXPECT_EQ(m_Log.Count("ZelCameraControl::Close() - m_Camera->Disconnect() failed", kLogError), 1);
}

TEST_F(CameraLogTest, AttributeSelection) {
    const ZelParamAttrId selection{ZEL_PARAM_HSIZE, ZEL_ATTR_MAX_VALUE};
    m_Camera->SetParameter(ZEL_PARAM_CMD_ID_ATTR_ID, &selection);
    EXPECT_EQ(m_Log.Count("m_ParameterAttrTranslateTable[4]  :6"), 1);
    EXPECT_EQ(m_Log.Count("m_ParameterAttrTranslateTable[param_attr_id->ParamID]:13"), 1);
    EXPECT_EQ(m_Log.Count("m_ZELParamInedx:ZEL_PARAM_HSIZE, m_ZELAttrID:ZEL_ATTR_MAX_VALUE"), 1);
    m_Log.Clear();
    int value = 0;
    m_Camera->GetParameter(ZEL_PARAM_VSIZE, 4, &value);
    EXPECT_EQ(m_Log.Count(">>> CAMERA SIDE PARAMETER <<< ZEL_PARAM_HSIZE"), 1) << "the selection is named";
    m_Camera->GetParameter(ZEL_PARAM_EXPOSURE_UNIT, 4, &value);
    EXPECT_EQ(m_Log.Count("[[[ HOST SIDE PARAMETER ]]] ZEL_PARAM_EXPOSURE_UNIT"), 1);
    m_Camera->GetParameter(99, 4, &value);
    EXPECT_EQ(m_Log.Count("((param_id < 0) || (param_id > ZEL_MAX_PARAMS))", kLogError), 1);
    m_Camera->SetParameterValue(ZEL_PARAM_DROPPED_FRAMES, 1);
    EXPECT_EQ(m_Log.Count("ZEL_PARAM_DROPPED_FRAMES is a read-only parameter!", kLogWarning), 1);
}

// Every way in which the tap balance learns the analog gain, and the bit depth at connection.
TEST_F(CameraLogTest, TapBalanceFollowsTheCamera) {
    m_Table.m_Values[VGA_GAIN] = 300;
    m_Table.m_Texts["info"] = "ZEL A30-M\r\nFPGA: 118\r\nend";
    m_Table.m_Texts["tb f s"] = "ERR no flash";
    EXPECT_FALSE(m_Camera->TapBalanceEnable(true));
    ASSERT_TRUE(m_Camera->Open());
    EXPECT_EQ(m_Log.Count("fpga version    :118\n"), 1);
    EXPECT_EQ(m_Log.Count("SetGain - gain:300.000000"), 1) << "connection";
    EXPECT_EQ(m_Log.Count("***ERROR***: no calibration data, the taps of this camera are not balanced", kLogError), 1);
    m_Camera->SetParameterValue(ZEL_PARAM_GAIN, 400);
    EXPECT_EQ(m_Log.Count("SetGain - gain:400.000000"), 1);
    m_Camera->SetParameterValue(ZEL_PARAM_VGA_GAIN, 50);
    EXPECT_EQ(m_Log.Count("SetGain - gain:50.000000"), 1);
    m_Table.m_Values[VGA_GAIN] = -7;
    EXPECT_TRUE(m_Camera->SyncTapBalanceGain());
    EXPECT_EQ(m_Log.Count("SetGain - gain:-7.000000"), 1) << "the transport's request";
    Refuse(VGA_GAIN);
    EXPECT_FALSE(m_Camera->SyncTapBalanceGain());
    const std::string path = testing::TempDir() + "zel_log_40MHz.txt";
    std::ofstream(path) << "4 2\n1 1 1 0 0\n2 1 1 0 0\n3 1 1 0 0\n4 1 1 0 0\n";
    EXPECT_TRUE(m_Camera->TapBalanceLoadDataFromMasterFile(path.c_str()));
    EXPECT_EQ(m_Log.Count("CalculateLUT() gain:-7.000000 num_entries:4096 num_taps:2 m_MaxNumPixelValues:4096"), 1);
    std::remove(path.c_str());
}

TEST_F(CameraLogTest, RetriesAreCountedFromTwo) {
    Refuse(CAMERA_STATE);
    m_Camera->Start();
    for (const char* number : {"2", "3", "4"}) {
        EXPECT_EQ(m_Log.Count("***ERROR***: ZelCameraControl::Start() - m_SyncTable.Set(CAMERA_STATE, 2) failed - "
                              "retry attempt #" +
                                  std::string(number) + "\n",
                              kLogError),
                  1);
    }
}

TEST_F(CameraLogTest, Events) {
    for (const auto& [id, lines] : {std::pair(8u, 1), std::pair(10u, 1), std::pair(11u, 0)}) {
        m_Log.Clear();
        const ZelCameraEvent event{id, 0, {}};
        m_Camera->EventCallback(&event);
        EXPECT_EQ(m_Log.Lines().size(), static_cast<std::size_t>(lines)) << id;
    }
    m_Camera->SetCameraControlCallback([](int, void*) {}, nullptr);
    m_Log.Clear();
    m_Transport.EmitEvent(9);
    EXPECT_EQ(m_Log.CountContaining("CAMERA_EVENT_RECONNECT - camera_control_callback:0x"), 1);
    EXPECT_EQ(m_Log.Count("ZelCameraControl::EventCallback() - calling back into the app with "
                          "ZEL_CAMERA_CONTROL_RECONNECT"),
              1);
    EXPECT_EQ(m_Log.Count("ZelCameraControl::EventCallback() - returning from the app after "
                          "ZEL_CAMERA_CONTROL_RECONNECT event"),
              1);
}

TEST_F(CameraLogTest, Creation) {
    zel_camera_control_create(nullptr, "");
    EXPECT_EQ(m_Log.Count("Creating a ZelCameraControl object!", kLogTrace), 1);
    EXPECT_EQ(m_Log.Count("ICameraInterface is NULL!", kLogError), 1);
    CameraControlLogger().Destroy();
}

}  // namespace
}  // namespace zel::test
