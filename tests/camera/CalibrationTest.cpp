// The camera object and its tap balance: what a connection downloads, what it keeps, and the operations in between.
#include <cstdio>
#include <fstream>

#include "platform/Environment.h"
#include "tests/camera/CameraFixture.h"
#include "tests/tapbalance/ScriptedFlash.h"
#include "util/ProgressReporter.h"

namespace zel::test {
namespace {

constexpr const char* kSerialNumber = "calibration test";

class CalibrationTest : public CameraTest {
  protected:
    CalibrationTest() {
        platform::SetEnvironment("XDG_DATA_HOME", testing::TempDir().c_str());
        m_Table.m_Blocks[SERIAL_NUMBER] = TextBytes(kSerialNumber);
        m_Table.m_Texts["info"] = "ZEL A30-M\r\nFPGA: 118\r\nend";
        m_Table.m_Values[VGA_GAIN] = 100;
        m_Flash.Install(MakeTable(20, 4), MakeTable(24, 4, 1));
        m_Transport.SetHandler([this](const Bytes& datagram) {
            const bool flash = datagram.size() > 5 && datagram[0] == 9 && datagram[3] == 't' && datagram[4] == 'b';
            return flash ? m_Flash.Answer(datagram) : m_Table.Answer(datagram);
        });
        // The display's steps, and no window.
        ProgressReporter::SetCallback(
            [](const char* line1, const char*, int percent, void* context) {
                static_cast<CalibrationTest*>(context)->m_Shown.push_back(std::string(line1) + " " +
                                                                          std::to_string(percent));
            },
            this);
        for (const int select : {0, 1}) std::remove(CachePath(select).c_str());
    }
    ~CalibrationTest() override {
        ProgressReporter::SetCallback(nullptr, nullptr);
        for (const int select : {0, 1}) std::remove(CachePath(select).c_str());
        platform::SetEnvironment("XDG_DATA_HOME", nullptr);
    }

    std::string CachePath(int select) {
        TapBalance names(m_NoProtocol, "names");
        names.SetCameraTexts("A30-M", kSerialNumber);
        names.SelectTable(select);
        return names.CacheFilePath();
    }
    bool Balanced() {
        int enabled = 0;
        m_Camera->GetParameter(ZEL_PARAM_TAP_BALANCE_ENABLE, 4, &enabled);
        return enabled == 1;
    }
    // A camera object of another program run.
    void StartAnew() {
        m_Camera = std::make_unique<ZelCameraControl>(&m_Transport, "test");
        m_Transport.SetCameraCommon(m_Camera.get());
        m_Flash.m_Commands.clear();
        m_Shown.clear();
    }
    bool Loads(const char* shown) const {
        return std::any_of(m_Shown.begin(), m_Shown.end(), [&](const std::string& s) { return s.starts_with(shown); });
    }

