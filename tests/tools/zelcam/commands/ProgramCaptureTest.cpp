// The program: pictures on disk.

#include <algorithm>
#include <future>
#include <set>
#include <vector>

#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

using testing::HasSubstr;
using testing::MatchesRegex;
namespace fs = std::filesystem;

constexpr std::size_t kSampleBytes = 64 * 48 * 2;

using Samples = std::vector<std::uint16_t>;

struct ProgramCapture : testing::Test {
    ProgramCapture() { UseFastCameras("1", "1", "2"); }

    // The samples of the one picture that `capture` takes with these arguments, which stand at the end of the file.
    Samples Capture(const std::string& arguments, std::size_t width = 64, std::size_t height = 48) {
        const std::string name = "p" + std::to_string(++m_Pictures);
        JsonOf("capture " + arguments + " -p " + name + Out("p"));
        Samples samples(width * height);
        const std::string bytes = FileText(m_Folder / ("p/" + name + "_0001.tif")).substr(198);
        EXPECT_EQ(bytes.size(), samples.size() * 2) << arguments;
        bytes.copy(reinterpret_cast<char*>(samples.data()), samples.size() * 2);
        return samples;
    }

    std::string Out(const std::string& folder) const { return " --out" + m_Folder.Quoted(folder); }

    TemporaryFolder m_Folder;
    int m_Pictures = 0;
};

// What the file beside a picture says.
nlohmann::json DescriptionOf(fs::path picture) {
    return nlohmann::json::parse(FileText(picture.replace_extension(".json")), nullptr, false);
}

TEST_F(ProgramCapture, TwelvePicturesWithoutHolesEachHaveADescription) {
    const auto json = JsonOf("capture -n 12 --exposure 5000 --gain 7" + Out("new folder"));
    ExpectMembers(json, {{"dropped", {{"link", 0}, {"no_free_buffer", 0}}}});
    ASSERT_EQ(json["pictures"].size(), 12u) << json;
    const int first = json["pictures"][0]["frame_number"];
    int number = 0;
    for (auto picture : json["pictures"]) {
        const fs::path path = picture["path"].get<std::string>();
        EXPECT_EQ(fs::file_size(path), 198 + kSampleBytes) << path;
        picture.erase("path");
        EXPECT_EQ(DescriptionOf(path), picture);
        ExpectMembers(picture, {{"width", 64},
                                {"height", 48},
                                {"exposure_us", 5000},
                                {"gain", 7},
                                {"scaled_by_bits", 0},
                                {"file", path.filename().string()},
                                {"frame_number", first + number++},
                                {"serial", json["camera"]["serial"]},
                                {"model", json["camera"]["model"]}});
        const auto& time = picture["time"];
        EXPECT_THAT(time["clock"].get<std::string>(), HasSubstr("millisecond clock"));
        EXPECT_EQ(time["queue_delay_ms"].get<std::uint32_t>(),
                  time["hand_over_ms"].get<std::uint32_t>() - time["arrival_ms"].get<std::uint32_t>());
        EXPECT_THAT(picture["saved_utc"].get<std::string>(), MatchesRegex("....-..-..T..:..:..\\....Z"));
    }
}

TEST_F(ProgramCapture, RegionIsCutOutOfTheSameFrame) {
    Simulate("FILL", "static");
    for (const char* camera : {"-c 0", "-c 1", "-c 3"}) {
        const Samples whole = Capture(camera);
        const Samples region = Capture(std::string(camera) + " --roi 5,7,33,20", 33, 20);
        const Samples binned = Capture(std::string(camera) + " --roi 5,7,33,20 --bin 3,2", 11, 10);
        for (std::size_t y = 0; y < 20; ++y) {
            for (std::size_t x = 0; x < 33; ++x)
                ASSERT_EQ(region[y * 33 + x], whole[(y + 7) * 64 + x + 5]) << camera << " " << x << "," << y;
        }
        // The first row of a binned frame is another matter.
        unsigned sum = 0;
        for (std::size_t i = 0; i < 6; ++i) sum += region[(2 + i / 3) * 33 + 3 + i % 3];
        EXPECT_EQ(binned[11 + 1], std::min(sum, camera == std::string("-c 1") ? 4095u : 16383u)) << camera;
    }
}

