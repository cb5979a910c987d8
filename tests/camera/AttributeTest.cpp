// The seven attributes of every parameter.
#include <cstring>

#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

constexpr int kNoLimit = -1;  // 0xFFFFFFFF as a signed word

// Parameters that the camera is not asked about: data type, count, maximum, default.
struct Fixed {
    int data_type, array_count, maximum, default_value;
};
const std::map<int, Fixed> kFixed = {
    {ZEL_PARAM_DROPPED_FRAMES, {3, 1, kNoLimit, 0}},     {ZEL_PARAM_EXPOSURE_TIME_US, {3, 1, kNoLimit, 0}},
    {ZEL_PARAM_TAP_BALANCE_ENABLE, {3, 1, 1, 1}},        {ZEL_PARAM_NUM_IMAGE_BUFFERS, {7, 1, kNoLimit, 8}},
    {ZEL_PARAM_UPDATE_PARAMETERS, {0, 0, 0, 0}},         {ZEL_PARAM_COLOR_FILTER_TYPE, {5, 32, 127, 0}},
    {ZEL_PARAM_COLOR_FILTER_PHASE, {7, 1, kNoLimit, 0}}, {ZEL_PARAM_COLOR_IR_FILTER_TYPE, {5, 32, 127, 0}},
    {ZEL_PARAM_CCM_OUTPUT_COLOR_SPACE, {5, 32, 127, 0}}, {ZEL_PARAM_USB_ENABLE_LED, {3, 1, 1, 1}},
    {ZEL_PARAM_HW_TRIGGER_ACTIVE, {3, 1, 1, 0}},
};

class AttributeTest : public CameraTest {
  protected:
    bool Read(int id, int attribute, void* data) {
        const ZelParamAttrId selection{id, attribute};
        EXPECT_TRUE(m_Camera->SetParameter(ZEL_PARAM_CMD_ID_ATTR_ID, &selection));
        return m_Camera->GetParameter(ZEL_PARAM_ATTR, 72, data);
    }
    int ReadWord(int id, int attribute) {
        int words[18] = {};
        EXPECT_TRUE(Read(id, attribute, words)) << id << " " << attribute;
        return words[0];
    }
};

class EveryAttribute : public AttributeTest, public testing::WithParamInterface<int> {};

TEST_P(EveryAttribute, NameIsThirtyTwoBytes) {
    const int id = GetParam();
    char name[40];
    std::memset(name, '#', sizeof name);
    EXPECT_TRUE(Read(id, ZEL_ATTR_NAME, name));
    char expected[40] = {};
    std::strncpy(expected, ParameterName(id), sizeof expected - 1);
    EXPECT_EQ(std::memcmp(name, expected, 32), 0);
    EXPECT_EQ(name[32], '#');
    EXPECT_EQ(m_Transport.Exchanges(), 0);
}

TEST_P(EveryAttribute, ComesFromTheHostOrFromTheCamera) {
    const int id = GetParam();
    if (const auto fixed = kFixed.find(id); fixed != kFixed.end()) {
        EXPECT_EQ(ReadWord(id, ZEL_ATTR_DATA_TYPE), fixed->second.data_type);
        EXPECT_EQ(ReadWord(id, ZEL_ATTR_ARRAY_COUNT), fixed->second.array_count);
        EXPECT_EQ(ReadWord(id, ZEL_ATTR_MIN_VALUE), 0);
        EXPECT_EQ(ReadWord(id, ZEL_ATTR_MAX_VALUE), fixed->second.maximum);
        EXPECT_EQ(ReadWord(id, ZEL_ATTR_FLAGS), 0);
        EXPECT_EQ(ReadWord(id, ZEL_ATTR_DEFAULT_VALUE), fixed->second.default_value);
        EXPECT_EQ(m_Transport.Exchanges(), 0);
        return;
    }
    const int entry = FindParameter(id)->translation;
    if (entry < 0) {
        int words[18] = {99};
        const bool matrix_or_region = FindParameter(id)->attributes != nullptr;
        EXPECT_EQ(Read(id, ZEL_ATTR_DATA_TYPE, words), matrix_or_region);
        if (!matrix_or_region) {
            EXPECT_EQ(words[0], 99);
        }
        return;
    }
    m_Table.m_Attributes[entry] = MakeAttributes(entry, "entry", -5, 500, 50);
    EXPECT_EQ(ReadWord(id, ZEL_ATTR_DATA_TYPE), 3);
    EXPECT_EQ(ReadWord(id, ZEL_ATTR_ARRAY_COUNT), 1);
    EXPECT_EQ(ReadWord(id, ZEL_ATTR_MIN_VALUE), -5);
    EXPECT_EQ(ReadWord(id, ZEL_ATTR_MAX_VALUE), 500);
    EXPECT_EQ(ReadWord(id, ZEL_ATTR_FLAGS), 0);
    EXPECT_EQ(ReadWord(id, ZEL_ATTR_DEFAULT_VALUE), 50);
    EXPECT_EQ(m_Transport.Exchanges(), 1) << "the camera is asked once, then the cache answers";
}

INSTANTIATE_TEST_SUITE_P(, EveryAttribute, testing::Range(0, ZEL_MAX_PARAMS),
                         [](const auto& row) { return std::string(ParameterName(row.param)); });

