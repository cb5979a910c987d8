// The program: reading and writing parameters.

#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

using testing::HasSubstr;

struct ProgramParameter : testing::Test {
    ProgramParameter() { UseFastCameras(); }
};

TEST_F(ProgramParameter, ParamsShowsEveryOne) {
    const auto json = JsonOf("params");
    ASSERT_EQ(json.size(), 79u);
    const std::pair<std::size_t, nlohmann::json> cases[] = {
        {58, {{"name", "EXPOSURE_TIME_US"}, {"value", 10000}, {"unit", "us"}, {"access", "rw"}}},
        {13, {{"access", "ro"}}},
        {62, {{"access", "wo"}}},
        {21, {{"minimum", 0}, {"maximum", 1023}, {"default", 0}}},
        {6, {{"type", "text"}}},
        {23, {{"available", false}}}};
    for (const auto& [row, members] : cases) ExpectMembers(json[row], members);
    EXPECT_THAT(RunTool("params").out, HasSubstr("0..1023"));
}

TEST_F(ProgramParameter, GetPrintsValuesWithUnits) {
    EXPECT_THAT(RunTool("get exposure-time-us HSIZE 14").out,
                HasSubstr("EXPOSURE_TIME_US = 10000 us\nHSIZE = 64 px\n"));
    EXPECT_EQ(JsonOf("get HSIZE VSIZE"), (nlohmann::json{{"HSIZE", 64}, {"VSIZE", 48}}));
    EXPECT_EQ(JsonOf("get HW_SER_NUM")["HW_SER_NUM"], JsonOf("list")[0]["serial"]);
}

TEST_F(ProgramParameter, SetPrintsRequestedAndActual) {
    const char* const in_ms = "EXPOSURE_TIME: requested 5 -> actual 5 ms (range 1..2000000)";
    for (const auto& [arguments, line] :
         {std::pair{"set EXPOSURE_TIME_US 2500", "EXPOSURE_TIME_US: requested 2500 -> actual 2500 us"},
          {"set UPDATE_PARAMETERS=1 EXPOSURE_UNIT=1 EXPOSURE_TIME=5", in_ms},
          {"set UPDATE_PARAMETERS=1 EXPOSURE_TIME=5 EXPOSURE_UNIT=1", in_ms}})
        EXPECT_THAT(OutputOf(arguments), HasSubstr(line));
    EXPECT_THAT(RunTool("set GAIN=3 GAIN=5000").out, HasSubstr("GAIN: requested 5000 -> actual 3 (range 0..1023)\n"));
}

TEST_F(ProgramParameter, WritesAreReadBack) {
    // What is written, what it then reads, and why it was refused.
    const std::tuple<const char*, nlohmann::json, const char*> cases[] = {
        {"EXPOSURE_TIME_US=12345", 12345, ""},
        {"EXPOSURE_TIME_US=0", 12345, "out of range"},
        {"VGA_GAIN=5", 5, ""},
        {"NUM_IMAGE_BUFFERS=3", 3, ""},
        {"ROI_BIN=2,4,32,16,2,2", {{"x", 2}, {"y", 4}, {"width", 32}, {"height", 16}, {"xbin", 2}, {"ybin", 2}}, ""},
        {"\"GLOBAL_CAMERA_NAME=left eye\"", "left eye", ""},
        {"HSIZE=10", 64, "it is read-only"},
        {"EXPOSURE_UNIT=2", 0, "refused or changed"},
        {"PIXEL_OFFSET=1", {}, "does not offer it"},
        {"COLOR_FILTER_PHASE=1", 0, "read-only"},
    };
    std::string arguments = "set";
    for (const auto& row : cases) arguments += std::string(" ") + std::get<0>(row);
    const auto json = FailureOfTool(arguments, kRefused, ", HSIZE (it is read-only), ")["result"];
    ASSERT_EQ(json.size(), std::size(cases));
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const auto& [assignment, actual, reason] = cases[i];
        EXPECT_EQ(json[i]["accepted"], !*reason) << json[i];
        EXPECT_THAT(json[i].value("reason", ""), HasSubstr(reason));
        EXPECT_EQ(json[i].value("actual", nlohmann::json()), actual) << json[i];
    }
}

}  // namespace zelcam
