#include "tools/zelcam/camera/ParameterValue.h"

#include <gmock/gmock.h>

#include <cstring>

#include "include/ZelParameters.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

TEST(ParameterValue, ReadsAndWritesTheUsersSpelling) {
    const std::tuple<unsigned, const char*, const char*, const char*> cases[] = {
        {ZEL_PARAM_GAIN, "7", "7", "7"},
        {ZEL_PARAM_GAIN, "0x10", "16", "16"},
        {ZEL_PARAM_GAIN, "010", "10", "10"},
        {ZEL_PARAM_GAIN, " 7 ", "7", "7"},
        {ZEL_PARAM_GAIN, "4294967295", "4294967295", "4294967295"},
        {ZEL_PARAM_TEMPERATURE, "-150", "-150", "-150"},
        {ZEL_PARAM_GLOBAL_CAMERA_NAME, "left eye", "left eye", "\"left eye\""},
        {ZEL_PARAM_GLOBAL_CAMERA_NAME, "", "", "\"\""},
        {ZEL_PARAM_ROI_BIN, "1,2,30,40,5,6", "1,2,30,40,5,6",
         R"({"x":1,"y":2,"width":30,"height":40,"xbin":5,"ybin":6})"},
    };
    for (const auto& [id, text, back, json] : cases) {
        const ParameterValue value = ParameterValue::Parse(ParameterById(id), text);
        EXPECT_EQ(value.Text(), back) << text;
        EXPECT_EQ(JsonText(value.ToJson(), -1), json) << text;
        EXPECT_EQ(value, ParameterValue::Parse(ParameterById(id), back)) << text;
    }
}

TEST(ParameterValue, RefusesWhatItCanNotHold) {
    const std::pair<unsigned, std::vector<const char*>> cases[] = {
        {ZEL_PARAM_GAIN, {"", "many", "7x", "1.5", "0x", "4294967296", "-2147483649", "99999999999999999999"}},
        {ZEL_PARAM_ROI_BIN, {"1,2,3,4,5", "1,2,3,4,5,6,7", "1,2,3,,5,6", "7"}},
        {ZEL_PARAM_GLOBAL_CAMERA_NAME, {"a name of two and thirty letters"}},
        {ZEL_PARAM_DEFAULT_WHITE_BALANCE_MATRIX, {"1"}},
        {ZEL_PARAM_MODEL_VALUE_1, {"1"}},
        {ZEL_PARAM_ATTR, {"1"}}};
    for (const auto& [id, texts] : cases) {
        for (const char* text : texts) EXPECT_THROW(ParameterValue::Parse(ParameterById(id), text), Failure) << text;
    }
}

TEST(ParameterValue, ShowsMatricesWideValuesAndFullTexts) {
    ParameterValue matrix(ValueKind::kMatrix);
    const double elements[9] = {1, 0, 0, 0, 1.5, 0, 0, 0, -0.25};
    std::memcpy(matrix.Data(), elements, sizeof elements);
    EXPECT_EQ(matrix.Text(), "1 0 0; 0 1.5 0; 0 0 -0.25");
    EXPECT_EQ(matrix.ToJson()[8], -0.25);

    ParameterValue wide(ValueKind::kWide);
    std::memset(wide.Data(), 0xFE, 8);
    EXPECT_EQ(wide.Text(), "18374403900871474942");
    EXPECT_EQ(JsonText(wide.ToJson(), -1), "18374403900871474942");
    std::memset(wide.Data(), 0xFF, 8);
    EXPECT_EQ(wide.Text(), "none");
    EXPECT_TRUE(wide.ToJson().is_null());

    // Without an end it stops at its field.
    ParameterValue text(ValueKind::kText);
    std::memset(text.Data(), 'x', ParameterValue::kCapacity);
    EXPECT_EQ(text.Text(), std::string(32, 'x'));
}

TEST(ValueRange, TellsSignedFromUnsignedWords) {
    const std::tuple<int, int, int, const char*> cases[] = {
        {0, 1023, 5, "0..1023"}, {-1000, 1000, -7, "-1000..1000"}, {0, -1, 8, "0..4294967295"}, {5, 5, 5, "5..5"}};
    for (const auto& [minimum, maximum, standard, text] : cases) {
        const ValueRange range = RangeFromWords(minimum, maximum, standard);
        EXPECT_EQ(range.Text(), text);
        EXPECT_EQ(range.standard, standard);
        EXPECT_TRUE(range.Contains(range.minimum) && range.Contains(range.maximum)) << text;
        EXPECT_FALSE(range.Contains(range.minimum - 1) || range.Contains(range.maximum + 1)) << text;
    }
    EXPECT_EQ(ValueRange{}.Text(), "unknown");
    // Bounds in another unit are drawn inwards.
    EXPECT_EQ(ScaledRange(RangeFromWords(1, 2000000999, 10000), 1, 1000).Text(), "1..2000000");
    EXPECT_EQ(ScaledRange(RangeFromWords(20, 40, 20), 1000000, 1).Text(), "20000000..40000000");
}

}  // namespace zelcam
