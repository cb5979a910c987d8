// Choosing plug-ins, which a process can do once: one test, in a program of its own.
#include <gmock/gmock.h>

#include <filesystem>

#include "platform/LibraryFiles.h"
#include "zel/Zel.h"

namespace zel {

namespace fs = std::filesystem;

ErrorKind KindOfChoice(const std::string& folder) {
    try {
        use_plugins(folder);
    } catch (const Error& error) {
        return error.kind();
    }
    ADD_FAILURE() << folder << " was taken";
    return ErrorKind::failed;
}

TEST(Plugins, TheFirstChoiceThatCanBeHadIsForGood) {
    const fs::path here = fs::current_path();
    const std::string name = platform::LibraryFileName("zel_usb.dll");
    const fs::path set = here / u8"zel-plug-ins-\u00e4\u6f22";
    const fs::path empty = set / "empty";
    std::error_code in_use;  // where loaded files can't be removed, what the last run left goes here
    fs::remove_all(set, in_use);
    fs::create_directories(empty);
    fs::copy_file(here / name, set / name);
    const auto text = [](const fs::path& path) {
        const std::u8string utf8 = path.u8string();
        return std::string(utf8.begin(), utf8.end());
    };

    for (const std::string& wrong : {std::string(), std::string("nonsense"), std::string("plugins/sim"),
                                     std::string(".."), text(empty), text(set / name)})
        EXPECT_EQ(KindOfChoice(wrong), ErrorKind::invalid_argument) << wrong;
    const std::string folder = use_plugins(text(set));
    EXPECT_EQ(use_plugins(folder), folder);
    EXPECT_EQ(KindOfChoice("sim"), ErrorKind::refused);

    // The two other libraries lie beside the program and are not taken.
    const Sdk sdk;
    const auto cameras = sdk.cameras();
    EXPECT_EQ(cameras.size(), 2u);
    for (const CameraInfo& camera : cameras) EXPECT_EQ(camera.interface_type, "USB 3.0");
    EXPECT_EQ(sdk.version().find("pleora"), std::string::npos);
    EXPECT_EQ(use_plugins(folder), folder);
    fs::remove_all(set, in_use);
}

}  // namespace zel
