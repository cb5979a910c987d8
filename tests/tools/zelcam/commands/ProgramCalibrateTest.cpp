// The program: zelcam calibrate.
#include <gmock/gmock.h>
#include <lodepng.h>

#include <cmath>

#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

using testing::HasSubstr;
using testing::Not;
namespace fs = std::filesystem;

// The cache files of these tests lie in a folder of their own where the system lets them.
class ProgramCalibrate : public testing::Test {
  protected:
    ProgramCalibrate() {
        UseFastCameras("1", "1", "1");
        zel::platform::SetEnvironment("ZEL_SIM_SIZE", "192x160");
        zel::platform::SetEnvironment("XDG_DATA_HOME", m_Folder.Path().string().c_str());
        RemoveCacheFiles();
    }
    ~ProgramCalibrate() override {
        RemoveCacheFiles();
        zel::platform::SetEnvironment("XDG_DATA_HOME", "");
        zel::platform::SetEnvironment("ZEL_SIM_SCENE", "");
    }

    std::string File(const std::string& name) const { return "\"" + m_Folder / name + "\""; }
    std::string Export(const char* camera) const {
        const ToolResult result = RunTool(std::string("calibrate export -p m -c ") + camera + " -o " + File(camera));
        EXPECT_EQ(result.exit_code, 0) << result.err;
        return m_Folder / camera;
    }

    TemporaryFolder m_Folder;
};

TEST_F(ProgramCalibrate, ShowPrintsTheTablesAndDrawsThem) {
    for (const auto& [camera, taps, rows] : {std::tuple{"0", 4u, 32u}, std::tuple{"1", 2u, 24u}}) {
        const ToolResult result = RunTool(std::string("calibrate show --json -c ") + camera + " -o " + File("plots"));
        ASSERT_EQ(result.exit_code, 0) << result.err;
        const auto json = result.Json();
        ASSERT_EQ(json.size(), 2u);
        EXPECT_EQ(json[0]["taps"], taps);
        ASSERT_EQ(json[0]["rows"].size(), rows);
        EXPECT_EQ(json[0]["rows"][3]["gains"].size(), taps);
        EXPECT_NEAR(json[0]["rows"][3]["gains"][1].get<double>(), 1.0, 0.1);
        EXPECT_EQ(json[0]["fault"], "");
        EXPECT_NE(json[0]["digest"], json[1]["digest"]);
        for (const auto& table : json) {
            EXPECT_THAT(FileText(table["plot"].get<std::string>()), HasSubstr("tap " + std::to_string(taps)));
        }
    }
    FailureOfTool("calibrate show --no-plot -c 2", kFailed, "tells of no calibration tables");
}

TEST_F(ProgramCalibrate, CheckComparesCameraAndCacheFile) {
    const auto empty = RunTool("calibrate check --json");
    EXPECT_EQ(empty.exit_code, 0) << empty.err;
    EXPECT_EQ(empty.Json()[0]["camera_digest"], empty.Json()[0]["camera_data"]);
    EXPECT_EQ(RunTool("info --json").Json()["calibration"]["source"], "flash");
    EXPECT_THAT(RunTool("info -c 2").out, HasSubstr("none: its flash memory holds no tables, and "));

    const auto first = RunTool("calibrate download --again --json");
    ASSERT_EQ(first.exit_code, 0) << first.err;
    EXPECT_EQ(first.Json()["downloaded"], true);
    ASSERT_EQ(first.Json()["cache_files"].size(), 2u);
    EXPECT_EQ(RunTool("calibrate download --json").Json()["downloaded"], false);
    EXPECT_THAT(RunTool("calibrate check").out, Not(HasSubstr("DIFFERENT")));
    EXPECT_EQ(RunTool("calibrate check --json").Json()[0]["cache_good"], true);
    EXPECT_EQ(RunTool("info --json").Json()["calibration"]["source"], "cache");

    const std::string cache = first.Json()["cache_files"][0].get<std::string>();
    std::string text = FileText(cache);
    text[text.find("0.9")] = '1';
    std::ofstream(cache, std::ios::binary) << text;
    const ToolResult changed = RunTool("calibrate check");
    EXPECT_EQ(changed.exit_code, kFailed.exit_code);
    EXPECT_THAT(changed.out, HasSubstr("DIFFERENT"));
    EXPECT_THAT(changed.err, HasSubstr("not as its digests say: 20MHz; "));
    // A cache file that does not agree with the camera is replaced.
    EXPECT_EQ(RunTool("calibrate download --json").Json()["downloaded"], true);
    EXPECT_EQ(RunTool("calibrate check").exit_code, 0);

    // A folder in its place can't be replaced.
    fs::remove(cache);
    fs::create_directory(cache);
    FailureOfTool("calibrate download", kOutput, "came, but are not in its cache files");
}

TEST_F(ProgramCalibrate, ExportedFilesImportAsTheSame) {
    for (const char* camera : {"0", "1"}) {
        const std::string folder = Export(camera);
        const ToolResult result = RunTool("calibrate import --json -c " + std::string(camera) + " \"" + folder +
                                          "/m_20MHz.txt\" \"" + folder + "/m_40MHz.txt\"");
        ASSERT_EQ(result.exit_code, 0) << result.err;
        ASSERT_EQ(result.Json().size(), 2u);
        for (const auto& table : result.Json()) EXPECT_EQ(table["same_as_camera"], true);
    }
    const ToolResult other = RunTool("calibrate import -c 1 " + File("0/m_20MHz.txt"));
    EXPECT_EQ(other.exit_code, 0) << other.err;
    EXPECT_THAT(other.out, HasSubstr("the camera has 24 rows, 2 taps"));
}

