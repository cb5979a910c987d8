// The program: zelcam calibrate.
#include <lodepng.h>

#include <cmath>

#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

using testing::HasSubstr;
using testing::Not;
namespace fs = std::filesystem;

struct ProgramCalibrate : testing::Test {
    ProgramCalibrate() {
        UseFastCameras("1", "1", "1");
        Simulate("SIZE", "192x160");
    }

    std::string File(const std::string& name) const { return m_Folder.Quoted(name); }
    std::string Export(const std::string& camera) const {
        JsonOf("calibrate export -p m -c " + camera + " -o" + File(camera));
        return m_Folder / camera;
    }

    static void Replace(const std::string& path, const std::string& from, const std::string& to) {
        std::string text = FileText(path);
        std::ofstream(path, std::ios::binary) << text.replace(text.find(from), from.size(), to);
    }

    CacheFolder m_Folder;
};

TEST_F(ProgramCalibrate, ShowPrintsTheTablesAndDrawsThem) {
    for (const auto& [camera, taps, rows] : {std::tuple{"0", 4u, 32u}, std::tuple{"1", 2u, 24u}}) {
        const auto json = JsonOf(std::string("calibrate show -c ") + camera + " -o" + File("plots"));
        ASSERT_EQ(json.size(), 2u);
        ExpectMembers(json[0], {{"taps", taps}, {"fault", ""}});
        ASSERT_EQ(json[0]["rows"].size(), rows);
        EXPECT_EQ(json[0]["rows"][3]["gains"].size(), taps);
        EXPECT_NEAR(json[0]["rows"][3]["gains"][1].get<double>(), 1.0, 0.1);
        EXPECT_NE(json[0]["digest"], json[1]["digest"]);
        for (const auto& table : json)
            EXPECT_THAT(FileText(table["plot"].get<std::string>()), HasSubstr("tap " + std::to_string(taps)));
    }
    FailureOfTool("calibrate show --no-plot -c 2", kFailed, "tells of no calibration tables");
}

TEST_F(ProgramCalibrate, CheckComparesCameraAndCacheFile) {
    const auto empty = JsonOf("calibrate check")[0];
    EXPECT_EQ(empty["camera_digest"], empty["camera_data"]);
    EXPECT_EQ(JsonOf("info")["calibration"]["source"], "flash");
    EXPECT_THAT(RunTool("info -c 2").out, HasSubstr("none: its flash memory holds no tables, and "));

    // Bad rows and a garbled number are read again.
    Simulate("FAULTS", "fault 0 bad-gain after=7; fault 0 nan-gain after=40; fault 0 garble text=tb_r after=25");
    const auto first = JsonOf("calibrate download --again");
    Simulate("FAULTS", "");
    EXPECT_EQ(first["downloaded"], true);
    ASSERT_EQ(first["cache_files"].size(), 2u);
    EXPECT_EQ(JsonOf("calibrate download")["downloaded"], false);
    EXPECT_THAT(RunTool("calibrate check").out, Not(HasSubstr("DIFFERENT")));
    for (const auto& table : JsonOf("calibrate check")) EXPECT_EQ(table["cache_digest"], table["camera_data"]);
    EXPECT_EQ(JsonOf("info")["calibration"]["source"], "cache");

    const std::string cache = first["cache_files"][0];
    Replace(cache, "0.9", "1.9");
    FailureOfTool("calibrate check", kFailed, "not as its digests say: 20MHz; ");
    EXPECT_THAT(RunTool("calibrate check").out, HasSubstr("DIFFERENT"));
    // A cache file that does not agree with the camera is replaced.
    EXPECT_EQ(JsonOf("calibrate download")["downloaded"], true);
    JsonOf("calibrate check");

    // A folder in its place can't be replaced.
    fs::remove(cache);
    fs::create_directory(cache);
    FailureOfTool("calibrate download", kOutput, "came, but are not in its cache files");
}

TEST_F(ProgramCalibrate, ExportedFilesImportAsTheSame) {
    for (const std::string camera : {"0", "1"}) {
        Export(camera);
        const std::string files = File(camera + "/m_20MHz.txt") + File(camera + "/m_40MHz.txt");
        const auto json = JsonOf("calibrate import -c " + camera + files);
        for (std::size_t i = 0; i < 2; ++i) EXPECT_EQ(json.at(i)["same_as_camera"], true);
    }
    EXPECT_THAT(OutputOf("calibrate import -c 1 " + File("0/m_20MHz.txt")),
                HasSubstr("the camera has 24 rows, 2 taps"));
}

