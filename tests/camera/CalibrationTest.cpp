// The camera object and its tap balance: what a connection downloads, what it keeps, and the operations in between.
#include <cstdio>
#include <fstream>

#include "tests/camera/CameraFixture.h"
#include "tests/support/Process.h"
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
    // A camera object of another program run connects, and wishes for calibration.
    void Connect() {
        m_Camera = std::make_unique<ZelCameraControl>(&m_Transport, "test");
        m_Transport.SetCameraCommon(m_Camera.get());
        m_Flash.m_Commands.clear();
        m_Shown.clear();
        m_Camera->TapBalanceEnable(true);
        EXPECT_TRUE(m_Camera->Open());
    }
    std::string File(int select) {
        std::ifstream file(CachePath(select));
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    ExchangeLock m_NoLock;
    TextProtocol m_NoProtocol{nullptr, "none", m_NoLock};
    ScriptedFlash m_Flash;
    std::vector<std::string> m_Shown;
};

TEST_F(CalibrationTest, TheFirstConnectionDownloadsTheSecondReadsTheCache) {
    EXPECT_FALSE(m_Camera->TapBalanceEnable(true)) << "no data yet";
    EXPECT_TRUE(m_Camera->Open());
    EXPECT_TRUE(Balanced());
    EXPECT_FALSE(File(0).empty() || File(1).empty());
    EXPECT_EQ(m_Shown.back(), " -1") << "the display is gone";
    EXPECT_EQ(m_Flash.Count("tb r 16 8"), 1) << "the second row of table 0, once";

    Connect();
    EXPECT_TRUE(Balanced());
    EXPECT_TRUE(m_Shown.empty()) << "no download";
    EXPECT_LE(m_Flash.m_Commands.size(), 3u + 2 * 9) << "directories only";

    m_Flash.Install(MakeTable(20, 4, 7), MakeTable(24, 4, 8));
    Connect();
    EXPECT_TRUE(Balanced() && !m_Shown.empty()) << "files that differ from the camera are replaced";
    std::ofstream(CachePath(1)) << "half a fi";
    Connect();
    EXPECT_TRUE(Balanced() && !m_Shown.empty());
}

TEST_F(CalibrationTest, AFaultInTheMiddleLeavesTheOldFilesAndAUsableCamera) {
    // The last one damages a row.
    for (const auto& [asked, reply] : {std::pair("tb f s", ""),
                                       {"tb g 0", "ERR"},
                                       {"tb r 16 8", ""},
                                       {"tb g 2", "ERR"},
                                       {"tb r 1e 8", "1 2 3 4 5 6 7 8"}}) {
        SCOPED_TRACE(asked);
        for (const int select : {0, 1}) std::ofstream(CachePath(select)) << "another calibration";
        m_Flash.m_Fault = [&, fault = asked, answer = reply](const std::string& command) {
            return command == fault ? std::optional<std::string>(answer) : std::nullopt;
        };
        Connect();
        EXPECT_FALSE(Balanced());
        EXPECT_TRUE(m_Shown.empty() || m_Shown.back() == " -1") << "the display is gone";
        for (const int select : {0, 1}) EXPECT_EQ(File(select), "another calibration");
        EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_HSIZE), 16);
        EXPECT_TRUE(m_Camera->Close());
        m_Flash.m_Fault = nullptr;
        EXPECT_TRUE(m_Camera->Open()) << "the next connection tries again";
        EXPECT_TRUE(Balanced());
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
    const auto readings = [&] {
        const std::vector<std::string> lines = SentLines();
        return std::count(lines.begin(), lines.end(), "get " + std::to_string(VGA_GAIN));
    };
    ASSERT_TRUE(m_Camera->Open());
    EXPECT_EQ(readings(), 0);
    EXPECT_TRUE(m_Camera->TapBalanceLoadDataFromCamera());
    EXPECT_EQ(readings(), 1);
}

// A camera without tables of its own takes the general ones, where somebody put them.
TEST_F(CalibrationTest, ACameraWithoutTablesTakesTheMasterFilesOfTheFolder) {
    m_Flash.PutDirectory(255, {0, 0, 0}, {0, 0, 0});
    const std::string cache = CachePath(0);
    const std::string folder = cache.substr(0, cache.find_last_of("/\\") + 1);
    const std::string masters[] = {folder + "CameraTable_20MHz.txt", folder + "CameraTable_40MHz.txt"};
    const auto opens_balanced = [&] {
        Connect();
        return Balanced();
    };
    for (const std::string& master : masters) ASSERT_FALSE(std::ifstream(master).good()) << "somebody's own file";
    for (const std::string& master : masters) {
        EXPECT_FALSE(opens_balanced()) << "both files are needed";
        EXPECT_FALSE(m_Camera->TapBalanceEnable(true)) << "half a pair is nothing to correct with";
        std::ofstream(master) << "4 4\n0 1 1 1 1\n1 1 1 1 1\n2 1 1 1 1\n3 1 1 1 1\n";
    }
    EXPECT_TRUE(opens_balanced());
    EXPECT_TRUE(File(0).empty()) << "they are not this camera's";
    EXPECT_EQ(m_Flash.Count("tb w") + m_Flash.Count("tb s"), 0) << "nothing is written into the camera";
    // A flash memory that can't be read may hold tables: the general ones would be the wrong ones.
    for (const auto& [asked, reply] : {std::pair("tb p s", ""), {"tb g 0", "ERR flash"}, {"tb r 0 8", "255"}}) {
        m_Flash.Fail(asked, reply);
        EXPECT_FALSE(opens_balanced() || m_Camera->TapBalanceEnable(true)) << asked;
    }
    m_Flash.m_Fault = nullptr;
    m_Flash.Install(MakeTable(20, 4), MakeTable(24, 4, 1));
    EXPECT_TRUE(opens_balanced());
    EXPECT_FALSE(File(0).empty()) << "its own tables come first";
    std::remove(CachePath(1).c_str());
    m_Flash.Fail("tb r 16 8", "");
    EXPECT_FALSE(opens_balanced() || m_Camera->TapBalanceEnable(true)) << "one cache file and no download";
    m_Flash.m_Fault = nullptr;
    for (const std::string& master : masters) std::remove(master.c_str());
}

}  // namespace
}  // namespace zel::test
