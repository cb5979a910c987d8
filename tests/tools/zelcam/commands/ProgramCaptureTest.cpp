// The program: pictures on disk.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
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

class ProgramCapture : public testing::Test {
  protected:
    ProgramCapture() { UseFastCameras("1", "1", "2"); }

    // The samples of the one picture that `capture` takes with these arguments, which stand at the end of the file.
    Samples Capture(const std::string& arguments, std::size_t width = 64, std::size_t height = 48) {
        const std::string name = "p" + std::to_string(++m_Pictures);
        const ToolResult result =
            RunTool("capture " + arguments + " -p " + name + " --out \"" + (m_Folder / "p") + "\"");
        EXPECT_EQ(result.exit_code, 0) << arguments << result.err;
        const std::string file = FileText(m_Folder / ("p/" + name + "_0001.tif"));
        Samples samples(width * height);
        EXPECT_EQ(file.size(), 198 + samples.size() * 2) << arguments;
        if (file.size() >= 198 + samples.size() * 2) std::memcpy(samples.data(), file.data() + 198, samples.size() * 2);
        return samples;
    }

    TemporaryFolder m_Folder;
    int m_Pictures = 0;
};

// What the file beside a picture says.
nlohmann::json DescriptionOf(fs::path picture) {
    return nlohmann::json::parse(FileText(picture.replace_extension(".json")), nullptr, false);
}

// Mean of the squared differences.
double Distance(const Samples& a, const Samples& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) sum += (double{1} * a[i] - b[i]) * (double{1} * a[i] - b[i]);
    return sum / static_cast<double>(a.size());
}

TEST_F(ProgramCapture, TwelvePicturesWithoutHolesEachHaveADescription) {
    const ToolResult result =
        RunTool("capture --json -n 12 --exposure 5000 --gain 7 --out \"" + (m_Folder / "new folder") + "\"");
    ASSERT_EQ(result.exit_code, 0) << result.err;
    const auto json = result.Json();
    EXPECT_EQ(json["dropped"], (nlohmann::json{{"link", 0}, {"no_free_buffer", 0}}));
    ASSERT_EQ(json["pictures"].size(), 12u) << result.out;
    const int first = json["pictures"][0]["frame_number"];
    int number = 0;
    for (auto picture : json["pictures"]) {
        EXPECT_EQ(picture["frame_number"], first + number++);
        const fs::path path = picture["path"].get<std::string>();
        EXPECT_EQ(fs::file_size(path), 198 + kSampleBytes) << path;
        picture.erase("path");
        EXPECT_EQ(DescriptionOf(path), picture);
        EXPECT_EQ(picture["file"], path.filename().string());
        const nlohmann::json expected{
            {"width", 64}, {"height", 48}, {"exposure_us", 5000}, {"gain", 7}, {"scaled_by_bits", 0}};
        for (const auto& [key, value] : expected.items()) EXPECT_EQ(picture[key], value) << key;
        for (const char* key : {"serial", "model"}) EXPECT_EQ(picture[key], json["camera"][key]);
        const auto& time = picture["time"];
        EXPECT_THAT(time["clock"].get<std::string>(), HasSubstr("millisecond clock"));
        EXPECT_EQ(time["queue_delay_ms"].get<std::uint32_t>(),
                  time["hand_over_ms"].get<std::uint32_t>() - time["arrival_ms"].get<std::uint32_t>());
        EXPECT_THAT(picture["saved_utc"].get<std::string>(), MatchesRegex("....-..-..T..:..:..\\....Z"));
    }
}

TEST_F(ProgramCapture, EveryLinkGivesPicturesInBothFormats) {
    const struct {
        const char *format, *extension, *magic;
    } formats[] = {{"tiff", ".tif", "II*"}, {"png", ".png", "\x89PNG"}};
    for (const auto& format : formats) {
        for (const char* camera : {"0", "1", "2", "3"}) {
            const ToolResult result = RunTool(std::string("capture -c ") + camera + " -f " + format.format +
                                              " --scale -p x --overwrite --out \"" + (m_Folder / "b") + "\"");
            ASSERT_EQ(result.exit_code, 0) << camera << format.format << result.err;
            const std::string picture = m_Folder / (std::string("b/x_0001") + format.extension);
            EXPECT_EQ(FileText(picture).substr(0, std::string(format.magic).size()), format.magic);
            const auto beside = DescriptionOf(picture);
            EXPECT_EQ(beside["scaled_by_bits"].get<int>(), 16 - beside["bits"].get<int>());
        }
    }
}

