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

TEST_F(CalibrationCameraTest, WhatIsWrittenReadsBackUnderItsDigests) {
    const zel::Camera& camera = *m_Camera;
    CalibrationTables tables = ReadTables(camera);
    // Of another size, so that every row lies elsewhere in the memory.
    tables[0].rows.resize(11);
    tables[1].rows.insert(tables[1].rows.end(), 50, {});
    for (std::size_t i = 0; i < tables[1].rows.size(); ++i) {
        tables[1].rows[i] = {static_cast<float>(i) * 17.3f, {0.0f, 2.0f, 1.0f / static_cast<float>(i + 1), 0.3f}};
    }
    WriteTables(camera, tables);
    EXPECT_EQ(ReadTables(camera), tables);
    const std::optional<FlashDirectory> directory = ReadDirectory(camera);
    ASSERT_TRUE(directory && directory->has_tables);
    for (std::size_t i = 0; i < 2; ++i) EXPECT_EQ(directory->digests[i], tables[i].ComputeDigest());
}

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