    platform::RecursiveLock m_NoLock;
    TextProtocol m_NoProtocol{nullptr, "none", m_NoLock};
    ScriptedFlash m_Flash;
    std::vector<std::string> m_Shown;
};

TEST_F(CalibrationTest, TheFirstConnectionDownloadsTheSecondReadsTheCache) {
    EXPECT_FALSE(m_Camera->TapBalanceEnable(true)) << "no data yet";
    EXPECT_TRUE(m_Camera->Open());
    EXPECT_TRUE(Balanced());
    EXPECT_TRUE(std::ifstream(CachePath(0)).good() && std::ifstream(CachePath(1)).good());
    EXPECT_TRUE(Loads("Stopping camera...") && Loads("Loading primary data... 5") &&
                Loads("Loading secondary data... 95"));
    EXPECT_EQ(m_Shown.back(), " -1") << "the display is gone";
    EXPECT_EQ(SentTexts().front(), "info\r\n");
    EXPECT_EQ(m_Flash.Count("tb r 16 8"), 1) << "the second row of table 0, once";

    StartAnew();
    m_Camera->TapBalanceEnable(true);
    EXPECT_TRUE(m_Camera->Open());
    EXPECT_TRUE(Balanced());
    EXPECT_TRUE(m_Shown.empty()) << "no download";
    EXPECT_LE(m_Flash.m_Commands.size(), 3u + 2 * 9) << "directories only";
}

TEST_F(CalibrationTest, WithoutTheWishNothingIsAsked) {
    EXPECT_TRUE(m_Camera->Open());
    EXPECT_TRUE(SentTexts().empty());
    EXPECT_FALSE(Balanced());
    EXPECT_TRUE(m_Camera->SetParameterValue(ZEL_PARAM_TAP_BALANCE_ENABLE, 1))
        << "true, but there is nothing to do it with";
    EXPECT_FALSE(Balanced());
    EXPECT_TRUE(m_Camera->Close());
    m_Camera->TapBalanceEnable(true);
    m_Camera->TapBalanceEnable(false);
    EXPECT_TRUE(m_Camera->Open());
    EXPECT_TRUE(SentTexts().empty()) << "the wish was taken back";
}

TEST_F(CalibrationTest, AFileThatDiffersFromTheCameraIsReplaced) {
    m_Camera->TapBalanceEnable(true);
    ASSERT_TRUE(m_Camera->Open());
    m_Flash.Install(MakeTable(20, 4, 7), MakeTable(24, 4, 8));
    for (const bool download : {true, false}) {
        StartAnew();
        m_Camera->TapBalanceEnable(true);
        ASSERT_TRUE(m_Camera->Open());
        EXPECT_TRUE(Balanced());
        EXPECT_EQ(!m_Shown.empty(), download);
    }
    std::ofstream(CachePath(1)) << "half a fi";
    StartAnew();
    m_Camera->TapBalanceEnable(true);
    ASSERT_TRUE(m_Camera->Open());
    EXPECT_TRUE(Balanced() && !m_Shown.empty());
}

TEST_F(CalibrationTest, AFaultInTheMiddleLeavesTheCameraUsable) {
    const struct {
        const char* command;
        const char* reply;
    } faults[] = {{"tb f s", ""},
                  {"tb g 0", "ERR"},
                  {"tb r 16 8", ""},
                  {"tb g 2", "ERR"},
                  {"tb r 1e 8", "1 2 3 4 5 6 7 8"}};  // the last one damages a row
    for (const auto& fault : faults) {
        SCOPED_TRACE(fault.command);
        StartAnew();
        m_Flash.m_Fault = [&](const std::string& command) -> std::optional<std::string> {
            if (command == fault.command) return fault.reply;
            return std::nullopt;
        };
        m_Camera->TapBalanceEnable(true);
        EXPECT_TRUE(m_Camera->Open());
        EXPECT_FALSE(Balanced());
        EXPECT_EQ(m_Shown.empty(), fault.command == faults[0].command || fault.command == faults[1].command)
            << "a display for rows only";
        EXPECT_FALSE(std::ifstream(CachePath(0)).good()) << "nothing is kept of it";
        EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_HSIZE), 16);
        EXPECT_TRUE(m_Camera->Close());
        m_Flash.m_Fault = nullptr;
        EXPECT_TRUE(m_Camera->Open()) << "the next connection tries again";
        EXPECT_TRUE(Balanced());
        m_Camera->Close();
        for (const int select : {0, 1}) std::remove(CachePath(select).c_str());
    }
}

// The page that the camera had in hand before belongs to the past, with or without a wish for calibration.
TEST_F(CalibrationTest, ANewConnectionLoadsItsPagesAnew) {
    ASSERT_TRUE(m_Camera->Open());
    ASSERT_TRUE(m_Camera->TapBalanceGetTableConfig(nullptr, nullptr));
    ASSERT_TRUE(m_Camera->TapBalanceGetTableData(0, nullptr, nullptr));
    ASSERT_TRUE(m_Camera->Close());
    ASSERT_TRUE(m_Camera->Open());
    m_Flash.m_Commands.clear();
    ASSERT_TRUE(m_Camera->TapBalanceGetTableData(0, nullptr, nullptr));
    EXPECT_EQ(m_Flash.Count("tb g 1"), 1);
}