TEST_F(ProgramCapture, RegionIsCutOutOfTheSameFrame) {
    zel::platform::SetEnvironment("ZEL_SIM_FILL", "static");
    for (const char* camera : {"-c 0", "-c 1", "-c 3"}) {
        const Samples whole = Capture(camera);
        const Samples region = Capture(std::string(camera) + " --roi 5,7,33,20", 33, 20);
        const Samples binned = Capture(std::string(camera) + " --roi 5,7,33,20 --bin 3,2", 11, 10);
        for (std::size_t y = 0; y < 20; ++y) {
            for (std::size_t x = 0; x < 33; ++x) {
                ASSERT_EQ(region[y * 33 + x], whole[(y + 7) * 64 + x + 5]) << camera << " " << x << "," << y;
            }
        }
        // The first row of a binned frame is another matter.
        unsigned sum = 0;
        for (std::size_t i = 0; i < 6; ++i) sum += region[(2 + i / 3) * 33 + 3 + i % 3];
        EXPECT_EQ(binned[11 + 1], std::min(sum, camera == std::string("-c 1") ? 4095u : 16383u)) << camera;
    }
    zel::platform::SetEnvironment("ZEL_SIM_FILL", "noise");
}

// The samples of a frame as a link delivers it, in whatever order of the taps, are those of the frame that the SDK
// hands over.
TEST_F(ProgramCapture, WhatTheLinkDeliversBecomesThePicture) {
    zel::platform::SetEnvironment("ZEL_SIM_FILL", "static");
    zel::platform::SetEnvironment("ZEL_SIM_TAPS", "even");
    const struct {
        const char *plugin, *settings, *taps;
    } cases[] = {{"edt_camera_link.dll", "-c 0 --set TAPS_INDEX=0", "1"},
                 {"edt_camera_link.dll", "-c 0 --set TAPS_INDEX=1", "2"},
                 {"edt_camera_link.dll", "-c 0 --set TAPS_INDEX=2", "4"},
                 {"pleora_ebus.dll", "-c 1 --set TAPS_INDEX=1", "2"}};
    for (const auto& c : cases) {
        const std::string file = m_Folder / "raw.pgm";
        const ToolResult raw =
            RunProgram("zel_plugin_check", std::string(c.plugin) + " --samples \"" + file + "\" " + c.taps);
        ASSERT_EQ(raw.exit_code, 0) << raw.err;
        const std::string bytes = FileText(file);
        ASSERT_GT(bytes.size(), kSampleBytes);
        Samples delivered;
        for (std::size_t i = bytes.size() - kSampleBytes; i < bytes.size(); i += 2) {
            const auto high = static_cast<unsigned char>(bytes[i]);
            delivered.push_back(static_cast<std::uint16_t>(high << 8 | static_cast<unsigned char>(bytes[i + 1])));
        }
        Samples handed_over = Capture(c.settings);
        handed_over[0] = delivered[0];  // the frame's number
        if (*c.taps != '1') {
            EXPECT_NE(handed_over, delivered) << c.settings;
            std::sort(delivered.begin(), delivered.end());
            std::sort(handed_over.begin(), handed_over.end());
        }
        EXPECT_EQ(handed_over, delivered) << c.settings;
    }
    zel::platform::SetEnvironment("ZEL_SIM_FILL", "noise");
    zel::platform::SetEnvironment("ZEL_SIM_TAPS", "uneven");
}

TEST_F(ProgramCapture, PluginCheckTellsWhatItFoundInItsExitCode) {
    const std::pair<const char*, int> cases[] = {{"no_such.dll --bytes x.pgm", 1},
                                                 {"zel_usb.dll --samples x.pgm 4", 1},
                                                 {"zel_usb.dll --samples x.pgm 3", 2},
                                                 {"zel_usb.dll 1", 2},
                                                 {"", 2},
                                                 {"zel_usb.dll --bytes no_such_folder/x.pgm", 1}};
    for (const auto& [arguments, exit_code] : cases) {
        const ToolResult result = RunProgram("zel_plugin_check", arguments);
        EXPECT_EQ(result.exit_code, exit_code) << arguments;
        EXPECT_NE(result.err, "") << arguments;
    }
    EXPECT_EQ(RunProgram("zel_plugin_check", "--help").exit_code, 0);
    const auto json = RunProgram("zel_plugin_check", "no_such.dll --json").Json();
    EXPECT_EQ(json["failed"], 2) << json;
    EXPECT_EQ(json["checks"][0]["name"], "load");
}

