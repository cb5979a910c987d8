// Tables on their way from and to a simulated camera whose link fails.
#include "tests/system/SystemFixture.h"
#include "tests/tools/zelcam/commands/ToolProcess.h"
#include "tools/zelcam/calibration/CalibrationCamera.h"
#include "tools/zelcam/calibration/CalibrationSource.h"
#include "zel/Sdk.h"

namespace zelcam {

TEST(CalibrationCameraTest, ALinkThatDiesInTheMiddleEndsInOneClearFailure) {
    const zel::test::SimulatedLibrary control("edt_camera_link.dll");
    const CacheFolder folder;
    UseFastCameras();
    zel::Sdk sdk;
    const zel::Camera camera = sdk.open();
    control("fault 0 exception 1 text=tb_r after=60 times=0");
    ExpectFailure([&] { ReadTables(camera); }, kFailed, "can't be read: row ");
    control("fault 0 clear");
    const CalibrationTables tables = ReadTables(camera);
    control("fault 0 exception 1 text=tb_s after=1 times=0");
    ExpectFailure([&] { WriteTables(camera, tables); }, kFailed, "may now hold half a table");
    control("fault 0 clear");
    control("fault 0 exception 1 text=tb_g");
    EXPECT_FALSE(ReadDirectory(camera));
    EXPECT_EQ(FindCalibrationSource(camera).name, "flash");
    control("fault 0 exception 1 text=tb_g");
    EXPECT_EQ(FindCalibrationSource(camera).why, "its flash memory can't be read");
}

}  // namespace zelcam
