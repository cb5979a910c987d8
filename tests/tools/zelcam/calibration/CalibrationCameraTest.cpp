// Tables on their way from and to a simulated camera whose link fails.
#include "tests/tools/zelcam/commands/ToolProcess.h"
#include "tools/zelcam/calibration/CalibrationCamera.h"
#include "tools/zelcam/calibration/CalibrationSource.h"
#include "zel/Sdk.h"

namespace zelcam {

class CalibrationCameraTest : public testing::Test {
  protected:
    CalibrationCameraTest() {
        UseFastCameras();
        m_Camera.emplace(m_Sdk.emplace().open());
    }

    CacheFolder m_Folder;
    std::optional<zel::Sdk> m_Sdk;
    std::optional<zel::Camera> m_Camera;
};

TEST_F(CalibrationCameraTest, ALinkThatDiesInTheMiddleEndsInOneClearFailure) {
    const zel::Camera& camera = *m_Camera;
    ASSERT_TRUE(SimCommand("fault 0 exception 1 text=tb_r after=60 times=0"));
    ExpectFailure([&] { ReadTables(camera); }, kFailed, "can't be read: row ");
    ASSERT_TRUE(SimCommand("fault 0 clear"));
    const CalibrationTables tables = ReadTables(camera);
    ASSERT_TRUE(SimCommand("fault 0 exception 1 text=tb_s after=1 times=0"));
    ExpectFailure([&] { WriteTables(camera, tables); }, kFailed, "may now hold half a table");
    ASSERT_TRUE(SimCommand("fault 0 clear"));
    ASSERT_TRUE(SimCommand("fault 0 exception 1 text=tb_g"));
    EXPECT_FALSE(ReadDirectory(camera));
    EXPECT_EQ(FindCalibrationSource(camera).name, "flash");
    ASSERT_TRUE(SimCommand("fault 0 exception 1 text=tb_g"));
    EXPECT_EQ(FindCalibrationSource(camera).why, "its flash memory can't be read");
}

}  // namespace zelcam
