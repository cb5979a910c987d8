// Log lines of the camera object that its users search for.
#include <cstdio>
#include <cstring>
#include <fstream>

#include "camera/ZelCameraFactory.h"
#include "kernels/CpuSupport.h"
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

// A line of the color path, and what is done to a small color camera for it.
struct ColorLine {
    const char* name;
    std::string message;
    int level;
    int count;
    void (*act)(ZelCameraControl& camera, TableCamera& table);
};
class ColorStepTest : public CameraLogTest {
  public:
    static void Picture(ZelCameraControl& camera, TableCamera& table) {
        table.m_Exceptions.erase(CFA_TYPE);
        if (!table.m_Values.count(CFA_PHASE)) table.m_Values[CFA_PHASE] = 1;
        camera.ConnectCommon();
        camera.StartCommon();
        ZelImage* image = camera.GetFreeImage();
        ASSERT_NE(image, nullptr);
        image->image_number = 42;
        camera.SetPendingImage(image);
        camera.GetPendingColorImage();
    }
    static void SetMatrices(TableCamera& table, double entry) {
        Bytes bytes(sizeof entry);
        std::memcpy(bytes.data(), &entry, sizeof entry);
        for (int i = 0; i < 9; ++i) table.m_Blocks[CCM_1_1 + i] = table.m_Blocks[DWB_1_1 + i] = bytes;
    }
    // Products that no number can hold, three operations that make them.
    static void Overflow(ZelCameraControl& camera, TableCamera& table) {
        SetMatrices(table, 1000);
        camera.ConnectCommon();
        const float huge[9] = {1e38f, 1e38f, 1e38f, 1e38f, 1e38f, 1e38f, 1e38f, 1e38f, 1e38f};
        EXPECT_TRUE(camera.ConcatenateColorMatrix(huge));
        for (const int operation : {8, 9, 10}) EXPECT_FALSE(camera.ConcatenateColorTransform(operation, 0));
    }
};