// Frames of two seeds differ by their noise alone.
TEST_F(ProgramCapture, AverageOfManyFramesHasLessNoise) {
    Samples single[2];
    Samples mean[2];
    for (int i = 0; i < 2; ++i) {
        zel::platform::SetEnvironment("ZEL_SIM_SEED", i == 0 ? "1" : "2");
        single[i] = Capture("");
        mean[i] = Capture("--average 8");
    }
    zel::platform::SetEnvironment("ZEL_SIM_SEED", "1");
    const double noise = Distance(single[0], single[1]);
    EXPECT_GT(noise, 100.0);
    EXPECT_NEAR(Distance(mean[0], mean[1]) / noise, 1.0 / 8.0, 0.02);
    const auto json = RunTool("capture --json --average 8 -n 2 --out \"" + (m_Folder / "q") + "\"").Json();
    ASSERT_EQ(json["pictures"].size(), 2u);
    EXPECT_EQ(json["pictures"][0]["average_of_frames"], 8);
    EXPECT_GE(json["pictures"][0]["frame_number"].get<int>(), 7) << "frames count from 0";
}

TEST_F(ProgramCapture, WhatCanNotWorkFailsBeforeTheStart) {
    std::ofstream(m_Folder / "file") << "in the way";
    FailureOfTool("capture --out \"" + m_Folder / "file" + "\"", kOutput, "can't be used");
    FailureOfTool("capture --out \"" + m_Folder / "file/below" + "\"", kOutput, "choose another --out");
    EXPECT_EQ(FileText(m_Folder / "file"), "in the way");
    FailureOfTool("capture --exposure 0 --out \"" + m_Folder / "c" + "\"", kRefused,
                  "EXPOSURE_TIME_US: requested 0 -> actual 10000 us (range 1..");
    EXPECT_FALSE(fs::exists(m_Folder / "c"));
}

// On Windows most of these characters are in no 8-bit encoding, which the SDK's own writers are bound to.
TEST_F(ProgramCapture, FoldersAndFilesHaveAnyName) {
    const std::string name = "\u00DCml\u00E4ut \u65E5\u672C";
    const fs::path folder = zel::platform::Utf8Path(m_Folder / name);
    const std::pair<const char*, const char*> formats[] = {
        {"-f tiff", ".tif"}, {"-f png", ".png"}, {"-c 2 --color", ".png"}};
    for (const auto& [options, extension] : formats) {
        const std::string prefix = name + options[3];
        const ToolResult result =
            RunTool("capture --json -o \"" + (m_Folder / name) + "\" -p \"" + prefix + "\" " + options);
        ASSERT_EQ(result.exit_code, 0) << result.err;
        const fs::path picture = folder / zel::platform::Utf8Path(prefix + "_0001" + extension);
        EXPECT_GT(fs::file_size(picture), kSampleBytes / 4);
        EXPECT_EQ(result.Json()["pictures"][0]["file"], zel::platform::Utf8Text(picture.filename()));
    }
    EXPECT_EQ(RunTool("calibrate export --out \"" + (m_Folder / name) + "\"").exit_code, 0);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 8);
    const std::string table = m_Folder / (name + "/300101_20MHz.txt");
    for (const char* command : {"show --no-plot", "import"}) {
        const ToolResult result = RunTool(std::string("calibrate ") + command + " \"" + table + "\"");
        EXPECT_EQ(result.exit_code, 0) << result.err;
    }
}

