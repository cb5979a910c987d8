// The examples: what each prints, saves and ends with, also when cameras fail.

#include <regex>

#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

namespace {

struct Case {
    const char* name;
    const char* faults;  // of the simulated cameras
    const char* line;    // program and arguments; @ is a folder that is empty at first
    int exit_code;
    const char* output;          // regular expression; the error stream follows the standard output
    const char* file = "";       // that is written
    const char* beginning = "";  // of that file
};

constexpr const char* kTriggers = "@0+0.05 hwtrigger L2048-4M";
constexpr const char* kTriggersTwoLost = "@0+0.05 hwtrigger L2048-4M; fault L2048-4M lose after=2 times=2";
constexpr const char* kTriggersEndLost = "@0+0.05 hwtrigger L2048-4M; fault L2048-4M lose after=2 times=0";
constexpr const char* kUnplugged = "fault 500101 unplug-frame after=5";
constexpr const char* kGoneAtSecondStart = "fault 500101 unplug-start after=1; @1+1 plug 500101";
constexpr const char* kReplugged = "fault 500101 unplug-frame after=1; @1+1 plug 500101";

const Case kCases[] = {
    {"FirstFrame", "", "first_frame", 0,
     "L2048-4M, serial number 300101\n64 x 48 pixels of 14 bits\nmean [1-9][0-9.]+\n", "first_frame.tif", "II*"},
    {"Settings", "", "settings", 0,
     "exposure 5000 us\n.*\nGAIN is 0, range 0..1023.*\nGAIN: requested 5000.*\ncaught: GAIN: requested 5000"},
    {"SoftwareTrigger", "", "software_trigger", 0, "frame 0, .*\nframe 1, .*\nframe 2, [0-9.]+ ms after its trigger"},
    {"EveryOrNewest", "", "every_or_newest --frames 4 --work 20 --buffers 3", 0,
     "every frame: 0 1 2 [0-9]+\nskipped for newer ones: 0, without a free buffer: [0-9]+, lost on the link: 0\n"
     "newest frame:( [0-9]+){4}\nskipped for newer ones: [0-9]+, "},
    {"OneFrame", "", "one_frame", 0, "frame.tif is written", "frame.tif", "II*"},
    {"LiveStatistics", "", "live_statistics --frames 20", 0,
     "frame [0-9]+: mean [1-9][0-9.]+, sigma [1-9].*\n +dropped: 0 on the link,.*\n20 frames seen"},
    {"LiveStatisticsLinkLost", kUnplugged, "live_statistics --camera 500101", 1, "the link to the camera is lost"},
    {"LiveStatisticsWrongOption", "", "live_statistics --frame 20", 1, "'--frame' is not understood.*--frames 0"},
    {"HardwareTrigger", kTriggers, "hardware_trigger --frames 4", 0, "frame 3\n4 of 4 frames came"},
    {"HardwareTriggerHoles", kTriggersTwoLost, "hardware_trigger --frames 6", 1,
     "frame 1\nframe 2 is missing\nframe 3 is missing\nframe 4\nframe 5\n4 of 6 frames came; lost on the link: 2"},
    {"HardwareTriggerEnd", kTriggersEndLost, "hardware_trigger --frames 4", 1,
     "frame 1\nframe 2 is missing\nframe 3 is missing\n2 of 4"},
    {"HardwareTriggerNone", "", "hardware_trigger --patience 0", 1, "the camera is waiting for a trigger at its input"},
    {"ColorPng", "", "color_png --file @/color.png", 0, "black level of 64 counts.*\nmean of red [1-9].*\n.*is written",
     "@/color.png", "\x89PNG"},
    {"ColorPngMonochrome", "", "color_png --camera 0", 1, "camera 0 has no color"},
    {"HotPlug", kReplugged, "hot_plug --camera 500101 --frames 5", 0,
     "[01] frames; .*(is lost|switched off).*\n(.*\n)*5 frames, opened [2-9] times"},
    {"HotPlugGone", kUnplugged, "hot_plug --camera 500101 --frames 9 --patience 0", 1, "the camera does not come back"},
    {"TimeLapse", "", "time_lapse --frames 3 --interval 1 --folder @/lapse", 0,
     "lapse_001.00001.tif\n.*2.tif\n.*3.tif\n3 of 3 pictures are in", "@/lapse_001/00003.tif", "II*"},
    {"TimeLapseReplugged", kGoneAtSecondStart, "time_lapse --camera 500101 --frames 7 --interval 700 --folder @/lapse",
     1, "1.tif\npicture 2 is missing: (.*\n)+.*0000[3-7].tif\n(.*\n)*[1-6] of 7 pictures"},
    {"TwoCameras", "", "two_cameras --frames 5 --second 2", 0,
     "frame [0-9]+ of 300101 and frame [0-9]+ of 500101: [+-][0-9]+ ms\n(.*\n)*5 pairs; without a partner: "},
    {"TwoCamerasLinkLost", kUnplugged, "two_cameras --frames 1000000 --second 500101", 1,
     "the link to the camera is lost"},
};

struct Example : testing::TestWithParam<Case> {
    Example() { UseFastCameras("1", "1", "2"); }
    ~Example() override { Simulate("FAULTS", ""); }

    std::string InFolder(std::string text) const {
        return std::regex_replace(text, std::regex("@"), m_Folder.Path().generic_string());
    }

    const CacheFolder m_Cache;
    const TemporaryFolder m_Folder;
};

}  // namespace

TEST_P(Example, SaysAndSavesWhatItShould) {
    const Case& c = GetParam();
    Simulate("FAULTS", c.faults);
    const std::string line = InFolder(c.line);
    const std::size_t name = line.find(' ');
    const std::string file = InFolder(c.file);
    std::filesystem::remove(file);
    const ToolResult result = RunProgram(line.substr(0, name), name == std::string::npos ? "" : line.substr(name + 1));

    EXPECT_EQ(result.exit_code, c.exit_code) << result.out << result.err;
    EXPECT_TRUE(std::regex_search(result.out + result.err, std::regex(c.output))) << result.out << result.err;
    if (file.empty()) return;
    EXPECT_EQ(FileText(file).substr(0, std::string(c.beginning).size()), c.beginning);
}

INSTANTIATE_TEST_SUITE_P(All, Example, testing::ValuesIn(kCases),
                         [](const testing::TestParamInfo<Case>& row) { return std::string(row.param.name); });

TEST_F(Example, TimeLapseEndsWhenTheDiskIsFullAndLeavesNoHalfPicture) {
    if (std::filesystem::path::preferred_separator != '/') GTEST_SKIP() << "no limit for the length of files here";
    // The limit is below the size of a picture; ignored, its signal becomes a failure to write.
    const ToolResult result =
        RunCommand("sh -c \"trap '' XFSZ; ulimit -f 4; ./time_lapse --folder " + m_Folder / "lapse" + "\"");
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, testing::HasSubstr("00001.tif' can't be written: the disk may be full"));
    EXPECT_TRUE(std::filesystem::is_empty(m_Folder / "lapse_001"));
}

TEST_F(Example, TimeLapseDoesNotOverwriteTheRunBefore) {
    for (const char* picture : {"lapse_001/00001.tif", "lapse_002/00001.tif"}) {
        EXPECT_EQ(RunProgram("time_lapse", "--frames 1 --folder " + m_Folder / "lapse").exit_code, 0);
        EXPECT_TRUE(std::filesystem::exists(m_Folder / picture)) << picture;
    }
}

}  // namespace zelcam
