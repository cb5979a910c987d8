// The camera object and its tap balance: what a connection downloads, what it keeps, and the operations in between.
#include <cstdio>
#include <fstream>

#include "tests/camera/CameraFixture.h"
#include "tests/support/Process.h"
#include "tests/tapbalance/ScriptedFlash.h"
#include "util/ProgressReporter.h"

namespace zel::test {
namespace {

struct CalibrationTest : CameraTest {
    CalibrationTest() {
        platform::SetEnvironment("XDG_DATA_HOME", testing::TempDir().c_str());
        m_Table.m_Blocks[SERIAL_NUMBER] = TextBytes("calibration test");
        m_Flash.Install(MakeTable(20, 4), MakeTable(24, 4, 1));
        m_Transport.SetHandler([this](const Bytes& datagram) {
            const bool flash = datagram.size() > 5 && datagram[0] == 9 && datagram[3] == 't' && datagram[4] == 'b';
            return flash ? m_Flash.Answer(datagram) : m_Table.Answer(datagram);
        });
        // No window.
        ProgressReporter::SetCallback(
            [](const char* line, const char*, int percent, void* context) {
                auto& self = *static_cast<CalibrationTest*>(context);
                self.m_Shown = percent;
                if (self.m_Lines.empty() || self.m_Lines.back() != line) self.m_Lines.emplace_back(line);
            },
            this);
        ExchangeLock lock;
        TextProtocol nowhere(nullptr, "none", lock);
        TapBalance names(nowhere, "names");
        names.SetCameraTexts("A30-M", "calibration test");
        for (const int select : {1, 0}) {
            names.SelectTable(select);
            m_Files.insert(m_Files.begin(), names.CacheFilePath());
            std::remove(m_Files[0].c_str());
        }
    }
    ~CalibrationTest() override {
        ProgressReporter::SetCallback(nullptr, nullptr);
        for (const std::string& file : m_Files) std::remove(file.c_str());
        platform::SetEnvironment("XDG_DATA_HOME", nullptr);
    }

