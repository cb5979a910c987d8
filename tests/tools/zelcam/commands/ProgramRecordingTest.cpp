// The program with recordings: played, recorded again, told about, and exported.

#include "tests/record/RecordingFile.h"
#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

using testing::HasSubstr;
using zel::record::RecordingReader;

namespace {

std::vector<zel::record::test::Picture> FramesOf(const std::string& file) {
    RecordingReader reader(zel::platform::Utf8Path(file));
    return zel::record::test::ReadAll(reader);
}

struct ProgramRecording : testing::Test {
    ProgramRecording() {
        UseFastCameras("1", "1", "2");
        Simulate("FILL", "noise");
    }

    std::string Record(const std::string& name, const std::string& options, const std::string& before = "") {
        OutputOf(before + " record" + m_Folder.Quoted(name) + options);
        return m_Folder / name;
    }

    TemporaryFolder m_Folder;
};

// Whatever was done to the frames as they were recorded is not done once more.
TEST_F(ProgramRecording, OneOfEachCameraPlayedAndRecordedAgainHasTheSameSamples) {
    const std::pair<const char*, const char*> cameras[] = {
        {"300101", ""}, {"400101", "--roi 3,5,41,33"}, {"500101", "--roi 1,2,30,21"}, {"500102", "--bin 2,2"}};
    for (const auto& [serial, processing] : cameras) {
        const std::string run = serial + std::string("-\xC3\xBC.ome.tif");
        const auto frames = FramesOf(Record(run, "-n 5 -c " + std::string(serial) + " " + processing));
        ASSERT_EQ(frames.size(), 5u);
        EXPECT_NE(frames[0], frames[1]);
        const std::string again = std::string("again-") + serial + ".ome.tif";
        EXPECT_EQ(FramesOf(Record(again, "-n 5 -c " + std::string(serial), "--play" + m_Folder.Quoted(run + ",once"))),
                  frames)
            << serial;
        const auto first = JsonOf("info" + m_Folder.Quoted(run));
        const auto second = JsonOf("info" + m_Folder.Quoted(again));
        for (const char* key : {"width", "height", "bits", "cfa_phase", "frames", "complete", "camera"})
            EXPECT_EQ(first[key], second[key]) << serial << " " << key;
        EXPECT_EQ(first["complete"], true);
    }
}

TEST_F(ProgramRecording, InfoTellsWhatIsMissingAndLaysFilesSideBySide) {
    Simulate("FAULTS", "fault 500101 lose after=2 times=3");
    Record("run.ome.tif", "-n 6 -c 500101 --allow-loss");
    Simulate("FAULTS", "");
    Record("pair.ome.tif", "-n 4 -c 500101,500102");
    const std::string pair = m_Folder.Quoted("pair_500101.ome.tif") + m_Folder.Quoted("pair_500102.ome.tif");
    EXPECT_EQ(JsonOf("info" + pair)["one_session"], true);
    const std::string files = m_Folder.Quoted("run.ome.tif") + m_Folder.Quoted("pair_500102.ome.tif");
    const auto json = JsonOf("info" + files);
    EXPECT_EQ(json["one_session"], false);
    const auto& color = json["recordings"][0];
    ExpectMembers(color, {{"missing", 3}, {"end", {{"lost", {{"link", 3}}}}}});
    ASSERT_EQ(color["gaps"].size(), 1u);
    EXPECT_EQ(color["gaps"][0]["after"], 1);
    EXPECT_EQ(json["recordings"][1]["missing"], 0);
    EXPECT_THAT(RunTool("info" + files).out, HasSubstr("run.ome.tif  3 frames missing after number 1\n"));
    EXPECT_THAT(RunTool("info" + m_Folder.Quoted("run.ome.tif")).out, HasSubstr("3 on the link"));
}

TEST_F(ProgramRecording, ExportSavesTheFramesThatAreWantedAndOverwritesNothing) {
    Record("run.ome.tif", "-n 7 -c 500101");
    const auto frames = FramesOf(m_Folder / "run.ome.tif");
    const std::string command = "export" + m_Folder.Quoted("run.ome.tif") + "--out" + m_Folder.Quoted("out");
    const auto json = JsonOf(command + "--frames 1:6:2");
    ASSERT_EQ(json["pictures"].size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        const std::string file = "run_000" + std::to_string(1 + 2 * i) + ".tif";
        ExpectMembers(json["pictures"][i], {{"file", file}, {"recording", {{"frame", 1 + 2 * i}}}});
        EXPECT_EQ(FramesOf(m_Folder / ("out/" + file)).at(0), frames[1 + 2 * i]);
    }
    FailureOfTool(command + "--frames 5", kOutput, "there is a picture of this name");
    EXPECT_EQ(FramesOf(m_Folder / "out/run_0005.tif").at(0), frames[5]);
    const auto color = JsonOf(command + "--frames 4::2 --color");
    ASSERT_EQ(color["frames"], 2);
    EXPECT_EQ(color["pictures"][0]["file"], "run_0004.png");
    EXPECT_EQ(color["pictures"][1]["frame_number"], 6);
    for (const char* range : {"7", "3:2", "0:6:0", "a:b", "1:2:3:4"})
        FailureOfTool(command + "--frames " + range, kUsage, "it has frames 0 to 6");
    FailureOfTool("export" + m_Folder.Quoted("none.tif"), kFailed, "no such file");
    FailureOfTool("--play" + m_Folder.Quoted("none.tif") + "list", kUsage, "can't be played: no such file");
}

}  // namespace

}  // namespace zelcam