// Tables that come without a wish are calculated for the gain that the camera has, not for none.
TEST_F(CalibrationTest, TheGainIsReadWithTablesThatAreLoadedLater) {
    const std::string master = testing::TempDir() + "zel_gain_20MHz.txt";
    std::ofstream(master) << "4 2\n0 1 1 0 0\n1 1 1 0 0\n2 1 1 0 0\n3 1 1 0 0\n";
    const auto readings = [&] {
        const std::vector<std::string> lines = SentLines();
        return std::count(lines.begin(), lines.end(), "get " + std::to_string(VGA_GAIN));
    };
    EXPECT_TRUE(m_Camera->TapBalanceLoadDataFromMasterFile(master.c_str()));
    EXPECT_EQ(readings(), 0) << "the camera is not open";
    ASSERT_TRUE(m_Camera->Open());
    EXPECT_EQ(readings(), 0);
    EXPECT_TRUE(m_Camera->TapBalanceLoadDataFromMasterFile(master.c_str()));
    EXPECT_EQ(readings(), 1);
    EXPECT_TRUE(m_Camera->TapBalanceLoadDataFromCamera());
    EXPECT_EQ(readings(), 2);
    std::remove(master.c_str());
}

// A camera without tables of its own takes the general ones, where somebody put them.
TEST_F(CalibrationTest, ACameraWithoutTablesTakesTheMasterFilesOfTheFolder) {
    m_Flash.PutDirectory(255, {0, 0, 0}, {0, 0, 0});
    const std::string cache = CachePath(0);
    const std::string folder = cache.substr(0, cache.find_last_of("/\\") + 1);
    const std::string masters[] = {folder + "CameraTable_20MHz.txt", folder + "CameraTable_40MHz.txt"};
    const auto opens_balanced = [&] {
        StartAnew();
        m_Camera->TapBalanceEnable(true);
        EXPECT_TRUE(m_Camera->Open());
        return Balanced();
    };
    for (const std::string& master : masters) {
        ASSERT_FALSE(std::ifstream(master).good()) << "somebody's own file is left alone: " << master;
    }
    for (const std::string& master : masters) {
        EXPECT_FALSE(opens_balanced()) << "both files are needed";
        std::ofstream(master) << "4 4\n0 1 1 1 1\n1 1 1 1 1\n2 1 1 1 1\n3 1 1 1 1\n";
    }
    EXPECT_TRUE(opens_balanced());
    EXPECT_FALSE(std::ifstream(cache).good()) << "they are not this camera's";
    EXPECT_EQ(m_Flash.Count("tb w") + m_Flash.Count("tb s"), 0) << "nothing is written into the camera";
    m_Flash.Install(MakeTable(20, 4), MakeTable(24, 4, 1));
    EXPECT_TRUE(opens_balanced());
    EXPECT_TRUE(std::ifstream(cache).good()) << "its own tables come first";
    for (const std::string& master : masters) std::remove(master.c_str());
}

TEST_F(CalibrationTest, AllOperationsReachTheTapBalance) {
    int rows = 0;
    int taps = 0;
    float mv = 0;
    float gains[4] = {};
    EXPECT_TRUE(m_Camera->TapBalanceSelectTable(1));
    EXPECT_FALSE(m_Camera->TapBalanceSelectTable(2));
    m_Camera->TapBalanceSelectTable(1);
    EXPECT_TRUE(m_Camera->TapBalanceGetTableConfig(&rows, &taps));
    EXPECT_EQ(rows, 24);
    EXPECT_EQ(taps, 4);
    EXPECT_TRUE(m_Camera->TapBalanceGetTableData(3, &mv, gains));
    EXPECT_EQ(gains[3], MakeTable(24, 4, 1).Gains(3)[3]);
    EXPECT_TRUE(m_Camera->TapBalanceLoadDataFromCamera());
    EXPECT_TRUE(m_Camera->TapBalanceSetTableConfig(0, 5, 2));
    m_Camera->TapBalanceSelectTable(0);
    EXPECT_TRUE(m_Camera->TapBalanceSetTableData(4, 50.0f, gains));
    EXPECT_FALSE(m_Camera->TapBalanceSetTableData(5, 50.0f, gains));
    EXPECT_TRUE(m_Camera->TapBalanceWriteTableConfigToCamera());
    EXPECT_TRUE(m_Camera->TapBalanceWriteDataToCamera());
    EXPECT_TRUE(m_Camera->TapBalanceFlashTest());
    EXPECT_FALSE(m_Camera->TapBalanceLoadDataFromMasterFile("none_20MHz.txt"));
    EXPECT_TRUE(m_Camera->TapBalanceGetTableConfig(&rows, &taps));
    EXPECT_EQ(rows, 5);
    EXPECT_EQ(taps, 2);
}

}  // namespace
}  // namespace zel::test