    // How often the second row of the first table was read.
    int Downloads() const { return m_Flash.Count("tb r 16 8"); }
    bool Balanced() { return Value(ZEL_PARAM_TAP_BALANCE_ENABLE) == 1; }
    // A camera object of another program run connects, and wishes for calibration.
    bool ConnectsBalanced() {
        m_Camera = std::make_unique<ZelCameraControl>(&m_Transport, "test");
        m_Transport.SetCameraCommon(m_Camera.get());
        m_Flash.m_Commands.clear();
        m_Camera->TapBalanceEnable(true);
        EXPECT_TRUE(m_Camera->Open());
        return Balanced();
    }
    static std::string Content(const std::string& path) {
        std::ifstream file(path);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    std::vector<std::string> m_Files;  // the cache's
    ScriptedFlash m_Flash;
    int m_Shown = 0;  // on the display; -1 takes it away
    std::vector<std::string> m_Lines;
};

TEST_F(CalibrationTest, TheFirstConnectionDownloadsTheSecondReadsTheCache) {
    EXPECT_FALSE(m_Camera->TapBalanceEnable(true)) << "no data yet";
    EXPECT_TRUE(m_Camera->Open() && Balanced());
    EXPECT_THAT(m_Lines,
                testing::ElementsAre("Stopping camera...", "Loading primary data...", "Loading secondary data...", ""));
    EXPECT_FALSE(Content(m_Files[0]).empty() || Content(m_Files[1]).empty());
    EXPECT_EQ(Downloads(), 1);
    EXPECT_TRUE(ConnectsBalanced());
    EXPECT_EQ(m_Lines.size(), 4u) << "there is nothing to wait for";
    EXPECT_LE(m_Flash.m_Commands.size(), 3u + 2 * 9) << "directories only";
    m_Flash.Install(MakeTable(20, 4, 7), MakeTable(24, 4, 8));
    EXPECT_TRUE(ConnectsBalanced() && Downloads() == 1) << "files that differ from the camera are replaced";
    std::ofstream(m_Files[1]) << "half a fi";
    EXPECT_TRUE(ConnectsBalanced() && Downloads() == 1);
}

TEST_F(CalibrationTest, AFaultInTheMiddleLeavesTheOldFilesAndAUsableCamera) {
    // The last one damages a row.
    for (const auto& [asked, reply] : {std::pair("tb f s", ""), {"tb g 2", "ERR"}, {"tb r 1e 8", "1 2 3 4 5 6 7 8"}}) {
        SCOPED_TRACE(asked);
        for (const std::string& file : m_Files) std::ofstream(file) << "another calibration";
        m_Flash.Fail(asked, reply);
        m_Shown = -1;
        EXPECT_FALSE(ConnectsBalanced());
        EXPECT_EQ(m_Shown, -1) << "the display is gone";
        for (const std::string& file : m_Files) EXPECT_EQ(Content(file), "another calibration");
        EXPECT_EQ(Value(ZEL_PARAM_HSIZE), 16);
        m_Flash.m_Fault = nullptr;
        EXPECT_TRUE(m_Camera->Close() && m_Camera->Open() && Balanced()) << "the next connection tries again";
    }
}

// The page that the camera had in hand before belongs to the past, with or without a wish for calibration.
TEST_F(CalibrationTest, ANewConnectionLoadsItsPagesAnew) {
    ASSERT_TRUE(m_Camera->Open() && m_Camera->TapBalanceGetTableConfig(nullptr, nullptr));
    ASSERT_TRUE(m_Camera->TapBalanceGetTableData(0, nullptr, nullptr));
    ASSERT_TRUE(m_Camera->Close() && m_Camera->Open());
    m_Flash.m_Commands.clear();
    ASSERT_TRUE(m_Camera->TapBalanceGetTableData(0, nullptr, nullptr));
    EXPECT_EQ(m_Flash.Count("tb g 1"), 1);
}

// Tables that come without a wish are calculated for the gain that the camera has, not for none.
TEST_F(CalibrationTest, TheGainIsReadWithTablesThatAreLoadedLater) {
    for (const int readings : {0, 1}) {
        EXPECT_TRUE(readings == 0 ? m_Camera->Open() : m_Camera->TapBalanceLoadDataFromCamera());
        EXPECT_EQ(m_Transport.CountSent(GetRequest(VGA_GAIN)), readings);
    }
    int rows = 0;
    EXPECT_TRUE(m_Camera->TapBalanceGetTableConfig(&rows, nullptr));
    EXPECT_EQ(rows, 24) << "the table that came last stays selected";
}

// As they are made: laid out, filled row by row, and in the camera once they are written.
TEST_F(CalibrationTest, TablesAreWrittenThroughTheCamera) {
    ASSERT_TRUE(m_Camera->Open());
    const float gains[] = {1.0f, 0.5f, 1.5f, 1.0f};
    for (const int table : {0, 1}) {
        EXPECT_TRUE(m_Camera->TapBalanceSelectTable(table) && m_Camera->TapBalanceSetTableConfig(table, 5 + table, 4));
        for (int row = 0; row < 5 + table; ++row) {
            EXPECT_TRUE(m_Camera->TapBalanceSetTableData(row, static_cast<float>(2 * row), gains));
        }
    }
    EXPECT_TRUE(m_Camera->TapBalanceWriteTableConfigToCamera());
    for (const int table : {0, 1}) {
        EXPECT_TRUE(m_Camera->TapBalanceSelectTable(table) && m_Camera->TapBalanceWriteDataToCamera());
    }
    EXPECT_TRUE(m_Camera->TapBalanceFlashTest());
    std::remove(m_Files[0].c_str());
    EXPECT_TRUE(ConnectsBalanced() && m_Camera->TapBalanceSelectTable(1));
    int rows = 0, taps = 0;
    float level = 0, read[4] = {};
    EXPECT_TRUE(m_Camera->TapBalanceGetTableConfig(&rows, &taps) && rows == 6 && taps == 4);
    EXPECT_TRUE(m_Camera->TapBalanceGetTableData(3, &level, read));
    EXPECT_EQ(level, 6.0f);
    EXPECT_THAT(read, testing::ElementsAreArray(gains));
    EXPECT_FALSE(m_Camera->TapBalanceLoadDataFromMasterFile("no such file_20MHz.txt"));
    EXPECT_FALSE(m_Camera->TapBalanceSelectTable(2) || m_Camera->TapBalanceGetTableConfig(&rows, &taps));
}

// A camera without tables of its own takes the general ones, where somebody put them.
TEST_F(CalibrationTest, ACameraWithoutTablesTakesTheMasterFilesOfTheFolder) {
    m_Flash.PutDirectory(255, {0, 0, 0}, {0, 0, 0});
    const std::string folder = m_Files[0].substr(0, m_Files[0].find_last_of("/\\") + 1);
    const std::string masters[] = {folder + "CameraTable_20MHz.txt", folder + "CameraTable_40MHz.txt"};
    for (const std::string& master : masters) ASSERT_FALSE(std::ifstream(master).good()) << "somebody's own file";
    for (const std::string& master : masters) {
        EXPECT_FALSE(ConnectsBalanced()) << "both files are needed";
        EXPECT_FALSE(m_Camera->TapBalanceEnable(true)) << "half a pair is nothing to correct with";
        std::ofstream(master) << "4 4\n0 1 1 1 1\n1 1 1 1 1\n2 1 1 1 1\n3 1 1 1 1\n";
    }
    EXPECT_TRUE(ConnectsBalanced());
    EXPECT_TRUE(Content(m_Files[0]).empty()) << "they are not this camera's";
    EXPECT_EQ(m_Flash.Count("tb w") + m_Flash.Count("tb s"), 0) << "nothing is written into the camera";
    // A flash memory that can't be read may hold tables: the general ones would be the wrong ones.
    for (const auto& [asked, reply] : {std::pair("tb p s", ""), {"tb g 0", "ERR flash"}, {"tb r 0 8", "255"}}) {
        m_Flash.Fail(asked, reply);
        EXPECT_FALSE(ConnectsBalanced() || m_Camera->TapBalanceEnable(true)) << asked;
    }
    m_Flash.m_Fault = nullptr;
    m_Flash.Install(MakeTable(20, 4), MakeTable(24, 4, 1));
    EXPECT_TRUE(ConnectsBalanced());
    EXPECT_FALSE(Content(m_Files[0]).empty()) << "its own tables come first";
    std::remove(m_Files[1].c_str());
    m_Flash.Fail("tb r 16 8", "");
    EXPECT_FALSE(ConnectsBalanced() || m_Camera->TapBalanceEnable(true)) << "one cache file and no download";
    m_Flash.m_Fault = nullptr;
    for (const std::string& master : masters) std::remove(master.c_str());
}

}  // namespace
}  // namespace zel::test
