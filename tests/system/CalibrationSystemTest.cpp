// Calibration of the taps as an application meets it: the first connection downloads, the next ones read the files.
#include <filesystem>
#include <fstream>
#include <vector>

#include "include/ZelCameraInternal.h"
#include "include/ZelProgress.h"
#include "platform/User.h"
#include "tests/support/Process.h"
#include "tests/system/SystemFixture.h"

namespace zel::test {
namespace {

namespace fs = std::filesystem;

class CalibrationSystemTest : public SystemTest {
  protected:
    CalibrationSystemTest() {
        // On Windows the files lie in the user's own folder.
        m_Folder = fs::path(testing::TempDir()) / "zel-calibration-system-test";
        platform::SetEnvironment("XDG_DATA_HOME", m_Folder.string().c_str());
        fs::create_directories(m_Folder);
        for (const int speed : {20, 40}) fs::remove(CacheFile(speed));
        m_CameraLink("fault 0 clear");
        m_Camera = static_cast<ZelCameraInternal*>(m_Sdk->GetCamera(kCameraLink));
        zel_set_progress_callback(&Note, this);
    }
    ~CalibrationSystemTest() override {
        zel_set_progress_callback(nullptr, nullptr);
        m_CameraLink("fault 0 clear");
        m_CameraLink.Plug(0);
        for (const int speed : {20, 40}) fs::remove(CacheFile(speed));
        fs::remove_all(m_Folder);
        platform::SetEnvironment("XDG_DATA_HOME", nullptr);
    }

    // The lines that the display shows, each once.
    static void ZEL_CALL Note(const char* line1, const char*, int, void* context) {
        auto& shown = static_cast<CalibrationSystemTest*>(context)->m_Shown;
        if (shown.empty() || shown.back() != line1) shown.emplace_back(line1);
    }

    static fs::path CacheFile(int speed) {
        return fs::path(platform::CalibrationFolder()) / ("zel_L2048-4M_300101_" + std::to_string(speed) + "MHz.txt");
    }
    static std::string FileText(int speed) {
        std::ifstream file(CacheFile(speed));
        return std::string(std::istreambuf_iterator<char>(file), {});
    }
    bool Balanced() { return m_Camera->GetParameterValue(ZEL_PARAM_TAP_BALANCE_ENABLE) == 1; }

    fs::path m_Folder;
    SimulatedLibrary m_CameraLink{"edt_camera_link.dll"};
    ZelCameraInternal* m_Camera = nullptr;
    std::vector<std::string> m_Shown;
};

TEST_F(CalibrationSystemTest, AnUnplugLeavesTheOldFilesAndOneDownloadServesEveryLaterConnection) {
    for (const int speed : {20, 40}) std::ofstream(CacheFile(speed)) << "old\n";
    m_CameraLink("fault 0 unplug text=tb after=50");
    EXPECT_FALSE(m_Camera->TapBalanceEnable(true)) << "the wish is noted, but there are no tables";
    EXPECT_FALSE(m_Camera->Open());
    for (const int speed : {20, 40}) EXPECT_EQ(FileText(speed), "old\n");

    m_CameraLink("fault 0 clear");
    m_CameraLink.Plug(0);
    m_Camera = static_cast<ZelCameraInternal*>(m_Sdk->GetCamera(kCameraLink));
    m_Camera->TapBalanceEnable(true);
    m_Shown.clear();
    ASSERT_TRUE(m_Camera->Open());
    EXPECT_TRUE(Balanced());
    EXPECT_THAT(m_Shown,
                testing::ElementsAre("Stopping camera...", "Loading primary data...", "Loading secondary data...", ""));
    const std::string files[] = {FileText(20), FileText(40)};

    ASSERT_TRUE(m_Camera->Close());
    m_Shown.clear();
    ASSERT_TRUE(m_Camera->Open());
    EXPECT_TRUE(m_Shown.empty()) << "there is nothing to wait for";
    EXPECT_TRUE(Balanced());
    EXPECT_EQ(FileText(20), files[0]);
    EXPECT_EQ(FileText(40), files[1]);
    m_Camera->SetImageNotificationCallback(Count, &m_Frames);
    EXPECT_TRUE(m_Camera->Start() && m_Frames.WaitFor(1) && m_Camera->Stop());
}

}  // namespace
}  // namespace zel::test
