#include "platform/User.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/support/Process.h"

namespace zel::platform {
namespace {

namespace fs = std::filesystem;

TEST(CalibrationFolder, ExistsAndIsNamedZel) {
    const std::string folder = CalibrationFolder();
    EXPECT_TRUE(fs::is_directory(folder)) << folder;
    EXPECT_TRUE(folder.ends_with(PathSeparator() + std::string("ZEL"))) << folder;
    EXPECT_EQ(folder, CalibrationFolder()) << "the second time it is there already";
    if (PathSeparator() == '/') return;
    EXPECT_EQ("c:\\Users\\", folder.substr(0, 9));
    EXPECT_NE(std::string::npos, folder.find("\\AppData\\Local\\ZEL"));
}

TEST(CalibrationFolder, FollowsTheUsersDataFolder) {
    if (PathSeparator() != '/') GTEST_SKIP() << "the folder does not depend on the environment on this system";
    const fs::path root = fs::path(testing::TempDir()) / "zel_user_test";
    fs::remove_all(root);
    fs::create_directories(root / "blocked");
    std::ofstream(root / "blocked/ZEL") << "a file in the way";
    const auto in = [&](const char* folder) { return (root / folder).string(); };
    const std::string cases[][3] = {
        {in("data"), in("home"), in("data/ZEL")},
        {"", in("home"), in("home/.local/share/ZEL")},
        {"relative", in("other"), in("other/.local/share/ZEL")},
        {in("blocked"), in("home"), ""},
    };
    for (const auto& [data_home, home, expected] : cases) {
        SetEnvironment("XDG_DATA_HOME", data_home.c_str());
        SetEnvironment("HOME", home.c_str());
        EXPECT_EQ(expected, CalibrationFolder());
        EXPECT_EQ(expected != "", fs::is_directory(expected)) << expected;
    }
    fs::remove_all(root);
}

}  // namespace
}  // namespace zel::platform
