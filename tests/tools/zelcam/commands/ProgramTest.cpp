// The program: its commands that only look, and its command line.
#include <gmock/gmock.h>

#include <algorithm>

#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

TEST(Program, ListNamesEveryCameraOfEveryLink) {
    UseFastCameras("1", "1", "2");
    const ToolResult text = RunTool("list");
    EXPECT_EQ(text.exit_code, 0) << text.err;
    EXPECT_EQ(std::count(text.out.begin(), text.out.end(), '\n'), 5) << text.out;

    const ToolResult result = RunTool("list --json");
    EXPECT_EQ(result.exit_code, 0);
    const auto json = result.Json();
    ASSERT_TRUE(json.is_array()) << result.out;
    ASSERT_EQ(json.size(), 4u);
    for (std::size_t i = 0; i < json.size(); ++i) {
        EXPECT_EQ(json[i]["number"], i);
        EXPECT_NE(json[i]["serial"], "");
        EXPECT_THAT(text.out, HasSubstr(json[i]["serial"].get<std::string>()));
    }
}

TEST(Program, ListWithoutCamerasIsAnAnswer) {
    UseFastCameras("0", "0", "0");
    const ToolResult text = RunTool("list");
    EXPECT_EQ(text.exit_code, 0);
    EXPECT_EQ(text.out.substr(0, 10), "no cameras");
    EXPECT_EQ(RunTool("list --json").Json(), nlohmann::json::array());
    const ToolResult info = RunTool("info");
    EXPECT_EQ(info.exit_code, 1);
    EXPECT_THAT(info.err, StartsWith("zelcam: no camera found: "));
}

TEST(Program, InfoTellsTheSensorAndTheSettings) {
    UseFastCameras("1", "1", "2");
    const auto cameras = RunTool("list --json").Json();
    ASSERT_EQ(cameras.size(), 4u);
    for (std::size_t i = 0; i < cameras.size(); ++i) {
        const std::string serial = cameras[i]["serial"].get<std::string>();
        const ToolResult result = RunTool("info --json -c " + serial);
        EXPECT_EQ(result.exit_code, 0) << result.err;
        const auto json = result.Json();
        ASSERT_TRUE(json.is_object()) << result.out;
        EXPECT_EQ(json["number"], i);
        EXPECT_EQ(json["width"], 64);
        EXPECT_EQ(json["height"], 48);
        EXPECT_EQ(json["exposure_us"], 10000);
        EXPECT_NE(json["model"], "");
    }
    EXPECT_THAT(RunTool("info").out, HasSubstr("sensor width"));
}

TEST(Program, VersionNamesToolSdkAndLibraries) {
    UseFastCameras("1", "1", "2");
    const auto json = RunTool("version --json").Json();
    ASSERT_TRUE(json.is_object());
    ASSERT_EQ(json["libraries"].size(), 4u);
    const ToolResult text = RunTool("version");
    EXPECT_EQ(text.exit_code, 0);
    EXPECT_THAT(text.out, HasSubstr("zel_sdk.dll         - 3.6.0.0."));
    EXPECT_THAT(text.out, HasSubstr("zelcam " + json["zelcam"].get<std::string>()));
}

TEST(Program, TextPrintsTheReply) {
    UseFastCameras();
    const ToolResult set = RunTool("text name left eye");
    EXPECT_EQ(set.exit_code, 0) << set.err;
    const auto json = RunTool("text info --json").Json();
    ASSERT_TRUE(json.is_object());
    EXPECT_EQ(json["command"], "info");
    EXPECT_THAT(json["reply"].get<std::string>(), HasSubstr("Sensor: 64x48"));
}

TEST(Program, HelpIsThereForEveryCommand) {
    const ToolResult help = RunTool("--help");
    EXPECT_EQ(help.exit_code, 0);
    for (const char* command : {"list", "info", "capture", "params", "get", "set", "trigger", "stream", "watch", "text",
                                "calibrate", "version"}) {
        EXPECT_THAT(help.out, HasSubstr(std::string("  ") + command)) << command;
        const ToolResult own = RunTool(std::string(command) + " --help");
        EXPECT_EQ(own.exit_code, 0) << command;
        EXPECT_THAT(own.out, HasSubstr("--json")) << command;
    }
}

TEST(Program, FailuresAreOneLineAndAnExitCode) {
    UseFastCameras("1", "1", "2");
    const struct {
        const char* arguments;
        int exit_code;
        const char* line;
    } cases[] = {
        {"", 2, "subcommand is required"},
        {"snap", 2, "no command 'snap'"},
        {"captrue", 2, "did you mean capture?"},
        {"list --jsno", 2, "--jsno"},
        {"capture --frames 0", 2, "--frames"},
        {"capture --frames many", 2, "--frames"},
        {"capture --format gif", 2, "gif"},
        {"capture --format 8", 2, "it is for color pictures"},
        {"capture -c 2 --color --format tiff", 2, "choose 16, 8 or rgba8"},
        {"capture --color", 1, "camera 0 has no color"},
        {"capture -c 2 --color --bin 2,1", 1, "color frames are not binned"},
        {"capture -c 2 --color --color-space cmyk", 2, "cmyk"},
        {"stream --frames 1 --color-space xyz", 2, "requires --color"},
        {"stream --frames 1 --format 8", 2, "requires --color"},
        {"capture --roi 0,0,64", 2, "x,y,width,height"},
        {"capture --roi 0,0,0,8", 2, "width and height from 1"},
        {"capture --roi 32,0,33,48", 1, "not within the frame of 64x48; nothing was started"},
        {"capture --bin 0,1", 2, "a factor from 1 to 128"},
        {"capture --bin 1,129", 2, "a factor from 1 to 128"},
        {"capture --bin 65,1", 1, "binning leaves nothing"},
        {"capture --average 0", 2, "--average"},
        {"stream --average 1001", 2, "--average"},
        {"capture -c 1 --roi 0,8,64,8", 1, "frames come as 64x48 instead of 64x8"},
        {"stream --mode fast --frames 1", 2, "fast"},
        {"get", 2, "parameter"},
        {"info -c 9", 1, "no camera '9'"},
        {"info -c NOSUCH", 1, "known cameras are 0"},
        {"get EXPOSRUE_TIME", 2, "did you mean EXPOSURE_TIME"},
        {"get UPDATE_PARAMETERS", 1, "write-only"},
        {"get PIXEL_OFFSET", 1, "does not offer it"},
        {"set GAIN", 2, "NAME=VALUE"},
        {"set GAIN lots", 2, "not a whole number"},
    };
    for (const auto& c : cases) {
        const ToolResult result = RunTool(c.arguments);
        EXPECT_EQ(result.exit_code, c.exit_code) << c.arguments;
        EXPECT_EQ(result.out, "") << c.arguments;
        EXPECT_THAT(result.err, StartsWith("zelcam: ")) << c.arguments;
        EXPECT_THAT(result.err, HasSubstr(c.line)) << c.arguments;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
}

}  // namespace zelcam