TEST_F(AttributeTest, DataTypesAndFlagsOfTheCamera) {
    m_Table.m_Attributes[CAMERA_NAME] = MakeAttributes(CAMERA_NAME, "name", 0, 0, 0, 1, 7);
    m_Table.m_Attributes[H_SIZE] = MakeAttributes(H_SIZE, "size", 0, 0, 0, 0, 6);
    m_Table.m_Attributes[V_SIZE] = MakeAttributes(V_SIZE, "size", 0, 0, 0, 2, 1);
    EXPECT_EQ(ReadWord(ZEL_PARAM_GLOBAL_CAMERA_NAME, ZEL_ATTR_DATA_TYPE), 9);
    EXPECT_EQ(ReadWord(ZEL_PARAM_HSIZE, ZEL_ATTR_DATA_TYPE), 10);
    EXPECT_EQ(ReadWord(ZEL_PARAM_VSIZE, ZEL_ATTR_DATA_TYPE), 3);
    EXPECT_EQ(ReadWord(ZEL_PARAM_GLOBAL_CAMERA_NAME, ZEL_ATTR_FLAGS), 0);
    EXPECT_EQ(ReadWord(ZEL_PARAM_HSIZE, ZEL_ATTR_FLAGS), 4);
    EXPECT_EQ(ReadWord(ZEL_PARAM_VSIZE, ZEL_ATTR_FLAGS), 4);
}

TEST_F(AttributeTest, RegionBoundsAreThoseOfItsSixEntries) {
    const int entries[6] = {H_ROI_ORIGIN, V_ROI_ORIGIN, H_ROI_PIXELS, V_ROI_PIXELS, H_BIN, V_BIN};
    for (int i = 0; i < 6; ++i) m_Table.m_Attributes[entries[i]] = MakeAttributes(entries[i], "", i, 10 + i, 20 + i);
    const std::pair<int, int> bounds[] = {
        {ZEL_ATTR_MIN_VALUE, 0}, {ZEL_ATTR_MAX_VALUE, 10}, {ZEL_ATTR_DEFAULT_VALUE, 20}};
    for (const auto& [attribute, first] : bounds) {
        int words[6] = {};
        EXPECT_TRUE(Read(ZEL_PARAM_ROI_BIN, attribute, words));
        EXPECT_THAT(words, testing::ElementsAre(first, first + 1, first + 2, first + 3, first + 4, first + 5));
    }
    EXPECT_EQ(ReadWord(ZEL_PARAM_ROI_BIN, ZEL_ATTR_ARRAY_COUNT), 6);
    EXPECT_EQ(ReadWord(ZEL_PARAM_ROI_BIN, ZEL_ATTR_DATA_TYPE), 3);
}

TEST_F(AttributeTest, MatrixBoundsAreDoubles) {
    for (const int id : {ZEL_PARAM_COLOR_CAMERA_CORRECTION_MATRIX, ZEL_PARAM_DEFAULT_WHITE_BALANCE_MATRIX}) {
        EXPECT_EQ(ReadWord(id, ZEL_ATTR_DATA_TYPE), 10);
        EXPECT_EQ(ReadWord(id, ZEL_ATTR_ARRAY_COUNT), 9);
        const std::pair<int, double> bounds[] = {
            {ZEL_ATTR_MIN_VALUE, 0.0}, {ZEL_ATTR_MAX_VALUE, 1.0}, {ZEL_ATTR_DEFAULT_VALUE, 0.0}};
        for (const auto& [attribute, expected] : bounds) {
            double value = -1;
            EXPECT_TRUE(Read(id, attribute, &value));
            EXPECT_EQ(value, expected);
        }
    }
}

TEST_F(AttributeTest, AFailedFetchAnswersFalseAndWritesNothing) {
    m_Table.m_Exceptions[H_BIN] = kExceptionBadIndex;
    m_Table.m_Exceptions[H_SIZE] = kExceptionBadIndex;
    for (const int id : {ZEL_PARAM_ROI_BIN, ZEL_PARAM_HSIZE, ZEL_PARAM_EXPOSURE_UNIT, ZEL_PARAM_PIXEL_OFFSET, -1, 73}) {
        int words[6] = {77, 77, 77, 77, 77, 77};
        EXPECT_FALSE(Read(id, ZEL_ATTR_MAX_VALUE, words)) << id;
        EXPECT_THAT(words, testing::Each(77)) << id;
    }
    int word = 77;
    for (const int attribute : {-1, 7, 1000}) {
        EXPECT_TRUE(Read(ZEL_PARAM_VSIZE, attribute, &word));
        EXPECT_TRUE(Read(ZEL_PARAM_NUM_IMAGE_BUFFERS, attribute, &word));
    }
    EXPECT_EQ(word, 77);
}

TEST_F(AttributeTest, TheSelectionStaysUntilTheNextOne) {
    EXPECT_EQ(ReadWord(ZEL_PARAM_NUM_IMAGE_BUFFERS, ZEL_ATTR_DEFAULT_VALUE), 8);
    int value = 0;
    EXPECT_TRUE(m_Camera->GetParameter(ZEL_PARAM_ATTR, 4, &value));
    EXPECT_EQ(value, 8);
}

}  // namespace
}  // namespace zel::test
