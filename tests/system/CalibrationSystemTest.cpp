// Calibration of the taps as an application meets it: the first connection downloads, the next ones read the files.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <vector>

#include "include/ZelCameraInternal.h"
#include "include/ZelProgress.h"
#include "platform/Environment.h"
#include "platform/User.h"
#include "tests/system/SystemFixture.h"

namespace zel::test {
namespace {

namespace fs = std::filesystem;

struct Report {
    std::string line1;
    int percent;
};

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

    static void ZEL_CALL Note(const char* line1, const char*, int percent, void* context) {
        static_cast<CalibrationSystemTest*>(context)->m_Shown.push_back({line1, percent});
    }

    static fs::path CacheFile(int speed) {
        return fs::path(platform::CalibrationFolder()) / ("zel_L2048-4M_300101_" + std::to_string(speed) + "MHz.txt");
    }
    static std::string FileText(int speed) {
        std::ifstream file(CacheFile(speed));
        return std::string(std::istreambuf_iterator<char>(file), {});
    }
    int Exchanges() const { return std::stoi(m_CameraLink("exchanges 0")); }
    bool Balanced() { return m_Camera->GetParameterValue(ZEL_PARAM_TAP_BALANCE_ENABLE) == 1; }
    bool DeliversAFrame() {
        m_Camera->SetImageNotificationCallback(Count, &m_Frames);
        const int before = m_Frames.Calls();
        return m_Camera->Start() && m_Frames.WaitFor(before + 1) && m_Camera->Stop();
    }

    fs::path m_Folder;
    SimulatedLibrary m_CameraLink{"edt_camera_link.dll"};
    ZelCameraInternal* m_Camera = nullptr;
    std::vector<Report> m_Shown;
};

TEST_F(CalibrationSystemTest, OneDownloadServesEveryLaterConnection) {
    EXPECT_FALSE(m_Camera->TapBalanceEnable(true)) << "the wish is noted, but there are no tables";
    const int start = Exchanges();
    ASSERT_TRUE(m_Camera->Open());
    const int with_download = Exchanges() - start;
    EXPECT_TRUE(Balanced());

    std::vector<std::string> lines;
    for (const Report& report : m_Shown) {
        if (lines.empty() || lines.back() != report.line1) lines.push_back(report.line1);
    }
    EXPECT_THAT(lines,
                testing::ElementsAre("Stopping camera...", "Loading primary data...", "Loading secondary data...", ""));
    EXPECT_GT(m_Shown.size(), 40u) << "60 rows";
    EXPECT_GE(m_Shown[m_Shown.size() - 2].percent, 90);
    const std::string files[] = {FileText(20), FileText(40)};
    EXPECT_THAT(files[0], testing::HasSubstr("\n32 4\n"));
    EXPECT_THAT(files[1], testing::HasSubstr("\n28 4\n"));

    ASSERT_TRUE(m_Camera->Close());
    m_Shown.clear();
    const int again = Exchanges();
    ASSERT_TRUE(m_Camera->Open());
    const int with_files = Exchanges() - again;
    std::printf("exchanges of a connection: %d with the download, %d with the files\n", with_download, with_files);
    EXPECT_LT(2 * with_files, with_download);
    EXPECT_TRUE(m_Shown.empty()) << "there is nothing to wait for";
    EXPECT_TRUE(Balanced());
    EXPECT_EQ(FileText(20), files[0]);
    EXPECT_EQ(FileText(40), files[1]);
    EXPECT_TRUE(DeliversAFrame());
}

// The files of another calibration stand until a whole download has come and proved right.
TEST_F(CalibrationSystemTest, AFaultInTheMiddleLeavesTheOldFilesAndAUsableCamera) {
    m_Camera->TapBalanceEnable(true);
    ASSERT_TRUE(m_Camera->Open());
    const std::string good = FileText(20);
    const std::string old = "1 " + good.substr(good.find(' ') + 1) + "an older calibration\n";
    const struct {
        const char* when;
        const char* last_line;
    } faults[] = {{"text=tb_r after=24", "Loading primary data..."},  // the very first row
                  {"text=tb_r after=60", "Loading primary data..."},
                  {"text=tb_g after=4", "Loading primary data..."},  // its second page
                  {"text=tb_r after=160", "Loading secondary data..."}};
    for (const auto& fault : faults) {
        SCOPED_TRACE(fault.when);
        m_Camera->Close();
        for (const int speed : {20, 40}) std::ofstream(CacheFile(speed)) << old;
        m_CameraLink(std::string("fault 0 exception 1 times=0 ") + fault.when);
        m_Shown.clear();
        EXPECT_TRUE(m_Camera->Open());
        EXPECT_FALSE(Balanced());
        ASSERT_GE(m_Shown.size(), 2u);
        EXPECT_EQ(m_Shown.back().line1, "") << "the display is gone";
        EXPECT_EQ(m_Shown[m_Shown.size() - 2].line1, fault.last_line);
        for (const int speed : {20, 40}) EXPECT_EQ(FileText(speed), old);
        EXPECT_TRUE(DeliversAFrame());

        m_CameraLink("fault 0 clear");
        m_Camera->Close();
        EXPECT_TRUE(m_Camera->Open()) << "the next connection tries again";
        EXPECT_TRUE(Balanced());
        EXPECT_EQ(FileText(20), good);
    }
}

TEST_F(CalibrationSystemTest, AnUnplugInTheMiddleEndsTheConnectionAndLeavesTheOldFiles) {
    for (const int speed : {20, 40}) std::ofstream(CacheFile(speed)) << "old\n";
    m_CameraLink("fault 0 unplug text=tb after=50");
    m_Camera->TapBalanceEnable(true);
    EXPECT_FALSE(m_Camera->Open());
    for (const int speed : {20, 40}) EXPECT_EQ(FileText(speed), "old\n");
    m_CameraLink("fault 0 clear");
    m_CameraLink.Plug(0);
    m_Camera = static_cast<ZelCameraInternal*>(m_Sdk->GetCamera(kCameraLink));
    m_Camera->TapBalanceEnable(true);
    ASSERT_TRUE(m_Camera->Open());
    EXPECT_TRUE(Balanced());
    EXPECT_NE(FileText(40), "old\n");
}

}  // namespace
}  // namespace zel::test
