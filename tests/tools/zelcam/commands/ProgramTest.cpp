// The program: its commands that only look, and its command line.

#include <algorithm>

#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

using testing::HasSubstr;
using testing::StartsWith;

TEST(Program, ListAndInfoTellOfEveryCameraOfEveryLink) {
    UseFastCameras("1", "1", "2");
    const std::string text = OutputOf("list");
    EXPECT_EQ(std::ranges::count(text, '\n'), 6) << text;
    EXPECT_THAT(text, HasSubstr("\nall are simulated; "));
    const auto cameras = JsonOf("list");
    ASSERT_EQ(cameras.size(), 4u);
    for (std::size_t i = 0; i < cameras.size(); ++i) {
        ExpectMembers(cameras[i], {{"number", i}, {"simulated", true}});
        const std::string serial = cameras[i]["serial"];
        EXPECT_THAT(text, HasSubstr(serial));
        const auto info = JsonOf("info -c " + serial);
        ExpectMembers(info, {{"number", i}, {"width", 64}, {"height", 48}, {"exposure_us", 10000}});
        EXPECT_NE(info["model"], "");
    }
    EXPECT_THAT(RunTool("info").out, HasSubstr("sensor width"));
}

TEST(Program, ListWithoutCamerasIsAnAnswer) {
    UseFastCameras("0", "0", "0");
    EXPECT_THAT(RunTool("list").out, StartsWith("no cameras"));
    EXPECT_EQ(JsonOf("list"), nlohmann::json::array());
    FailureOfTool("info", kNoCamera, "zelcam: no camera found: ");
}

TEST(Program, VersionNamesToolSdkAndLibraries) {
    UseFastCameras("1", "1", "2");
    const auto json = JsonOf("version");
    ASSERT_EQ(json["libraries"].size(), 4u);
    const std::string own = "zelcam " + json["zelcam"].get<std::string>() + "\n";
    EXPECT_EQ(OutputOf("--version"), own);
    EXPECT_THAT(OutputOf("version"), testing::AllOf(StartsWith(own), HasSubstr("zel_sdk.dll         - 3.6.0.0.")));
}

TEST(Program, TextPrintsTheReply) {
    UseFastCameras();
    OutputOf("text name left eye");
    const auto json = JsonOf("text info");
    EXPECT_EQ(json["command"], "info");
    EXPECT_THAT(json["reply"].get<std::string>(), HasSubstr("Sensor: 64x48"));
}

TEST(Program, HelpIsThereForEveryCommand) {
    const std::string help = OutputOf("--help");
    EXPECT_EQ(OutputOf("help"), help);
    for (const FailureKind& kind : kFailureKinds) EXPECT_THAT(help, HasSubstr(kind.code));
    for (const std::string command :
         {"list",       "info",   "capture", "params",         "get",  "set",       "trigger", "stream",
          "record",     "export", "view",    "watch",          "text", "calibrate", "doctor",  "check-plugin",
          "completion", "manual", "version", "calibrate seams"}) {
        const std::string own = OutputOf("help " + command);
        EXPECT_THAT(own, testing::AllOf(HasSubstr("--json"), HasSubstr("Example: zelcam " + command)));
        EXPECT_EQ(OutputOf(command + " --help"), own);
    }
}

TEST(Program, FailuresAreOneLineACodeAndAnExitCode) {
    UseFastCameras("1", "1", "2");
    const std::tuple<const char*, FailureKind, const char*> cases[] = {
        {"", kUsage, "subcommand is required; see 'zelcam --help'"},
        {"snap", kUsage, "no command 'snap'"},
        {"captrue", kUsage, "did you mean capture?"},
        {"calibrate shwo", kUsage, "did you mean show? 'zelcam calibrate --help'"},
        {"list --jsno", kUsage, "--jsno; see 'zelcam list --help'"},
        {"calibrate seams --color", kUsage, "see 'zelcam calibrate seams --help'"},
        {"capture --frames 0", kUsage, "--frames"},
        {"--plugins ./plugins/sim list", kUsage, "the current folder is never looked into"},
        {"info --plugins gige --play x.tif", kUsage, "real cameras can't play 'x.tif'"},
        {"capture --buffers 0", kUsage, "no frame could come; use --buffers 8"},
        {"capture --timeout nan", kUsage, "'nan' is no number of seconds from 0.001 to 86400"},
        {"capture --format gif", kUsage, "gif"},
        {"capture --format 8", kUsage, "it is for color pictures"},
        {"capture -c 2 --color --format tiff", kUsage, "choose 16, 8 or rgba8"},
        {"capture --color", kRefused, "it is a monochrome camera; leave --color out"},
        {"capture -c 2 --color --bin 2,1", kRefused, "set to binning; leave --bin or --color out"},
        {"stream --frames 1 --color-space xyz", kUsage, "requires --color"},
        {"stream --frames 1 --format 8", kUsage, "requires --color"},
        {"capture --roi 0,0,64", kUsage, "x,y,width,height"},
        {"capture --roi 32,0,33,48", kRefused, "not within the frame of 64x48; nothing was started"},
        {"capture --bin 1,129", kUsage, "a factor from 1 to 128"},
        {"capture --bin 65,1", kRefused, "binning leaves nothing"},
        {"stream --average 1001", kUsage, "--average"},
        {"stream -c 1 --roi 0,8,64,8", kRefused, "frames come as 64x48 instead of 64x8"},
        {"trigger --hardware --timeout 0.1", kTimeout, "its input; send a trigger, or set HW_TRIGGER_ACTIVE=0"},
        {"get", kUsage, "parameter"},
        {"info -c 9", kNoCamera, "no camera '9'"},
        {"text nonsense", kRefused, "camera 0 refused 'nonsense': ERR"},
        {"get exposrue-time", kUsage, "did you mean EXPOSURE_TIME, "},
        {"get UPDATE_PARAMETERS", kRefused, "write-only"},
        {"get PIXEL_OFFSET", kRefused, "does not offer it"},
        {"set GAIN", kUsage, "NAME=VALUE"},
        {"set GAIN lots", kUsage, "not a whole number"},
    };
    for (const auto& [arguments, kind, line] : cases) FailureOfTool(arguments, kind, line);
    const ToolResult text = RunTool("info -c 9");
    EXPECT_EQ(text.exit_code, kNoCamera.exit_code);
    EXPECT_EQ(text.out, "") << "without --json the line is all";
}

TEST(Program, OutputThatDoesNotArriveIsAFailure) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "this system has no file that is always full";
    UseFastCameras();
    const TemporaryFolder folder;
    for (const std::string& arguments : std::vector<std::string>{
             "--help", "--version", "list", "list --json", "info", "params", "get GAIN", "set GAIN=1", "text info",
             "stream -n 2 --json", "watch -s 0.1", "view --no-browser -s 0.1", "trigger", "version", "doctor",
             "completion zsh", "calibrate show --no-plot", "capture --out" + folder.Quoted("")}) {
        const ToolResult result = RunProgram("zelcam", arguments, "/dev/full");
        EXPECT_EQ(result.exit_code, kOutput.exit_code) << arguments;
        EXPECT_THAT(result.err, StartsWith("zelcam: the standard output can't be written: ")) << arguments;
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path())) << "nothing was started";
}

}  // namespace zelcam
