#include "platform/User.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/Environment.h"

namespace zel::platform {
namespace {

// Points the local data folder of this user at a folder of the test's own where the system lets a program do that.
class CalibrationFolderTest : public testing::Test {
  protected:
    void SetUp() override {
        m_Root = std::filesystem::temp_directory_path() / "zel_user_test";
        std::filesystem::remove_all(m_Root);
        std::filesystem::create_directories(m_Root);
        Keep("XDG_DATA_HOME", m_DataHome);
        Keep("HOME", m_Home);
    }
    void TearDown() override {
        SetEnvironment("XDG_DATA_HOME", m_DataHome.c_str());
        SetEnvironment("HOME", m_Home.c_str());
        std::filesystem::remove_all(m_Root);
    }
    static void Keep(const char* name, std::string& value) {
        if (const char* text = std::getenv(name)) value = text;
    }
    static bool FollowsTheEnvironment() { return PathSeparator() == '/'; }

    std::filesystem::path m_Root;
    std::string m_DataHome, m_Home;
};

TEST_F(CalibrationFolderTest, ExistsAndIsNamedZel) {
    SetEnvironment("XDG_DATA_HOME", m_Root.string().c_str());
    const std::string folder = CalibrationFolder();
    ASSERT_FALSE(folder.empty());
    EXPECT_TRUE(std::filesystem::is_directory(folder)) << folder;
    const std::string ending = std::string(1, PathSeparator()) + "ZEL";
    EXPECT_TRUE(folder.ends_with(ending)) << folder;
    EXPECT_EQ(folder, CalibrationFolder()) << "the second time it is there already";
    if (!FollowsTheEnvironment()) {
        EXPECT_EQ("c:\\Users\\", folder.substr(0, 9));
        EXPECT_NE(std::string::npos, folder.find("\\AppData\\Local\\ZEL"));
    }
}

TEST_F(CalibrationFolderTest, FollowsTheUsersDataFolder) {
    if (!FollowsTheEnvironment()) GTEST_SKIP() << "the folder does not depend on the environment on this system";
    const auto in = [&](const char* folder) { return (m_Root / folder).string(); };
    const struct {
        std::string data_home, home, expected;
    } cases[] = {
        {in("data"), in("home"), in("data/ZEL")},
        {"", in("home"), in("home/.local/share/ZEL")},
        {"relative", in("other"), in("other/.local/share/ZEL")},
    };
    for (const auto& each : cases) {
        SetEnvironment("XDG_DATA_HOME", each.data_home.c_str());
        SetEnvironment("HOME", each.home.c_str());
        EXPECT_EQ(each.expected, CalibrationFolder());
        EXPECT_TRUE(std::filesystem::is_directory(each.expected)) << each.expected;
    }
}

TEST_F(CalibrationFolderTest, IsEmptyWhenItCannotBeMade) {
    if (!FollowsTheEnvironment()) GTEST_SKIP() << "the folder does not depend on the environment on this system";
    std::ofstream(m_Root / "ZEL") << "a file in the way";
    SetEnvironment("XDG_DATA_HOME", m_Root.string().c_str());
    EXPECT_EQ("", CalibrationFolder());
}

}  // namespace
}  // namespace zel::platform
