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
        platform::SetEnvironment("XDG_DATA_HOME", m_Folder.string().c_str());
        zel_set_progress_callback(&Note, this);
    }
    ~CalibrationSystemTest() override {
        zel_set_progress_callback(nullptr, nullptr);
        m_CameraLink.Mend(0);
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

    const fs::path m_Folder = fs::path(testing::TempDir()) / "zel-calibration-system-test";
    SimulatedLibrary m_CameraLink{"edt_camera_link.dll"};
    std::vector<std::string> m_Shown;
};

TEST_F(CalibrationSystemTest, AnUnplugLeavesTheOldFilesAndOneDownloadServesEveryLaterConnection) {
    for (const int speed : {20, 40}) std::ofstream(CacheFile(speed)) << "old\n";
    m_CameraLink("fault 0 unplug text=tb after=50");
    auto* const camera = static_cast<ZelCameraInternal*>(m_Sdk->GetCamera(kCameraLink));
    EXPECT_FALSE(camera->TapBalanceEnable(true)) << "the wish is noted, but there are no tables";
    EXPECT_FALSE(camera->Open());
    for (const int speed : {20, 40}) EXPECT_EQ(FileText(speed), "old\n");

    m_CameraLink.Mend(0);
    std::string files[2];
    for (const bool first : {true, false}) {
        m_Shown.clear();
        ASSERT_TRUE(camera->Open());
        EXPECT_EQ(camera->GetParameterValue(ZEL_PARAM_TAP_BALANCE_ENABLE), 1);
        const std::vector<std::string> lines = {"Stopping camera...", "Loading primary data...",
                                                "Loading secondary data...", ""};
        EXPECT_EQ(m_Shown, first ? lines : std::vector<std::string>()) << "later there is nothing to wait for";
        for (const int i : {0, 1}) {
            const std::string text = FileText(20 + 20 * i);
            EXPECT_TRUE(first ? text != "old\n" : text == files[i]);
            files[i] = text;
        }
        ASSERT_TRUE(camera->Close());
    }
    EXPECT_TRUE(Opened(kCameraLink)->Start() && m_Frames.WaitFor(1));
}

}  // namespace
}  // namespace zel::test
