// The program: reading and writing parameters.
#include <gmock/gmock.h>

#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

using testing::HasSubstr;

class ProgramParameter : public testing::Test {
  protected:
    ProgramParameter() { UseFastCameras(); }
};

TEST_F(ProgramParameter, ParamsShowsEveryOne) {
    const ToolResult result = RunTool("params --json");
    ASSERT_EQ(result.exit_code, 0) << result.err;
    const auto json = result.Json();
    ASSERT_EQ(json.size(), 79u);
    const std::tuple<std::size_t, const char*, nlohmann::json> cases[] = {{58, "name", "EXPOSURE_TIME_US"},
                                                                          {58, "value", 10000},
                                                                          {58, "unit", "us"},
                                                                          {58, "access", "rw"},
                                                                          {13, "access", "ro"},
                                                                          {62, "access", "wo"},
                                                                          {21, "minimum", 0},
                                                                          {21, "maximum", 1023},
                                                                          {21, "default", 0},
                                                                          {6, "type", "text"},
                                                                          {23, "available", false}};
    for (const auto& [row, member, value] : cases) EXPECT_EQ(json[row][member], value) << row << member;
    EXPECT_THAT(RunTool("params").out, HasSubstr("0..1023"));
}

TEST_F(ProgramParameter, GetPrintsValuesWithUnits) {
    const ToolResult text = RunTool("get exposure-time-us HSIZE 14");
    EXPECT_THAT(text.out, HasSubstr("EXPOSURE_TIME_US = 10000 us\nHSIZE = 64 px\n"));
    EXPECT_EQ(RunTool("get HSIZE VSIZE --json").Json(), (nlohmann::json{{"HSIZE", 64}, {"VSIZE", 48}}));
    EXPECT_EQ(RunTool("get HW_SER_NUM --json").Json()["HW_SER_NUM"], RunTool("list --json").Json()[0]["serial"]);
}

TEST_F(ProgramParameter, SetPrintsRequestedAndActual) {
    const ToolResult one = RunTool("set EXPOSURE_TIME_US 2500");
    EXPECT_EQ(one.exit_code, 0) << one.err;
    EXPECT_THAT(one.out, HasSubstr("EXPOSURE_TIME_US: requested 2500 -> actual 2500 us"));
    EXPECT_THAT(RunTool("set GAIN=3 GAIN=5000").out, HasSubstr("GAIN: requested 5000 -> actual 3 (range 0..1023)\n"));

    for (const std::string order : {"EXPOSURE_UNIT=1 EXPOSURE_TIME=5", "EXPOSURE_TIME=5 EXPOSURE_UNIT=1"}) {
        const ToolResult several = RunTool("set UPDATE_PARAMETERS=1 " + order);
        EXPECT_EQ(several.exit_code, 0) << several.err;
        EXPECT_THAT(several.out, HasSubstr("EXPOSURE_TIME: requested 5 -> actual 5 ms (range 1..2000000)")) << order;
    }
}

TEST_F(ProgramParameter, WritesAreReadBack) {
    const nlohmann::json none;
    const struct {
        const char* assignment;
        nlohmann::json actual;
        const char* reason;  // of a refusal
    } cases[] = {
        {"EXPOSURE_TIME_US=12345", 12345, nullptr},
        {"EXPOSURE_TIME_US=0", 12345, "out of range"},
        {"VGA_GAIN=5", 5, nullptr},
        {"NUM_IMAGE_BUFFERS=3", 3, nullptr},
        {"ROI_BIN=2,4,32,16,2,2",
         {{"x", 2}, {"y", 4}, {"width", 32}, {"height", 16}, {"xbin", 2}, {"ybin", 2}},
         nullptr},
        {"\"GLOBAL_CAMERA_NAME=left eye\"", "left eye", nullptr},
        {"HSIZE=10", 64, "it is read-only"},
        {"EXPOSURE_UNIT=2", 0, "refused or changed"},
        {"TEMPERATURE=-5", none, "read-only"},
        {"PIXEL_OFFSET=1", none, "does not offer it"},
        {"COLOR_FILTER_PHASE=1", none, "read-only"},
    };
    std::string arguments = "set";
    for (const auto& c : cases) arguments += std::string(" ") + c.assignment;
    const auto json = FailureOfTool(arguments, kRefused, ", HSIZE (it is read-only), ")["result"];
    ASSERT_EQ(json.size(), std::size(cases));
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        EXPECT_EQ(json[i]["accepted"], cases[i].reason == nullptr) << json[i];
        if (cases[i].reason) {
            EXPECT_THAT(json[i]["reason"].get<std::string>(), HasSubstr(cases[i].reason));
        }
        if (!cases[i].actual.is_null()) {
            EXPECT_EQ(json[i]["actual"], cases[i].actual) << json[i];
        }
    }
}

}  // namespace zelcam