std::vector<ColorLine> ColorLines() {
    using Camera = ZelCameraControl;
    using Table = TableCamera;
    const auto picture = [](Camera& camera, Table& table) { ColorStepTest::Picture(camera, table); };
    return {
        {"Avx2", std::string("This CPU ") + (kernels::CpuHasAvx2() ? "does" : "does NOT") + " support AVX2", kLogTrace,
         1, picture},
        {"Fma", std::string("This CPU ") + (kernels::CpuHasFma() ? "does" : "does NOT") + " support FMA", kLogTrace, 1,
         picture},
        {"Phase", "CFA Phase: 1", kLogTrace, 1, picture},
        {"Coefficient", "Failed to get a color matrix coefficient!", kLogError, 1,
         [](Camera& camera, Table& table) {
             ColorStepTest::SetMatrices(table, 1);
             table.m_Exceptions[CCM_2_2] = kExceptionBadIndex;
             ColorStepTest::Picture(camera, table);
         }},
        {"Space", "The color space has not been defined for this camera model/unit", kLogError, 1,
         [](Camera& camera, Table& table) {
             table.m_Blocks[CCM_OUTPUT_COLOR_SPACE] = TextBytes("sRGB");
             ColorStepTest::Picture(camera, table);
         }},
        {"KnownSpace", "The color space has not been defined for this camera model/unit", kLogError, 0,
         [](Camera& camera, Table& table) {
             table.m_Blocks[CCM_OUTPUT_COLOR_SPACE] = TextBytes("XYZ");
             ColorStepTest::Picture(camera, table);
         }},
        {"Diagonal", "Color transform coefficients (diagonal): 1.000000, 1.000000, 1.000000", kLogTrace, 2,
         [](Camera& camera, Table&) {
             camera.ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_16_BIT, 0);
             camera.ConcatenateScratchpadTransform(ZEL_COLOR_TRANSFORM_16_BIT, 0);
         }},
        {"Depth", "Invalid bit depth specified!", kLogError, 2,
         [](Camera& camera, Table&) {
             camera.ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_16_BIT, 15);
             camera.ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_16_BIT_VARIANT, -1);
         }},
        {"DepthOfAnotherConnection", "Invalid bit depth specified!", kLogError, 0,
         [](Camera& camera, Table& table) {
             ColorStepTest::Picture(camera, table);  // 12 bits
             camera.ConnectCommon();
         }},
        {"Correction", "Failed to apply the camera correction matrix!", kLogError, 2, ColorStepTest::Overflow},
        {"Balance", "Failed to apply the default white balance matrix!", kLogError, 2, ColorStepTest::Overflow},
        {"Transform", "ApplyColorTransform called for pipeline: 1", kLogTrace, 1, picture},
        {"NoPhase", "Failed to demosaic the color image!", kLogError, 1,
         [](Camera& camera, Table& table) {
             table.m_Values[CFA_PHASE] = 7;
             ColorStepTest::Picture(camera, table);
         }},
        {"Binned",
         "The color pipeline has been deactivated because xbin > 1 and/or ybin > 1 with a single sensor camera!",
         kLogError, 1,
         [](Camera& camera, Table& table) {
             table.m_Values[H_BIN] = table.m_Values[V_BIN] = 2;
             ColorStepTest::Picture(camera, table);
         }},
        {"Region", "ROI processing was not done!", kLogWarning, 1,
         [](Camera& camera, Table& table) {
             table.m_Values[H_ROI_PIXELS] = 9;
             table.m_Values[H_ROI_ORIGIN] = 8;
             ColorStepTest::Picture(camera, table);
         }},
        {"Again", "Demosaic again because of scratchpad pipeline invocation!", kLogTrace, 1,
         [](Camera& camera, Table& table) {
             camera.SetScratchpadCallback([](ZelColorImage*, void*) { return 1; }, nullptr);
             ColorStepTest::Picture(camera, table);
         }},
        {"InputTable", "Color input linearization step failed!", kLogError, 1,
         [](Camera& camera, Table& table) {
             const unsigned short entries[4] = {};
             camera.SetInputLinearizationTable(entries, 1, 4);
             ColorStepTest::Picture(camera, table);
         }},
        {"OutputTable", "Color output non-linearization step failed!", kLogError, 1,
         [](Camera& camera, Table& table) {
             const unsigned short entries[4] = {};
             camera.SetOutputNonLinearizationTable(entries, 1, 1);
             ColorStepTest::Picture(camera, table);
         }},
        {"Number", "GetPendingColorImage() returned frame number: 42", kLogTrace, 1, picture},
        {"None", "GetPendingColorImage() returned 0", kLogTrace, 1,
         [](Camera& camera, Table&) { camera.GetPendingColorImage(); }},
        {"LastNone", "GetLastPendingColorImage() returned 0", kLogTrace, 1,
         [](Camera& camera, Table&) { camera.GetLastPendingColorImage(); }},
    };
}

class ColorLogTest : public ColorStepTest, public testing::WithParamInterface<ColorLine> {};

TEST_P(ColorLogTest, Line) {
    const ColorLine& line = GetParam();
    line.act(*m_Camera, m_Table);
    EXPECT_EQ(m_Log.Count(line.message, line.level), line.count) << line.message;
}

INSTANTIATE_TEST_SUITE_P(, ColorLogTest, testing::ValuesIn(ColorLines()),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(ColorStepTest, EachStepIsTimed) {
    for (const bool scratchpad : {false, true}) {
        const ZelScratchpadCallback callback = [](ZelColorImage*, void*) { return 0; };
        m_Camera->SetScratchpadCallback(scratchpad ? callback : nullptr, nullptr);
        m_Log.Clear();
        Picture(*m_Camera, m_Table);
        for (const char* step :
             {"PostProcessTapBalance", "PostProcessSubImage", "DemosaicColorImage", "PostProcessColorImage"}) {
            EXPECT_EQ(m_Log.CountContaining(step + std::string(" takes ")), 1) << step;
        }
        for (const char* step : {"ApplyInputLinearization", "ApplyColorTransform", "ApplyOutputNonLinearization"}) {
            EXPECT_EQ(m_Log.CountContaining(step + std::string(" takes ")), scratchpad ? 2 : 1) << "per pipeline";
        }
    }
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
