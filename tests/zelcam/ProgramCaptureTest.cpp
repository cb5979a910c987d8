// The program: pictures on disk.
#include <gmock/gmock.h>

#include "tests/zelcam/ToolProcess.h"

namespace zelcam {

using testing::HasSubstr;
using testing::MatchesRegex;
namespace fs = std::filesystem;

constexpr std::size_t kSampleBytes = 64 * 48 * 2;

class ProgramCapture : public testing::Test {
  protected:
    ProgramCapture() { UseFastCameras("1", "1", "2"); }

    TemporaryFolder m_Folder;
};

TEST_F(ProgramCapture, EachPictureHasADescriptionBesideIt) {
    const ToolResult result =
        RunTool("capture --json -n 3 --exposure 5000 --gain 7 --out \"" + (m_Folder / "new folder") + "\"");
    ASSERT_EQ(result.exit_code, 0) << result.err;
    const auto json = result.Json();
    ASSERT_TRUE(json.is_object()) << result.out;
    EXPECT_EQ(json["frames"], 3);
    ASSERT_EQ(json["pictures"].size(), 3u);
    for (const auto& picture : json["pictures"]) {
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

TEST_F(ProgramCapture, FrameNumbersHaveNoHolesWithinThePool) {
    const auto json = RunTool("capture --json -n 12 --out \"" + (m_Folder / "a") + "\"").Json();
    ASSERT_TRUE(json.is_object());
    ASSERT_EQ(json["pictures"].size(), 12u);
    for (std::size_t i = 1; i < 12; ++i) {
        EXPECT_EQ(json["pictures"][i]["frame_number"].get<int>(),
                  json["pictures"][i - 1]["frame_number"].get<int>() + 1);
    }
    EXPECT_EQ(json["dropped"]["link"], 0);
    EXPECT_EQ(json["dropped"]["no_free_buffer"], 0);
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

TEST_F(ProgramCapture, FolderThatCanNotBeWrittenFailsBeforeTheStart) {
    std::ofstream(m_Folder / "file") << "in the way";
    const ToolResult result = RunTool("capture --out \"" + (m_Folder / "file") + "\"");
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, HasSubstr("can't be used"));
    EXPECT_THAT(result.err, HasSubstr("choose another --out"));
    EXPECT_EQ(RunTool("capture --out \"" + (m_Folder / "file/below") + "\"").exit_code, 1);
    EXPECT_EQ(FileText(m_Folder / "file"), "in the way");
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