// The write reaches another process' camera: what it reads back is compared there.
TEST_F(ProgramCalibrate, WriteStoresBothTablesAfterAYes) {
    const std::string file = Export("0") + "/m_20MHz.txt";
    std::string text = FileText(file);
    const std::size_t gain = text.find("0.97");
    ASSERT_NE(gain, std::string::npos);
    text.replace(gain, 4, "0.95");
    std::ofstream(file, std::ios::binary) << text;

    std::ofstream(m_Folder / "answer") << "no\n";
    const ToolResult no = RunTool("calibrate write \"" + file + "\" --backup " + File("no") + " <" + File("answer"));
    EXPECT_EQ(no.exit_code, 1);
    EXPECT_THAT(no.err, HasSubstr("nothing was written"));
    EXPECT_FALSE(fs::exists(m_Folder / "no"));

    const ToolResult yes = RunTool("calibrate write --json --yes \"" + file + "\" --backup " + File("before"));
    ASSERT_EQ(yes.exit_code, 0) << yes.err;
    const auto json = yes.Json();
    const auto shown = RunTool("calibrate show --no-plot --json \"" + file + "\"").Json();
    EXPECT_EQ(json["tables"][0]["digest"], shown[0]["digest"]);
    ASSERT_EQ(json["backup"].size(), 2u);
    const auto before = RunTool("calibrate import --json \"" + json["backup"][0].get<std::string>() + "\"").Json();
    EXPECT_EQ(before[0]["same_as_camera"], true);  // a new process has a new camera
    std::ofstream(m_Folder / "answer") << "yes\n";
    EXPECT_EQ(RunTool("calibrate write \"" + file + "\" --backup " + File("b") + " <" + File("answer")).exit_code, 0);
}

TEST_F(ProgramCalibrate, SeamsAreThereWithoutTheCorrectionAndGoneWithIt) {
    ASSERT_EQ(lodepng::encode(m_Folder / "even.png", std::vector<unsigned char>{200}, 1, 1, LCT_GREY, 8), 0u);
    zel::platform::SetEnvironment("ZEL_SIM_SCENE", (m_Folder / "even.png").c_str());
    const struct {
        const char* arguments;
        std::size_t seams;
        double floor;  // of an uncorrected step, as a part of the level
    } cases[] = {
        {"-c 0 -e 3000", 4, 0.005},        {"-c 0 -e 20000 --set READOUT_SPEED_INDEX=1", 4, 0.005},
        {"-c 0 -e 2000 -g 431", 4, 0.005}, {"-c 0 -e 20000 --set TAPS_INDEX=1", 1, 0.01},
        {"-c 1 -e 20000", 1, 0.01},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments);
        const ToolResult result = RunTool(std::string("calibrate seams --json -n 16 ") + c.arguments);
        ASSERT_EQ(result.exit_code, 0) << result.err;
        const auto json = result.Json();
        ASSERT_EQ(json.size(), 2u);
        ASSERT_EQ(json[0]["seams"].size(), c.seams);
        EXPECT_EQ(json[1]["even"], true) << result.err;
        for (std::size_t i = 0; i < c.seams; ++i) {
            const auto step = [&](std::size_t corrected) {
                return std::fabs(json[corrected]["seams"][i]["step"].get<double>());
            };
            EXPECT_GT(step(0), c.floor * json[0]["level"].get<double>()) << json[0]["seams"][i];
            // What noise leaves, and half a count of the rounding in the lookup tables.
            EXPECT_LT(step(1), 1.0 + 5.0 * json[1]["seams"][i]["error"].get<double>()) << json[1]["seams"][i];
        }
    }
}

TEST_F(ProgramCalibrate, AnUnevenSceneIsToldOf) {
    const ToolResult result = RunTool("calibrate seams --json -n 2");
    EXPECT_EQ(result.Json()[1]["even"], false) << result.out;
    EXPECT_THAT(result.err, HasSubstr("warning: the scene is not even"));
}

TEST_F(ProgramCalibrate, WrongCallsAreOneLineAndAnExitCode) {
    std::ofstream(m_Folder / "bad_20MHz.txt") << "4 2\n0 1 1 0 0\n";
    Export("0");
    Export("1");
    const struct {
        std::string arguments;
        FailureKind kind;
        const char* line;
    } cases[] = {
        {"calibrate import " + File("bad_20MHz.txt"), kFailed, "line 2: it ends too early"},
        {"calibrate import " + File("nothing_20MHz.txt"), kFailed, "can't be read"},
        {"calibrate import " + File("0/m_20MHz.txt") + " " + File("1/m_20MHz.txt"), kUsage, "two files for one table"},
        {"calibrate write --yes " + File("1/m_20MHz.txt"), kFailed, "different numbers of taps"},
        {"calibrate write --yes -c 2 " + File("1/m_20MHz.txt"), kFailed, "no file for the 40MHz table"},
        {"calibrate seams -c 2", kRefused, "no seams"},
        {"calibrate download -c 2", kFailed, "no calibration that can be used"},
    };
    for (const auto& c : cases) FailureOfTool(c.arguments, c.kind, c.line);
}

}  // namespace zelcam