// The samples of a frame as a link delivers it, in whatever order of the taps, are those of the frame that the SDK
// hands over.
TEST_F(ProgramCapture, WhatTheLinkDeliversBecomesThePicture) {
    Simulate("FILL", "static");
    Simulate("TAPS", "even");
    const std::tuple<std::string, const char*, const char*> cases[] = {
        {"edt_camera_link.dll", "1", "-c 0 --set TAPS_INDEX=0"},
        {"edt_camera_link.dll", "2", "-c 0 --set TAPS_INDEX=1"},
        {"edt_camera_link.dll", "4", "-c 0 --set TAPS_INDEX=2"},
        {"pleora_ebus.dll", "2", "-c 1 --set TAPS_INDEX=1"}};
    for (const auto& [plugin, taps, settings] : cases) {
        OutputOf("check-plugin " + plugin + " --samples" + m_Folder.Quoted("raw.pgm") + "--taps " + taps);
        const std::string bytes = FileText(m_Folder / "raw.pgm");
        ASSERT_GT(bytes.size(), kSampleBytes);
        Samples delivered;
        const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
        for (std::size_t i = bytes.size() - kSampleBytes; i < bytes.size(); i += 2)
            delivered.push_back(static_cast<std::uint16_t>(byte(i) << 8 | byte(i + 1)));
        Samples handed_over = Capture(settings);
        handed_over[0] = delivered[0];  // the frame's number
        EXPECT_EQ(handed_over == delivered, *taps == '1') << settings;
        std::ranges::sort(delivered);
        std::ranges::sort(handed_over);
        EXPECT_EQ(handed_over, delivered) << settings;
    }
}

TEST_F(ProgramCapture, AnAverageIsSaidToBeOne) {
    const auto json = JsonOf("capture --average 8 -n 2" + Out("q"));
    EXPECT_EQ(json["pictures"].at(1)["average_of_frames"], 8);
    EXPECT_GE(json["pictures"][0]["frame_number"].get<int>(), 7) << "frames count from 0";
}

TEST_F(ProgramCapture, WhatCanNotWorkFailsBeforeTheStart) {
    std::ofstream(m_Folder / "file") << "in the way";
    FailureOfTool("capture" + Out("file"), kOutput, "can't be used");
    FailureOfTool("capture" + Out("file/below"), kOutput, "choose another --out");
    EXPECT_EQ(FileText(m_Folder / "file"), "in the way");
    FailureOfTool("capture --exposure 0" + Out("c"), kRefused,
                  "EXPOSURE_TIME_US: requested 0 -> actual 10000 us (range 1..");
    EXPECT_FALSE(fs::exists(m_Folder / "c"));
}

// On Windows most of these characters are in no 8-bit encoding, which the SDK's own writers are bound to.
TEST_F(ProgramCapture, FoldersAndFilesHaveAnyName) {
    const std::string name = "\u00DCml\u00E4ut \u65E5\u672C";
    const fs::path folder = zel::platform::Utf8Path(m_Folder / name);
    for (const auto& [options, extension] :
         {std::pair{"-f tiff", ".tif"}, {"-f png", ".png"}, {"-c 2 --color", ".png"}}) {
        const std::string prefix = name + options[3];
        const auto json = JsonOf("capture -p \"" + prefix + "\" " + options + Out(name));
        const fs::path picture = folder / zel::platform::Utf8Path(prefix + "_0001" + extension);
        EXPECT_GT(fs::file_size(picture), kSampleBytes / 4);
        EXPECT_EQ(json["pictures"][0]["file"], zel::platform::Utf8Text(picture.filename()));
    }
    JsonOf("calibrate export" + Out(name));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 8);
    for (const std::string command : {"calibrate show --no-plot", "calibrate import"})
        JsonOf(command + m_Folder.Quoted(name + "/300101_20MHz.txt"));
}

TEST_F(ProgramCapture, PicturesAreNotOverwritten) {
    const std::string out = Out("");
    for (const char* name : {"camera0_0041.json", "camera0_9.png", "camera0_77x.tif", "camera1_0099.tif"})
        std::ofstream(m_Folder / name) << "a user's";
    EXPECT_THAT(RunTool("capture -n 2" + out).out, HasSubstr("camera0_0042.tif on\n"));
    EXPECT_THAT(RunTool("capture --format png" + out).out, HasSubstr("camera0_0044.png\n1 frame saved; "));
    EXPECT_THAT(RunTool("capture --overwrite" + out).out, HasSubstr("camera0_0001.tif on\n"));
    EXPECT_EQ(FileText(m_Folder / "camera0_0041.json"), "a user's");
    EXPECT_THAT(RunTool("trigger --save --hardware --timeout 0.1 -n 9957" + out).out,
                HasSubstr("camera0_00045.tif on\n"))
        << "numbers are of one width up to the last";
}

