// The program's examination of installations that lack something.
#include <functional>

#include "devices/sim/link/Settings.h"
#include "platform/LibraryFiles.h"
#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

namespace fs = std::filesystem;
using testing::HasSubstr;
using zel::platform::LibraryFileName;
using zel::platform::SetEnvironment;

// The first finding of a check; one with `name` in its text when there are several.
nlohmann::json Finding(const nlohmann::json& json, const std::string& check, const std::string& name = "") {
    for (const auto& finding : json["findings"]) {
        const std::string text = finding["text"];
        if (finding["check"] == check && text.find(name) != std::string::npos) return finding;
    }
    return {{"check", check}, {"state", "absent"}, {"text", json.dump(1)}, {"hint", ""}};
}

TEST(Doctor, TellsWhatIsThereWithoutOpeningACamera) {
    UseFastCameras("1", "1", "0");
    const auto json = JsonOf("doctor");
    const fs::path sdk = Finding(json, "sdk")["facts"]["path"].get<std::string>();
    EXPECT_TRUE(fs::equivalent(sdk, LibraryFileName("zel_sdk.dll"))) << sdk;
    EXPECT_EQ(Finding(json, "sdk")["state"], "ok");
    for (const auto& [name, cameras] : {std::pair{"edt_camera_link", 1}, {"pleora_ebus", 1}, {"zel_usb", 0}})
        ExpectMembers(Finding(json, "plugin", name), {{"state", "ok"}, {"facts", {{"cameras", cameras}}}});
    ExpectMembers(Finding(json, "camera", "camera 1"), {{"facts", {{"serial", "400101"}}}});
    EXPECT_EQ(Finding(json, "frame")["state"], "absent");
    for (const char* check : {"processor", "memory", "real_time", "receive_buffers", "calibration_folder"})
        EXPECT_NE(Finding(json, check)["state"], "absent") << check;
    std::size_t all = 0;
    for (const auto& count : json["summary"]) all += count.get<std::size_t>();
    EXPECT_EQ(all, json["findings"].size());
    EXPECT_THAT(RunTool("doctor").out, HasSubstr("\n0 problems, "));
}

TEST(Doctor, OpensEachCameraWhenAsked) {
    UseFastCameras("1", "1", "0");
    Simulate("FAULTS", "fault 400101 unplug-connect");
    const auto json = FailureOfTool("doctor --open", kProblemsFound, "the examination found 1 problem");
    Simulate("FAULTS", "");
    EXPECT_EQ(Finding(json, "frame", "camera 0")["facts"]["width"], 64);
    EXPECT_EQ(Finding(json, "frame", "camera 1")["state"], "problem");
}

// A variable that only the simulated cameras knew would be called misspelt.
TEST(Doctor, KnowsEverySettingOfTheSimulatedCameras) {
    UseFastCameras("0", "0", "0");
    const std::vector<std::string> names = zel::sim::SettingNames();
    for (const std::string& name : names) SetEnvironment(name.c_str(), "0");
    const auto json = JsonOf("doctor");
    for (const std::string& name : names) {
        EXPECT_EQ(Finding(json, "variable", name + "=0")["state"], "note") << name;
        SetEnvironment(name.c_str(), "");
    }
}

constexpr const char* kPlugins[] = {"edt_camera_link.dll", "pleora_ebus.dll", "zel_usb.dll"};

// The program, the SDK and its libraries in a folder of their own.
class Installation : public TemporaryFolder {
  public:
    Installation() {
        for (const char* name : kPlugins) Put(name, name);
        Put(kLogger, kLogger);
        // The SDK's file has its version in its name on some systems.
        for (const auto& entry : fs::directory_iterator(".")) {
            const std::string name = entry.path().filename().string();
            if (name.starts_with(LibraryFileName("zel_sdk.dll")) || name == "zelcam" || name == "zelcam.exe")
                fs::copy_file(name, Path() / name);
        }
    }
    // A library of this build, under this name or another one.
    void Put(const char* name, const char* as) {
        fs::copy_file(LibraryFileName(name), File(as), fs::copy_options::overwrite_existing);
    }
    fs::path File(const char* name) const { return Path() / LibraryFileName(name); }
    ToolResult Examine(const std::string& options = "") const {
        const std::string there = fs::path::preferred_separator == '/' ? "cd \"" : "cd /d \"";
        return RunCommand(there + Path().string() + "\" && " + fs::path("./zelcam").make_preferred().string() +
                          " doctor --json" + options);
    }

    static constexpr const char* kLogger = "kestrane_zel_logger.dll";
};