TEST_F(ProgramCapture, PicturesAreNotOverwritten) {
    const std::string out = " --out \"" + m_Folder.Path().generic_string() + "\"";
    for (const char* name : {"camera0_0041.json", "camera0_9.png", "camera0_77x.tif", "camera1_0099.tif"}) {
        std::ofstream(m_Folder / name) << "a user's";
    }
    EXPECT_THAT(RunTool("capture -n 2" + out).out, HasSubstr("camera0_0042.tif on\n"));
    EXPECT_THAT(RunTool("capture --format png" + out).out, HasSubstr("camera0_0044.png\n1 frame saved; "));
    EXPECT_THAT(RunTool("capture --overwrite" + out).out, HasSubstr("camera0_0001.tif on\n"));
    EXPECT_EQ(FileText(m_Folder / "camera0_0041.json"), "a user's");
    EXPECT_THAT(RunTool("trigger --save --hardware --timeout 0.1 -n 9957" + out).out,
                HasSubstr("camera0_00045.tif on\n"))
        << "numbers are of one width up to the last";
}

TEST_F(ProgramCapture, TwoProgramsShareAFolder) {
    const auto capture = [&](const char* camera) {
        return RunTool("capture -n 40 -p x -c " + std::string(camera) + " --allow-loss --json --out \"" +
                       m_Folder.Path().generic_string() + "\"");
    };
    std::future<ToolResult> other = std::async(std::launch::async, capture, "1");
    const ToolResult results[] = {capture("0"), other.get()};
    std::set<std::string> paths;
    for (const ToolResult& result : results) {
        ASSERT_EQ(result.exit_code, 0) << result.err;
        const auto json = result.Json();
        for (const auto& picture : json["pictures"]) {
            const std::string path = picture["path"].get<std::string>();
            EXPECT_TRUE(paths.insert(path).second) << path;
            EXPECT_EQ(DescriptionOf(path)["camera"], json["camera"]["number"]) << path;
        }
    }
    EXPECT_EQ(paths.size(), 80u);
}

TEST_F(ProgramCapture, ARunThatEndsEarlyReportsWhatItSaved) {
    const std::string out = " --set FRAME_COUNT=3 --out \"" + m_Folder / "e" + "\"";
    const auto json = FailureOfTool("capture -n 10" + out, kTimeout, "its sequence of 3 frames is over");
    ASSERT_EQ(json["pictures"].size(), 3u);
    EXPECT_EQ(json["frames"], 3);
    EXPECT_TRUE(fs::exists(json["pictures"][2]["path"].get<std::string>()));
    EXPECT_THAT(RunTool("capture -n 10" + out).out, HasSubstr("camera0_0006.tif\n3 frames saved, "));
    EXPECT_EQ(FailureOfTool("stream -n 10 --set FRAME_COUNT=3", kTimeout, "is over")["frames"], 3);
    const auto triggered = FailureOfTool("trigger -n 10 --save" + out, kTimeout, "is over");
    ASSERT_EQ(triggered["frames"].size(), 3u);
    EXPECT_GT(triggered["frames"][2]["trigger_to_frame_ms"].get<double>(), 0.0);
    EXPECT_THAT(triggered["frames"][2]["picture"]["path"].get<std::string>(), HasSubstr("camera0_0009.tif"));
}

TEST_F(ProgramCapture, AFullDiskLeavesNoHalfFile) {
    if (fs::path::preferred_separator != '/') GTEST_SKIP() << "this system's files can't be kept short";
    for (const char* command : {"capture", "capture -c 2 --color", "calibrate export", "calibrate show"}) {
        const ToolResult result = RunCommand("trap '' XFSZ; ulimit -f 1; ./zelcam " + std::string(command) +
                                             " --json --out \"" + m_Folder / "full" + "\"");
        EXPECT_EQ(result.exit_code, kOutput.exit_code) << command;
        EXPECT_THAT(result.err, HasSubstr("the file came out incomplete; make room")) << command;
        EXPECT_TRUE(fs::is_empty(m_Folder / "full")) << command;
    }
}

TEST_F(ProgramCapture, LostFramesAreAFailureUnlessTheyAreAllowed) {
    const std::string arguments = "capture -n 200 --buffers 1 --out \"" + m_Folder / "l" + "\"";
    const auto json = FailureOfTool(arguments, kFramesLost, "without a free buffer; use more --buffers");
    EXPECT_EQ(json["frames"], 200);
    EXPECT_GT(json["dropped"]["no_free_buffer"], 0);
    EXPECT_GT(json["camera_frames_per_second"], json["saved_frames_per_second"]);
    EXPECT_EQ(RunTool(arguments + " --allow-loss").exit_code, 0);
}

}  // namespace zelcam