TEST_F(ProgramCapture, TwoProgramsShareAFolder) {
    const std::string command = "capture -n 40 -p x --allow-loss" + Out("") + "-c ";
    std::future<nlohmann::json> other = std::async(std::launch::async, JsonOf, command + "1");
    std::set<std::string> paths;
    for (const auto& json : {JsonOf(command + "0"), other.get()}) {
        for (const auto& picture : json["pictures"]) {
            const std::string path = picture["path"];
            EXPECT_TRUE(paths.insert(path).second) << path;
            EXPECT_EQ(DescriptionOf(path)["camera"], json["camera"]["number"]) << path;
        }
    }
    EXPECT_EQ(paths.size(), 80u);
}

TEST_F(ProgramCapture, ARunThatEndsEarlyReportsWhatItSaved) {
    const struct {
        const char *faults, *arguments;
        FailureKind kind;
        const char* line;
        std::size_t frames;
    } cases[] = {
        {"", "capture -n 10 --set FRAME_COUNT=3", kTimeout, "3 frames is over; ask for fewer frames, or", 3},
        {"", "trigger -n 10 --save --set FRAME_COUNT=3", kTimeout, "is over", 3},
        {"", "stream -n 10 --set FRAME_COUNT=3", kTimeout, "is over", 3},
        {"fault 0 unplug-frame after=3", "capture -n 10", kLinkLost, "the link to the camera is lost", 3},
        {"fault 0 stall 0 after=2", "capture -n 10 --timeout 1", kTimeout,
         "within 1000 ms: the camera is running (exposure of 10 ms)", 2},
        {"fault 0 lose after=1", "trigger -n 3 --save --timeout 1", kTimeout, "software trigger brought no frame", 1},
        {"fault 0 lose after=2 times=3", "capture -n 8 --buffers 32", kFramesLost,
         "0 without a free buffer; check cable and receive buffers ('zelcam doctor') or use a longer --exposure, or",
         8},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        Simulate("FAULTS", c.faults);
        const bool saves = *c.arguments != 's';
        const auto json = FailureOfTool(c.arguments + (saves ? Out(std::to_string(&c - cases)) : ""), c.kind, c.line);
        const auto& frames = json["frames"];
        EXPECT_EQ(frames.is_array() ? frames.size() : frames.get<std::size_t>(), c.frames);
        for (std::size_t i = 0; saves && i < c.frames; ++i) {
            const auto& picture = frames.is_array() ? frames[i]["picture"] : json["pictures"][i];
            EXPECT_EQ(fs::file_size(picture["path"].get<std::string>()), 198 + kSampleBytes);
            EXPECT_TRUE(!frames.is_array() || frames[i]["trigger_to_frame_ms"] > 0.0);
        }
    }
    const auto allowed = JsonOf("capture -n 8 --buffers 32 --allow-loss" + Out("allowed"));
    EXPECT_EQ(allowed["dropped"], (nlohmann::json{{"link", 3}, {"no_free_buffer", 0}}));
    Simulate("FAULTS", "");
    EXPECT_THAT(RunTool("capture -n 10 --set FRAME_COUNT=3" + Out("text")).out,
                HasSubstr("camera0_0003.tif\n3 frames saved, "));
}

TEST_F(ProgramCapture, AFullDiskLeavesNoHalfFile) {
    if (fs::path::preferred_separator != '/') GTEST_SKIP() << "this system's files can't be kept short";
    for (const char* command : {"capture", "capture -c 2 --color", "calibrate export", "calibrate show"}) {
        const ToolResult result =
            RunCommand("trap '' XFSZ; ulimit -f 1; ./zelcam " + std::string(command) + " --json" + Out("full"));
        EXPECT_EQ(result.exit_code, kOutput.exit_code) << command;
        EXPECT_THAT(result.err, HasSubstr("the file came out incomplete; make room")) << command;
        EXPECT_TRUE(fs::is_empty(m_Folder / "full")) << command;
    }
}

}  // namespace zelcam
