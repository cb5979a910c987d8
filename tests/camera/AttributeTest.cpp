// The seven attributes of every parameter.
#include <cstring>

#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

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

TEST_F(AttributeTest, NameIsThirtyTwoBytesWithoutTraffic) {
    for (int id = 0; id < ZEL_MAX_PARAMS; ++id) {
        char name[40];
        std::memset(name, '#', sizeof name);
        EXPECT_TRUE(Read(id, ZEL_ATTR_NAME, name));
        char expected[33] = {};
        std::strncpy(expected, ParameterName(id), sizeof expected - 1);
        EXPECT_EQ(std::memcmp(name, expected, 32), 0) << id;
        EXPECT_EQ(name[32], '#');
    }
    EXPECT_EQ(m_Transport.Exchanges(), 0);
}

TEST_F(AttributeTest, HostParametersHaveTheirOwnWithoutTraffic) {
    const std::array<int, 5> rows[] = {{ZEL_PARAM_EXPOSURE_TIME_US, 3, 1, -1, 0},
                                       {ZEL_PARAM_NUM_IMAGE_BUFFERS, 7, 1, -1, 8},
                                       {ZEL_PARAM_UPDATE_PARAMETERS, 0, 0, 0, 0},
                                       {ZEL_PARAM_COLOR_FILTER_TYPE, 5, 32, 127, 0}};
    for (const auto& [id, type, count, maximum, standard] : rows) {
        EXPECT_EQ(ReadWord(id, ZEL_ATTR_DATA_TYPE), type) << id;
        EXPECT_EQ(ReadWord(id, ZEL_ATTR_ARRAY_COUNT), count) << id;
        EXPECT_EQ(ReadWord(id, ZEL_ATTR_MAX_VALUE), maximum) << id;
        EXPECT_EQ(ReadWord(id, ZEL_ATTR_DEFAULT_VALUE), standard) << id;
    }
    EXPECT_EQ(m_Transport.Exchanges(), 0);
}

TEST_F(AttributeTest, TheCameraIsAskedOnceThenTheCacheAnswers) {
    m_Table.m_Attributes[CAMERA_NAME] = MakeAttributes(CAMERA_NAME, "name", -5, 500, 50, 1, 7);
    EXPECT_EQ(ReadWord(ZEL_PARAM_GLOBAL_CAMERA_NAME, ZEL_ATTR_DATA_TYPE), 9);
    EXPECT_EQ(ReadWord(ZEL_PARAM_GLOBAL_CAMERA_NAME, ZEL_ATTR_ARRAY_COUNT), 1);
    EXPECT_EQ(ReadWord(ZEL_PARAM_GLOBAL_CAMERA_NAME, ZEL_ATTR_MIN_VALUE), -5);
    EXPECT_EQ(ReadWord(ZEL_PARAM_GLOBAL_CAMERA_NAME, ZEL_ATTR_MAX_VALUE), 500);
    EXPECT_EQ(ReadWord(ZEL_PARAM_GLOBAL_CAMERA_NAME, ZEL_ATTR_DEFAULT_VALUE), 50);
    EXPECT_EQ(ReadWord(ZEL_PARAM_GLOBAL_CAMERA_NAME, ZEL_ATTR_FLAGS), 0);
    EXPECT_EQ(m_Transport.Exchanges(), 1);
    m_Table.m_Attributes[H_SIZE] = MakeAttributes(H_SIZE, "size", 0, 0, 0, 0, 6);
    EXPECT_EQ(ReadWord(ZEL_PARAM_HSIZE, ZEL_ATTR_DATA_TYPE), 10);
    EXPECT_EQ(ReadWord(ZEL_PARAM_HSIZE, ZEL_ATTR_FLAGS), 4);
}

TEST_F(AttributeTest, RegionBoundsAreThoseOfItsSixEntries) {
    const int entries[6] = {H_ROI_ORIGIN, V_ROI_ORIGIN, H_ROI_PIXELS, V_ROI_PIXELS, H_BIN, V_BIN};
    for (int i = 0; i < 6; ++i) m_Table.m_Attributes[entries[i]] = MakeAttributes(entries[i], "", i, 10 + i, 20 + i);
    int words[6] = {};
    EXPECT_TRUE(Read(ZEL_PARAM_ROI_BIN, ZEL_ATTR_MAX_VALUE, words));
    EXPECT_THAT(words, testing::ElementsAre(10, 11, 12, 13, 14, 15));
    EXPECT_EQ(ReadWord(ZEL_PARAM_ROI_BIN, ZEL_ATTR_ARRAY_COUNT), 6);
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

}  // namespace
}  // namespace zel::test
