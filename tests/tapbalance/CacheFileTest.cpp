// Cache files and master files.
#include <filesystem>

#include "platform/Files.h"
#include "platform/User.h"
#include "tests/tapbalance/TapBalanceFixture.h"

namespace zel::test {
namespace {

namespace fs = std::filesystem;

using CacheFileTest = TapBalanceTest;

TEST_F(CacheFileTest, AnyOfThreeDigestsThatDiffersIsAMismatch) {
    m_Flash.Install(MakeTable(10, 4), MakeTable(10, 4));
    ASSERT_TRUE(m_TapBalance.LoadDataFromCamera());
    const std::string path = CachePath(0);
    ASSERT_TRUE(m_TapBalance.WriteDataToFile());
    const std::string good = ReadText(path);
    ASSERT_TRUE(m_TapBalance.LoadDataFromFile(path.c_str(), true));
    std::string data = good;
    data[good.find("\n10 4\n") + 9] = '9';  // a decimal of the first level
    const std::string line = (good.starts_with("1 ") ? "2" : "1") + good.substr(good.find(' '));
    // A file that goes on behind its table was not written by this library.
    for (const std::string& text : {data, line, good + "12 1 1 0 0\n"}) {
        WriteText(path, text);
        EXPECT_FALSE(m_TapBalance.LoadDataFromFile(path.c_str(), true));
        m_TapBalance.Enable(true);
        EXPECT_FALSE(m_TapBalance.TablesFor(0)) << "the table is not configured any more";
    }
    WriteText(path, good);
    m_Flash.Install(MakeTable(10, 4, 9), MakeTable(10, 4));
    EXPECT_FALSE(m_TapBalance.LoadDataFromFile(path.c_str(), true)) << "the camera's differs";
    EXPECT_EQ(ReadText(path), good) << "the file is not deleted";
}

// On purpose: without a folder the path begins with the separator.
TEST_F(CacheFileTest, NamesOfTheFiles) {
    platform::SetEnvironment("XDG_DATA_HOME", "/dev/null");  // means nothing on Windows
    EXPECT_TRUE(CachePath(0).starts_with(platform::CalibrationFolder() + platform::PathSeparator() + "zel_test model"));
    const std::pair<const char*, const char*> texts[] = {
        {"A30-M", "A30-M"}, {"../../x", ".._.._x"}, {"c:\\x*?\n", "c__x___"}, {nullptr, ""}};
    for (const auto& [text, part] : texts) {
        m_TapBalance.SetCameraTexts(text, "17");
        EXPECT_TRUE(CachePath(0).ends_with(std::string("zel_") + part + "_17_20MHz.txt")) << CachePath(0);
        EXPECT_TRUE(CachePath(1).ends_with(std::string("zel_") + part + "_17_40MHz.txt")) << CachePath(1);
    }
}

TEST_F(CacheFileTest, MasterFilesSelectTheirTable) {
    const std::string folder = testing::TempDir() + "20MHz_masters";
    fs::create_directories(folder);
    const std::string path = folder + "/CameraTable_40MHz.txt";
    WriteText(path, "4 2\n0 1 +1 0 0\n100.5 1.1 0.9 0 0\r\n 200\t1 1 0 0\n300 1e0 1 0 0 and more\n");
    EXPECT_TRUE(m_TapBalance.LoadDataFromMasterFile(path.c_str()));
    EXPECT_TRUE(m_TapBalance.CacheFilePath().ends_with("40MHz.txt")) << "the folder's name does not count";
    EXPECT_TRUE(m_TapBalance.Enable(true) && m_TapBalance.TablesFor(1) && !m_TapBalance.TablesFor(0));
    for (const char* none : {"CameraTable.txt", "", "20Mhz.txt"})
        EXPECT_FALSE(m_TapBalance.LoadDataFromMasterFile(none));
    EXPECT_FALSE(m_TapBalance.LoadDataFromFile(folder.c_str(), false)) << "a folder is no file";
    fs::remove_all(folder);
}

// What stands in a file's place, or in that of its next version, is replaced and not written through, a pipe is not
// waited for; what can't be written completely leaves the old file.
TEST_F(CacheFileTest, AFileIsReplacedAsAWhole) {
    const std::string folder = testing::TempDir() + "zel_replaced", path = folder + "/file", other = folder + "/other";
    fs::remove_all(folder);  // what a crash left
    fs::create_directory(folder);
    WriteText(other, "other");
    for (const std::string& place : {path, path + ".part"}) {
        for (const bool pipe : {false, true}) {
            if (!pipe) fs::create_hard_link(other, place);
            if (pipe && std::system(("mkfifo \"" + place + "\"").c_str()) != 0) std::printf("no pipes here\n");
            std::string text;
            EXPECT_EQ(platform::ReadTextFile(place, 100, text), !pipe);
            EXPECT_TRUE(platform::ReplaceTextFile(path, "new\n"));
            EXPECT_EQ(ReadText(path) + ReadText(other), "new\nother");
            EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(path)));
            fs::remove(path);
        }
    }
    WriteText(path, "old\n");
    fs::create_directory(path + ".part");  // can't be opened for writing
    EXPECT_FALSE(platform::ReplaceTextFile(path, "lost\n"));
    EXPECT_EQ(ReadText(path), "old\n");
    fs::remove_all(folder);
}

}  // namespace
}  // namespace zel::test
