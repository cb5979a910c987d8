// zelcam record, as its user sees it.

#include "record/RecordingReader.h"
#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

using testing::HasSubstr;
using zel::record::RecordingReader;

struct ProgramRecordTest : testing::Test {
    ProgramRecordTest() { UseFastCameras(); }

    // A command line that records into this file of the folder.
    std::string Record(const std::string& options, const std::string& name = "run") const {
        return "record " + options + m_Folder.Quoted(name);
    }
    RecordingReader Read(const std::string& name) const { return RecordingReader(m_Folder.Path() / name); }

    const TemporaryFolder m_Folder;
};

TEST_F(ProgramRecordTest, CamerasThatAreRecordedTogetherShareAClock) {
    UseFastCameras("1", "1", "1");
    Simulate("PACE", "real");
    const nlohmann::json told = JsonOf(Record("--camera all --frames 4 --pixel-size 0.5 --gain 7"));
    ASSERT_EQ(told["cameras"].size(), 3u);
    for (const nlohmann::json& camera : told["cameras"]) {
        const std::string serial = camera["camera"]["serial"];
        const RecordingReader reader = Read("run_" + serial + ".ome.tif");
        const auto& facts = reader.Facts();
        ExpectMembers(told, {{"session", facts.session}, {"started", facts.started}});
        ExpectMembers(camera["camera"], {{"serial", facts.serial}, {"model", facts.model}});
        EXPECT_EQ(std::tuple(facts.pixel_um, reader.Frame(0).gain, reader.End()->reason), std::tuple(0.5, 7, "frames"));
        EXPECT_EQ(reader.Frames(), 4u);
        for (std::size_t i = 1; i < 4; ++i) EXPECT_GT(reader.Frame(i).host_ns, reader.Frame(i - 1).host_ns);
    }
    FailureOfTool(Record("-n 1", "run_300101.ome.tif"), kOutput, "already");
}

TEST_F(ProgramRecordTest, ARegionOfAColorCameraHasThePhaseOfItsFirstSample) {
    UseFastCameras("0", "0", "1");
    Simulate("CFA_PHASE", "1");
    for (const auto& [region, phase] :
         {std::pair("0,0,32,32", 1), {"1,0,32,32", 3}, {"0,1,32,32", 4}, {"1,1,32,32", 2}}) {
        JsonOf(Record(std::string("-n 1 --roi ") + region, region));
        EXPECT_EQ(Read(std::string(region) + ".ome.tif").Facts().cfa_phase, phase) << region;
    }
    JsonOf(Record("-n 1 --bin 2,2", "binned"));
    EXPECT_EQ(Read("binned.ome.tif").Facts().cfa_phase, 0);
}

TEST_F(ProgramRecordTest, EndsThatAreNotItsOwnLeaveACompleteFile) {
    const struct {
        const char *name, *faults, *options;
        const FailureKind& kind;
        const char *line, *reason;
    } cases[] = {
        {"unplugged", "fault 0 unplug-frame after=3", "--seconds 600", kLinkLost, "link", "link lost"},
        {"stalled", "fault 0 stall 0 after=3", "--frames 10 --timeout 0.3", kTimeout, "no frame", "no frame came"},
        {"lost", "fault 0 lose after=3 times=2", "--frames 10", kFramesLost, "2 frames went missing", "frames"},
    };
    Simulate("PACE", "real");
    for (const auto& c : cases) {
        Simulate("FAULTS", c.faults);
        const nlohmann::json told = FailureOfTool(Record(c.options, c.name), c.kind, c.line);
        const RecordingReader reader = Read(std::string(c.name) + ".ome.tif");
        ASSERT_TRUE(reader.End()) << c.name;
        EXPECT_EQ(std::tuple(reader.End()->reason, reader.End()->frames), std::tuple(c.reason, reader.Frames()))
            << c.name;
        ExpectMembers(told["cameras"][0],
                      {{"frames", reader.Frames()}, {"dropped", {{"link", reader.End()->lost_link}}}});
    }
    EXPECT_EQ(Read("lost.ome.tif").End()->lost_link, 2u);
}

TEST_F(ProgramRecordTest, CommandLinesThatMakeNoSense) {
    FailureOfTool(Record("--size 5"), kUsage, "500MB");
    FailureOfTool(Record("--split 3parsec"), kUsage, "3parsec");
    FailureOfTool(Record("--ring 1 --frames 3"), kUsage, "--frames");
    Simulate("PACE", "real");
    FailureOfTool(Record("--seconds 10000000 --set FRAME_COUNT=0"), kOutput, "the disk can't hold");
    EXPECT_TRUE(std::filesystem::is_empty(m_Folder.Path()));
}

#ifndef _WIN32
TEST_F(ProgramRecordTest, EnterWritesTheRing) {
    Simulate("PACE", "real");
    const ToolResult result = RunCommand("yes '' | ./zelcam " + Record("--ring 5 --seconds 0.3 --json"));
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_EQ(Read("run_0001.ome.tif").End()->reason, "key");
    EXPECT_GT(Read("run_0001.ome.tif").Frames(), 0u);
}
#endif

}  // namespace zelcam
