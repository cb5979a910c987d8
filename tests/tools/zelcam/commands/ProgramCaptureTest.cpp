// The program: pictures on disk.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
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
    ASSERT_TRUE(json.is_object()) << result.out;
    EXPECT_EQ(json["frames"], 12);
    EXPECT_EQ(json["dropped"]["link"], 0);
    EXPECT_EQ(json["dropped"]["no_free_buffer"], 0);
    ASSERT_EQ(json["pictures"].size(), 12u);
    const int first = json["pictures"][0]["frame_number"];
    int number = 0;
    for (const auto& picture : json["pictures"]) {
        EXPECT_EQ(picture["frame_number"], first + number++);
        const fs::path path = picture["path"].get<std::string>();
        EXPECT_EQ(fs::file_size(path), 198 + kSampleBytes) << path;
        const auto beside = nlohmann::json::parse(FileText(fs::path(path).replace_extension(".json")), nullptr, false);
        ASSERT_TRUE(beside.is_object()) << path;
        EXPECT_EQ(beside["file"], path.filename().string());
        EXPECT_EQ(beside["width"], 64);
        EXPECT_EQ(beside["height"], 48);
        EXPECT_EQ(beside["exposure_us"], 5000);
        EXPECT_EQ(beside["gain"], 7);
        EXPECT_EQ(beside["serial"], json["camera"]["serial"]);
        EXPECT_EQ(beside["model"], json["camera"]["model"]);
        EXPECT_GE(beside["bits"].get<int>(), 8);
        EXPECT_EQ(beside["scaled_by_bits"], 0);
        EXPECT_THAT(beside["time"]["clock"].get<std::string>(), HasSubstr("millisecond clock"));
        EXPECT_EQ(
            beside["time"]["queue_delay_ms"].get<std::uint32_t>(),
            beside["time"]["hand_over_ms"].get<std::uint32_t>() - beside["time"]["arrival_ms"].get<std::uint32_t>());
        EXPECT_THAT(beside["saved_utc"].get<std::string>(), MatchesRegex("....-..-..T..:..:..\\....Z"));
    }
}

