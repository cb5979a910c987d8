// Cache files and master files.
#include <clocale>
#include <filesystem>

#include "platform/Files.h"
#include "platform/User.h"
#include "tapbalance/TableText.h"
#include "tests/tapbalance/TapBalanceFixture.h"

namespace zel::test {
namespace {

class CacheFileTest : public TapBalanceTest {
  protected:
    // Downloads both tables and writes both files.
    void FillCache(const TapTable& first, const TapTable& second) {
        m_Flash.Install(first, second);
        ASSERT_TRUE(m_TapBalance.LoadDataFromCamera());
        for (const int select : {0, 1}) {
            m_Paths[select] = CachePath(select);
            ASSERT_TRUE(m_TapBalance.WriteDataToFile());
        }
        m_TapBalance.SelectTable(0);
    }
    std::string m_Paths[2];
};

TEST_F(CacheFileTest, TheTextIsTheAgreedOne) {
    TapTable two(1, 2);
    two.SetRow(0, {1.5f, {0.9f, 1.0000001f}});
    Sha1::Digest digest{};
    digest[0] = 255;
    digest[19] = 7;
    EXPECT_EQ(FormatCacheFile(two, digest),
              "255 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 7\n1 2\n1.5000000 0.9000000 1.0000001 0 0\n");
    TapTable four(1, 4);
    four.SetRow(0, {5000.0f, {2.0f, 0.0f, 1.25f, 0.00000005f}});
    EXPECT_EQ(FormatCacheFile(four, digest),
              "255 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 7\n1 4\n5000.0000000 2.0000000 0.0000000 1.2500000 0.0000001\n");
    EXPECT_EQ(DigestText(digest), "ff0000000000000000007") << "no leading zeros";
}

TEST_F(CacheFileTest, WhatIsWrittenIsReadBack) {
    for (const int taps : {2, 4}) {
        FillCache(MakeTable(30, taps), MakeTable(12, taps, 2));
        TapBalance other(m_TextProtocol, "other");
        other.SetGain(50);
        for (const int select : {0, 1}) {
            other.SelectTable(select);
            const auto commands = m_Flash.m_Commands.size();
            EXPECT_TRUE(other.LoadDataFromFile(m_Paths[select].c_str(), false));
            EXPECT_EQ(m_Flash.m_Commands.size(), commands) << "no check was asked for";
            EXPECT_TRUE(other.LoadDataFromFile(m_Paths[select].c_str(), true));
        }
        EXPECT_TRUE(other.Enable(true));
        m_TapBalance.SetGain(50);
        m_TapBalance.Enable(true);
        for (const int select : {0, 1}) {
            EXPECT_EQ(Entries(other.TablesFor(select), 1), Entries(m_TapBalance.TablesFor(select), 1));
        }
    }
}

// A German application's decimal comma does not get into the files.
TEST_F(CacheFileTest, TheLocaleDoesNotMatter) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    bool comma = false;
    for (const char* name : {"de_DE.UTF-8", "de_DE", "German_Germany.1252"})
        comma = comma || std::setlocale(LC_ALL, name);
    std::printf("a locale with a decimal comma: %s\n", comma ? "set" : "not installed here");
    FillCache(MakeTable(9, 2), MakeTable(9, 2));
    EXPECT_NE(ReadText(m_Paths[0]).find("12.2500000 "), std::string::npos);
    EXPECT_TRUE(m_TapBalance.LoadDataFromFile(m_Paths[0].c_str(), true));
    std::setlocale(LC_ALL, before.c_str());
}

TEST_F(CacheFileTest, AnyOfThreeDigestsThatDiffersIsAMismatch) {
    FillCache(MakeTable(10, 2), MakeTable(10, 2));
    const std::string good = ReadText(m_Paths[0]);
    ASSERT_TRUE(m_TapBalance.LoadDataFromFile(m_Paths[0].c_str(), true));
    const std::size_t row = good.find("\n10 2\n") + 6;
    std::string data = good;
    data[row + 3] = '9';  // a decimal of the first level
    std::string line = "1 " + good.substr(good.find(' ') + 1);
    if (line == good) line = "2 " + good.substr(good.find(' ') + 1);
    for (const std::string& text : {data, line}) {
        WriteText(m_Paths[0], text);
        EXPECT_FALSE(m_TapBalance.LoadDataFromFile(m_Paths[0].c_str(), true));
        EXPECT_FALSE(m_TapBalance.DataFault());
        m_TapBalance.Enable(true);
        EXPECT_FALSE(m_TapBalance.TablesFor(0)) << "the table is not configured any more";
        EXPECT_TRUE(m_TapBalance.TablesFor(1));
        WriteText(m_Paths[0], good);
        EXPECT_TRUE(m_TapBalance.LoadDataFromFile(m_Paths[0].c_str(), true));
    }
    m_Flash.Install(MakeTable(10, 2, 9), MakeTable(10, 2));
    EXPECT_FALSE(m_TapBalance.LoadDataFromFile(m_Paths[0].c_str(), true)) << "the camera's differs";
    EXPECT_EQ(ReadText(m_Paths[0]), good) << "the file is not deleted";
}

TEST_F(CacheFileTest, AnUnreadableDigestEndsTheCorrection) {
    FillCache(MakeTable(10, 2), MakeTable(10, 2));
    ASSERT_TRUE(m_TapBalance.Enable(true));
    m_Flash.m_Fault = [](const std::string& command) -> std::optional<std::string> {
        if (command.starts_with("tb r")) return "";
        return std::nullopt;
    };
    EXPECT_FALSE(m_TapBalance.LoadDataFromFile(m_Paths[0].c_str(), true));
    EXPECT_TRUE(m_TapBalance.DataFault());
    EXPECT_FALSE(m_TapBalance.DataValid());
    unsigned short pixels[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_FALSE(m_TapBalance.TranslatePixels(8, 1, 2, 0, pixels));
    EXPECT_FALSE(m_TapBalance.TablesFor(0));
    EXPECT_FALSE(m_TapBalance.Enable(true));
    EXPECT_FALSE(m_TapBalance.Enabled());
    m_Flash.m_Fault = nullptr;
    EXPECT_TRUE(m_TapBalance.LoadDataFromCamera());
    EXPECT_FALSE(m_TapBalance.Enable(true)) << "until the object is made anew";
}

TEST_F(CacheFileTest, NamesOfTheFiles) {
    const std::pair<const char*, const char*> texts[] = {
        {"A30-M", "A30-M"}, {"../../x", ".._.._x"}, {"c:\\x*?\n", "c__x___"}, {nullptr, ""}};
    for (const auto& [text, part] : texts) {
        m_TapBalance.SetCameraTexts(text, "17");
        EXPECT_TRUE(CachePath(0).ends_with(std::string("zel_") + part + "_17_20MHz.txt")) << CachePath(0);
        EXPECT_TRUE(CachePath(1).ends_with(std::string("zel_") + part + "_17_40MHz.txt"));
    }
    m_TapBalance.SetCameraTexts(std::string(100, 'x').c_str(), "y");
    EXPECT_TRUE(CachePath(0).ends_with("_" + std::string(63, 'x') + "_y_20MHz.txt")) << CachePath(0);
}

// On purpose: the path then begins with the separator.
TEST_F(CacheFileTest, WithoutAFolderThePathBeginsWithTheSeparator) {
    for (const std::string& data_folder : {std::string("/dev/null"), testing::TempDir()}) {
        platform::SetEnvironment("XDG_DATA_HOME", data_folder.c_str());  // means nothing on Windows
        const std::string folder = platform::CalibrationFolder();
        std::printf("the calibration folder is \"%s\"\n", folder.c_str());
        EXPECT_TRUE(CachePath(0).starts_with(folder + platform::PathSeparator() + "zel_test model_")) << CachePath(0);
    }
}

TEST_F(CacheFileTest, MasterFilesSelectTheirTable) {
    const std::string folder = testing::TempDir() + "40MHz_masters";
    std::filesystem::create_directories(folder);
    const std::string path = folder + "/CameraTable_20MHz.txt";
    WriteText(path, "4 2\n0 1 +1 0 0\n100.5 1.1 0.9 0 0\r\n 200\t1 1 0 0\n300 1e0 1 0 0 and more\n");
    m_TapBalance.SelectTable(1);
    EXPECT_TRUE(m_TapBalance.LoadDataFromMasterFile(path.c_str())) << "the folder's name does not count";
    EXPECT_EQ(m_TapBalance.SelectedTable(), 0);
    EXPECT_TRUE(m_TapBalance.Enable(true));
    EXPECT_TRUE(m_TapBalance.TablesFor(0));
    EXPECT_FALSE(m_TapBalance.TablesFor(1));
    EXPECT_TRUE(m_TapBalance.PrintTable());
    for (const char* name : {"CameraTable.txt", "", "20Mhz.txt"}) {
        EXPECT_FALSE(m_TapBalance.LoadDataFromMasterFile(name)) << name;
    }
    EXPECT_FALSE(m_TapBalance.LoadDataFromMasterFile(nullptr));
    EXPECT_FALSE(m_TapBalance.LoadDataFromMasterFile((folder + "/none_40MHz.txt").c_str()));
    EXPECT_FALSE(m_TapBalance.LoadDataFromFile(folder.c_str(), false)) << "a folder is no file";
    std::filesystem::remove_all(folder);
}

// A file is replaced as a whole: what can't be written completely leaves the old one.
TEST_F(CacheFileTest, ACrashInTheMiddleLeavesTheOldFile) {
    const std::string path = testing::TempDir() + "zel_replaced.txt";
    ASSERT_TRUE(platform::ReplaceTextFile(path, "old\n"));
    ASSERT_TRUE(platform::ReplaceTextFile(path, "older than new\n"));
    EXPECT_FALSE(std::filesystem::exists(path + ".part"));
    WriteText(path + ".part", "a crash left this");
    EXPECT_EQ(ReadText(path), "older than new\n");
    ASSERT_TRUE(platform::ReplaceTextFile(path, "new\n"));
    EXPECT_EQ(ReadText(path), "new\n");
    std::filesystem::create_directory(path + ".part");  // can't be opened for writing
    EXPECT_FALSE(platform::ReplaceTextFile(path, "lost\n"));
    EXPECT_EQ(ReadText(path), "new\n");
    EXPECT_FALSE(platform::ReplaceTextFile(testing::TempDir() + "no_such_folder/x", "lost\n"));
    std::string contents;
    EXPECT_FALSE(platform::ReadTextFile(path, 3, contents)) << "longer than allowed";
    EXPECT_TRUE(platform::ReadTextFile(path, 4, contents));
    std::filesystem::remove_all(path + ".part");
    std::filesystem::remove(path);
}

}  // namespace
}  // namespace zel::test