// An installed set is found beside the SDK, wherever that lies, and what it lacks is not taken from beside the program.
TEST(Doctor, TellsOfTheSetThatWasChosen) {
    UseFastCameras("1", "1", "0");
    Installation tree;
    const fs::path set = tree.Path() / "plugins" / "own";
    fs::create_directories(set);
    fs::rename(tree.File("pleora_ebus.dll"), set / LibraryFileName("pleora_ebus.dll"));
    const auto json = tree.Examine(" --plugins own").Json();
    EXPECT_TRUE(fs::equivalent(Finding(json, "plugin_set")["facts"]["plugins"].value("folder", ""), set)) << json;
    EXPECT_THAT(Finding(json, "plugin", "zel_usb")["text"].get<std::string>(), HasSubstr("is not in the chosen set"));
    EXPECT_EQ(Finding(json, "camera")["facts"]["serial"], "400101");
    std::ofstream(set / LibraryFileName("zel_usb.dll")) << "no library";
    EXPECT_THAT(tree.Examine(" --plugins own").err, HasSubstr(LibraryFileName("zel_usb.dll") + "' does not load: "));
}

TEST(Doctor, SaysWhatIsWrongWithAnInstallation) {
    UseFastCameras("1", "1", "0");
    const CacheFolder calibrations;
    const auto log = [](const char* value) { SetEnvironment("ZEL_LOG", value); };
    const struct {
        std::function<void(Installation&)> damage;
        const char *check, *name, *state, *text;
    } rows[] = {
        {[](auto& tree) { fs::remove(tree.File("zel_usb.dll")); }, "plugin", "zel_usb", "note",
         "was not found; looked in"},
        {[](auto& tree) { std::ofstream(tree.File("zel_usb.dll")) << "no library"; }, "plugin", "zel_usb", "problem",
         "does not load: "},
        {[](auto& tree) { tree.Put("platform_dependent_probe.dll", "zel_usb.dll"); }, "plugin", "zel_usb", "problem",
         "platform_probe"},
        {[](auto& tree) { tree.Put(tree.kLogger, "pleora_ebus.dll"); }, "plugin", "pleora_ebus", "problem",
         "it lacks get_num_cameras, create_camera_interface, destroy_camera_interface"},
        {[](auto&) { SetEnvironment("ZEL_SIM_USB_CAMERAS", "-1"); }, "plugin", "zel_usb", "problem",
         "says that it failed"},
        {[](auto& tree) { std::ranges::for_each(kPlugins, [&](auto name) { fs::remove(tree.File(name)); }); },
         "plugins", "", "problem", "no camera will ever be found"},
        {[](auto&) { UseFastCameras("0", "0", "0"); }, "cameras", "", "warning", "no cameras"},
        {[](auto&) { UseFastCameras("9", "1", "0"); }, "cameras", "", "note", "10 cameras are attached"},
        {[&](auto& tree) { log("trace"), fs::remove(tree.File(tree.kLogger)); }, "logging_library", "", "warning",
         "no log can be written"},
        {[&](auto&) { log("loud"); }, "log", "", "warning", "ZEL_LOG=loud is not understood"},
        {[&](auto&) { log("trace:no/such/folder/log"); }, "log_file", "", "warning", "the log can't go to"},
        {[](auto&) { SetEnvironment("ZEL_SIM_SIEZ", "1"); }, "variable", "SIEZ", "warning", "nobody reads it"},
        {[&](auto&) { std::ofstream(zel::platform::CalibrationFolder() + "/zel_x_1_20MHz.txt") << "torn"; },
         "calibration_file", "", "warning", "zel_x_1_20MHz.txt"},
    };
    for (const auto& row : rows) {
        Installation tree;
        row.damage(tree);
        const ToolResult result = tree.Examine();
        const auto finding = Finding(result.Json(), row.check, row.name);
        EXPECT_EQ(finding["state"], row.state) << finding;
        EXPECT_THAT(finding["text"].get<std::string>(), HasSubstr(row.text));
        EXPECT_TRUE(finding["hint"] != "" || *row.state == 'n') << finding;
        EXPECT_EQ(result.exit_code, *row.state == 'p' ? kProblemsFound.exit_code : 0) << result.err;
        for (const char* name : {"ZEL_LOG", "ZEL_SIM_SIEZ"}) SetEnvironment(name, "");
        UseFastCameras("1", "1", "0");
    }
    fs::remove(zel::platform::CalibrationFolder() + "/zel_x_1_20MHz.txt");
}

}  // namespace zelcam