TEST_F(ProgramCapture, EveryLinkGivesPicturesInBothFormats) {
    const struct {
        const char *format, *extension, *magic;
    } formats[] = {{"tiff", ".tif", "II*"}, {"png", ".png", "\x89PNG"}};
    for (const auto& format : formats) {
        for (const char* camera : {"0", "1", "2", "3"}) {
            const ToolResult result = RunTool(std::string("capture -c ") + camera + " -f " + format.format +
                                              " --scale -p x" + camera + " --out \"" + (m_Folder / "b") + "\"");
            ASSERT_EQ(result.exit_code, 0) << camera << format.format << result.err;
            const std::string stem = m_Folder / (std::string("b/x") + camera + "_0001");
            EXPECT_EQ(FileText(stem + format.extension).substr(0, std::string(format.magic).size()), format.magic);
            const auto beside = nlohmann::json::parse(FileText(stem + ".json"), nullptr, false);
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

// The frame as a link delivers it, put into image order by the layout of its taps, is the frame that the SDK hands
// over.
TEST_F(ProgramCapture, WhatTheLinkDeliversBecomesThePicture) {
    constexpr std::size_t kWidth = 64;
    constexpr std::size_t kHeight = 48;
    zel::platform::SetEnvironment("ZEL_SIM_FILL", "static");
    zel::platform::SetEnvironment("ZEL_SIM_TAPS", "even");
    const struct {
        const char *plugin, *taps_index, *camera;
        std::size_t taps;
    } cases[] = {{"edt_camera_link.dll", "TAPS_INDEX=0", "0", 1},
                 {"edt_camera_link.dll", "TAPS_INDEX=1", "0", 2},
                 {"edt_camera_link.dll", "TAPS_INDEX=2", "0", 4},
                 {"pleora_ebus.dll", "TAPS_INDEX=1", "1", 2}};
    for (const auto& c : cases) {
        const std::string file = m_Folder / "raw.pgm";
        const ToolResult raw = RunProgram(
            "zel_plugin_check", std::string(c.plugin) + " --samples \"" + file + "\" " + std::to_string(c.taps));
        ASSERT_EQ(raw.exit_code, 0) << raw.err;
        const std::string bytes = FileText(file);
        ASSERT_GT(bytes.size(), kSampleBytes);
        const auto* const big_endian =
            reinterpret_cast<const unsigned char*>(bytes.data() + bytes.size() - kSampleBytes);
        Samples picture(kWidth * kHeight);
        for (std::size_t i = 0; i < picture.size(); ++i) {
            std::size_t x = i % kWidth;
            std::size_t y = i / kWidth;
            if (c.taps == 2) {
                x = x % 2 == 0 ? x / 2 : kWidth - 1 - x / 2;
            } else if (c.taps == 4) {
                const std::size_t column = i / 4 % (kWidth / 2);
                const std::size_t row = i / 4 / (kWidth / 2);
                x = i % 2 == 0 ? column : kWidth - 1 - column;
                y = i % 4 < 2 ? row : kHeight - 1 - row;
            }
            picture[y * kWidth + x] = static_cast<std::uint16_t>(big_endian[2 * i] << 8 | big_endian[2 * i + 1]);
        }
        Samples handed_over = Capture(std::string("-c ") + c.camera + " --set " + c.taps_index);
        // The first two samples carry the frame's number.
        std::copy_n(picture.begin(), 2, handed_over.begin());
        EXPECT_EQ(handed_over, picture) << c.plugin << " " << c.taps;
    }
    zel::platform::SetEnvironment("ZEL_SIM_FILL", "noise");
    zel::platform::SetEnvironment("ZEL_SIM_TAPS", "uneven");
}

TEST_F(ProgramCapture, RawFrameOfNothingIsAFailureWithALine) {
    const std::pair<const char*, int> cases[] = {{"no_such.dll --bytes x.pgm", 1},
                                                 {"zel_usb.dll --samples x.pgm 4", 1},
                                                 {"zel_usb.dll --samples x.pgm 3", 2},
                                                 {"zel_usb.dll --pixels x.pgm", 2},
                                                 {"zel_usb.dll --bytes no_such_folder/x.pgm", 1}};
    for (const auto& [arguments, exit_code] : cases) {
        const ToolResult result = RunProgram("zel_plugin_check", arguments);
        EXPECT_EQ(result.exit_code, exit_code) << arguments;
        EXPECT_NE(result.err, "") << arguments;
    }
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

TEST_F(ProgramCapture, FolderThatCanNotBeWrittenFailsBeforeTheStart) {
    std::ofstream(m_Folder / "file") << "in the way";
    const ToolResult result = RunTool("capture --out \"" + (m_Folder / "file") + "\"");
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, HasSubstr("can't be used"));
    EXPECT_THAT(result.err, HasSubstr("choose another --out"));
    EXPECT_EQ(RunTool("capture --out \"" + (m_Folder / "file/below") + "\"").exit_code, 1);
    EXPECT_EQ(FileText(m_Folder / "file"), "in the way");
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

TEST_F(ProgramCapture, RefusedSettingTakesNoPicture) {
    const ToolResult result = RunTool("capture --exposure 0 --out \"" + (m_Folder / "c") + "\"");
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, HasSubstr("EXPOSURE_TIME_US: requested 0 -> actual 10000 us (range 1.."));
    EXPECT_FALSE(fs::exists(m_Folder / "c"));
}

TEST_F(ProgramCapture, TriggeredFramesCanBeSaved) {
    const ToolResult result = RunTool("trigger --json -n 2 --save --out \"" + (m_Folder / "d") + "\"");
    ASSERT_EQ(result.exit_code, 0) << result.err;
    const auto json = result.Json();
    ASSERT_EQ(json["frames"].size(), 2u);
    for (const auto& frame : json["frames"]) {
        EXPECT_GT(frame["trigger_to_frame_ms"].get<double>(), 0.0);
        EXPECT_TRUE(fs::exists(frame["picture"]["path"].get<std::string>()));
    }
}

}  // namespace zelcam
