#include "tools/zelcam/camera/ParameterValue.h"

#include <gmock/gmock.h>

#include <cstring>

#include "include/ZelParameters.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

const ParameterInfo& Info(unsigned id) { return ParameterById(id); }

TEST(ParameterValue, ReadsAndWritesTheUsersSpelling) {
    const struct {
        unsigned id;
        const char *text, *back, *json;
    } cases[] = {
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
    for (const auto& c : cases) {
        const ParameterValue value = ParameterValue::Parse(Info(c.id), c.text);
        EXPECT_EQ(value.Text(), c.back) << c.text;
        EXPECT_EQ(JsonText(value.ToJson(), -1), c.json) << c.text;
        EXPECT_EQ(value, ParameterValue::Parse(Info(c.id), c.back)) << c.text;
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
        for (const char* text : texts) EXPECT_THROW(ParameterValue::Parse(Info(id), text), Failure) << text;
    }
}

TEST(ParameterValue, ShowsMatricesAndWideValues) {
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
}

TEST(ParameterValue, ATextWithoutAnEndStopsAtItsField) {
    ParameterValue text(ValueKind::kText);
    std::memset(text.Data(), 'x', ParameterValue::kCapacity);
    EXPECT_EQ(text.Text(), std::string(32, 'x'));
}

TEST(ValueRange, TellsSignedFromUnsignedWords) {
    const struct {
        int minimum, maximum, standard;
        const char* text;
        long long expected_default;
    } cases[] = {{0, 1023, 5, "0..1023", 5},
                 {-1000, 1000, -7, "-1000..1000", -7},
                 {0, -1, 8, "0..4294967295", 8},
                 {5, 5, 5, "5..5", 5}};
    for (const auto& c : cases) {
        const ValueRange range = RangeFromWords(c.minimum, c.maximum, c.standard);
        EXPECT_EQ(range.Text(), c.text);
        EXPECT_EQ(range.standard, c.expected_default);
        EXPECT_TRUE(range.Contains(range.minimum));
        EXPECT_TRUE(range.Contains(range.maximum));
        EXPECT_FALSE(range.Contains(range.minimum - 1));
        EXPECT_FALSE(range.Contains(range.maximum + 1));
    }
    EXPECT_EQ(ValueRange{}.Text(), "unknown");
}

TEST(ValueRange, BoundsInAnotherUnitAreDrawnInwards) {
    EXPECT_EQ(ScaledRange(RangeFromWords(1, 2000000999, 10000), 1, 1000).Text(), "1..2000000");
    EXPECT_EQ(ScaledRange(RangeFromWords(20, 40, 20), 1000000, 1).Text(), "20000000..40000000");
}

}  // namespace zelcam