// The write reaches another process' camera: what it reads back is compared there.
TEST_F(ProgramCalibrate, WriteStoresBothTablesAfterAYes) {
    const std::string path = Export("0") + "/m_20MHz.txt", file = File("0/m_20MHz.txt");
    Replace(path, "0.97", "0.95");
    std::ofstream(m_Folder / "answer") << "no\n";
    const ToolResult no = RunTool("calibrate write" + file + "--backup" + File("no") + "<" + File("answer"));
    EXPECT_EQ(no.exit_code, 1);
    EXPECT_THAT(no.err, HasSubstr("nothing was written"));
    EXPECT_FALSE(fs::exists(m_Folder / "no"));

    const auto json = JsonOf("calibrate write --yes" + file + "--backup" + File("before"));
    EXPECT_EQ(json["tables"][0]["digest"], JsonOf("calibrate show --no-plot" + file)[0]["digest"]);
    ASSERT_EQ(json["backup"].size(), 2u);
    const auto before = JsonOf("calibrate import \"" + json["backup"][0].get<std::string>() + "\"");
    EXPECT_EQ(before[0]["same_as_camera"], true);  // a new process has a new camera
    std::ofstream(m_Folder / "answer") << "yes\n";
    EXPECT_EQ(RunTool("calibrate write" + file + "--backup" + File("before") + "<" + File("answer")).exit_code, 0);
    EXPECT_EQ(std::distance(fs::directory_iterator(m_Folder / "before"), {}), 4) << "the first backup stays";
}

TEST_F(ProgramCalibrate, SeamsAreThereWithoutTheCorrectionAndGoneWithIt) {
    ASSERT_EQ(lodepng::encode(m_Folder / "even.png", std::vector<unsigned char>{200}, 1, 1, LCT_GREY, 8), 0u);
    Simulate("SCENE", m_Folder / "even.png");
    // Arguments, seams, and the least part of the level that an uncorrected step is.
    const std::tuple<std::string, std::size_t, double> cases[] = {
        {"-c 0 -e 3000", 4, 0.005},        {"-c 0 -e 20000 --set READOUT_SPEED_INDEX=1", 4, 0.005},
        {"-c 0 -e 2000 -g 431", 4, 0.005}, {"-c 0 -e 20000 --set TAPS_INDEX=1", 1, 0.01},
        {"-c 1 -e 20000", 1, 0.01},
    };
    for (const auto& [arguments, seams, floor] : cases) {
        const auto json = JsonOf("calibrate seams -n 16 " + arguments);
        ASSERT_EQ(json.size(), 2u);
        ASSERT_EQ(json[0]["seams"].size(), seams) << arguments;
        EXPECT_EQ(json[1]["even"], true) << arguments;
        for (std::size_t i = 0; i < seams; ++i) {
            const auto &before = json[0]["seams"][i], &after = json[1]["seams"][i];
            EXPECT_GT(std::fabs(before.value("step", 0.0)), floor * json[0].value("level", 0.0)) << arguments << before;
            // What noise leaves, and half a count of the rounding in the lookup tables.
            EXPECT_LT(std::fabs(after.value("step", 9.9)), 1.0 + 5.0 * after.value("error", 0.0)) << arguments << after;
        }
    }
    Simulate("SCENE", "");
    const ToolResult result = RunTool("calibrate seams --json -n 2");
    EXPECT_EQ(result.Json()[1]["even"], false) << result.out;
    EXPECT_THAT(result.err, HasSubstr("warning: the scene is not even"));
}

TEST_F(ProgramCalibrate, WrongCallsAreOneLineAndAnExitCode) {
    for (const char* camera : {"0", "1"}) Export(camera);
    const std::tuple<std::string, FailureKind, const char*> cases[] = {
        {"calibrate import" + File("nothing_20MHz.txt"), kFailed, "can't be read"},
        {"calibrate import" + File("0/m_20MHz.txt") + File("1/m_20MHz.txt"), kUsage, "two files for one table"},
        {"calibrate write --yes" + File("1/m_20MHz.txt"), kFailed, "different numbers of taps"},
        {"calibrate write --yes -c 2" + File("1/m_20MHz.txt"), kFailed, "no file for the 40MHz table"},
        {"calibrate seams -c 2", kRefused, "no seams"},
        {"calibrate download -c 2", kFailed, "no calibration that can be used"},
    };
    for (const auto& [arguments, kind, line] : cases) FailureOfTool(arguments, kind, line);
}

}  // namespace zelcam
