// Cache files and master files.
#include <clocale>
#include <filesystem>

#include "platform/Files.h"
#include "platform/User.h"
#include "calibration/TableText.h"
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
    EXPECT_EQ(DigestText(digest), "ff0000000000000000007") << "no leading zeros";
}

TEST_F(CacheFileTest, WhatIsWrittenIsReadBack) {
    for (const int taps : {2, 4}) {
        FillCache(MakeTable(30, taps), MakeTable(12, taps, 2));
        TapBalance other(m_TextProtocol, "other");
        for (const int select : {0, 1}) {
            other.SelectTable(select);
            EXPECT_TRUE(other.LoadDataFromFile(m_Paths[select].c_str(), true));
        }
        EXPECT_TRUE(other.Enable(true) && m_TapBalance.Enable(true));
        EXPECT_EQ(Entries(other.TablesFor(1), 1), Entries(m_TapBalance.TablesFor(1), 1));
    }
}

// A German application's decimal comma does not get into the files.
TEST_F(CacheFileTest, TheLocaleDoesNotMatter) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    const bool comma = std::setlocale(LC_ALL, "de_DE.UTF-8") || std::setlocale(LC_ALL, "German_Germany.1252");
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
    // A file that goes on behind its table was not written by this library.
    for (const std::string& text : {data, line, good + "12 1 1 0 0\n"}) {
        WriteText(m_Paths[0], text);
        EXPECT_FALSE(m_TapBalance.LoadDataFromFile(m_Paths[0].c_str(), true));
        m_TapBalance.Enable(true);
        EXPECT_FALSE(m_TapBalance.TablesFor(0)) << "the table is not configured any more";
    }
    WriteText(m_Paths[0], good);
    m_Flash.Install(MakeTable(10, 2, 9), MakeTable(10, 2));
    EXPECT_FALSE(m_TapBalance.LoadDataFromFile(m_Paths[0].c_str(), true)) << "the camera's differs";
    EXPECT_EQ(ReadText(m_Paths[0]), good) << "the file is not deleted";
}

TEST_F(CacheFileTest, AnUnreadableDigestEndsTheCorrection) {
    FillCache(MakeTable(10, 2), MakeTable(10, 2));
    ASSERT_TRUE(m_TapBalance.Enable(true));
    m_Flash.Fail("tb r", "");
    EXPECT_FALSE(m_TapBalance.LoadDataFromFile(m_Paths[0].c_str(), true));
    EXPECT_TRUE(m_TapBalance.DataFault());
    unsigned short pixels[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_FALSE(m_TapBalance.TranslatePixels(8, 1, 2, 0, pixels));
    EXPECT_FALSE(m_TapBalance.Enable(true) || m_TapBalance.Enabled());
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
    EXPECT_TRUE(m_TapBalance.TablesFor(0) && !m_TapBalance.TablesFor(1));
    for (const char* name : {"CameraTable.txt", "", "20Mhz.txt"}) {
        EXPECT_FALSE(m_TapBalance.LoadDataFromMasterFile(name)) << name;
    }
    EXPECT_FALSE(m_TapBalance.LoadDataFromFile(folder.c_str(), false)) << "a folder is no file";
    std::filesystem::remove_all(folder);
}

// A file is replaced as a whole: what can't be written completely leaves the old one.
TEST_F(CacheFileTest, ACrashInTheMiddleLeavesTheOldFile) {
    const std::string path = testing::TempDir() + "zel_replaced.txt";
    WriteText(path, "old and longer\n");
    WriteText(path + ".part", "a crash left this");
    ASSERT_TRUE(platform::ReplaceTextFile(path, "new\n"));
    EXPECT_EQ(ReadText(path), "new\n");
    std::filesystem::create_directory(path + ".part");  // can't be opened for writing
    EXPECT_FALSE(platform::ReplaceTextFile(path, "lost\n"));
    EXPECT_EQ(ReadText(path), "new\n");
    std::filesystem::remove_all(path + ".part");
    std::filesystem::remove(path);
}

// Nothing but a file is read, and what somebody put in a file's place is replaced, not written through.
TEST_F(CacheFileTest, LinksAndPipesAreNoFiles) {
    const std::string path = testing::TempDir() + "zel_placed.txt", other = testing::TempDir() + "zel_other.txt";
    const auto stands_as = [&](const char* kind) {
        EXPECT_TRUE(platform::ReplaceTextFile(path, "new\n")) << kind;
        EXPECT_EQ(ReadText(path), "new\n") << kind;
        EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(path))) << kind;
        EXPECT_EQ(ReadText(other), "other") << kind;
        std::filesystem::remove(path);
    };
    WriteText(other, "other");
    for (const std::string& place : {path, path + ".part"}) {
        std::error_code error;
        std::filesystem::create_symlink(other, place, error);
        std::printf("a link as %s: %s\n", place.c_str(), error.message().c_str());
        stands_as("link");
        if (std::system(("mkfifo \"" + place + "\"").c_str()) != 0)
            std::printf("this system has no pipes in folders\n");
        std::string text;
        EXPECT_FALSE(platform::ReadTextFile(path, 100, text));
        stands_as("pipe");
    }
    std::filesystem::create_hard_link(other, path + ".part");
    stands_as("hard link");
    std::filesystem::remove(other);
}

}  // namespace
}  // namespace zel::test
