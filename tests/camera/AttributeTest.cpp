// The seven attributes of every parameter.
#include <cstring>

#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

struct AttributeTest : CameraTest {
    bool Read(int id, int attribute, void* data) {
        const ZelParamAttrId selection{id, attribute};
        EXPECT_TRUE(m_Camera->SetParameter(ZEL_PARAM_CMD_ID_ATTR_ID, &selection));
        return m_Camera->GetParameter(ZEL_PARAM_ATTR, 72, data);
    }
    // All but the name: data type, array count, flags, minimum, maximum, default.
    std::vector<int> Words(int id) {
        std::vector<int> all;
        for (int attribute = ZEL_ATTR_DATA_TYPE; attribute <= ZEL_ATTR_DEFAULT_VALUE; ++attribute) {
            int words[18] = {};
            EXPECT_TRUE(Read(id, attribute, words)) << id << " " << attribute;
            all.push_back(words[0]);
        }
        return all;
    }
};

using testing::ElementsAre;

TEST_F(AttributeTest, NameIsThirtyTwoBytesWithoutTraffic) {
    for (int id = 0; id < ZEL_MAX_PARAMS; ++id) {
        char name[40], expected[33] = {};
        std::memset(name, '#', sizeof name);
        EXPECT_TRUE(Read(id, ZEL_ATTR_NAME, name));
        std::strncpy(expected, ParameterName(id), sizeof expected - 1);
        EXPECT_EQ(std::memcmp(name, expected, 32), 0) << id;
        EXPECT_EQ(name[32], '#');
    }
    EXPECT_EQ(m_Transport.Exchanges(), 0);
}

TEST_F(AttributeTest, HostParametersHaveTheirOwnWithoutTraffic) {
    EXPECT_THAT(Words(ZEL_PARAM_EXPOSURE_TIME_US), ElementsAre(3, 1, 0, 0, -1, 0));
    EXPECT_THAT(Words(ZEL_PARAM_NUM_IMAGE_BUFFERS), ElementsAre(7, 1, 0, 0, -1, 8));
    EXPECT_THAT(Words(ZEL_PARAM_HW_TRIGGER_ACTIVE), ElementsAre(3, 1, 0, 0, 1, 0));
    EXPECT_THAT(Words(ZEL_PARAM_UPDATE_PARAMETERS), ElementsAre(0, 0, 0, 0, 0, 0));
    EXPECT_THAT(Words(ZEL_PARAM_COLOR_FILTER_TYPE), ElementsAre(5, 32, 0, 0, 127, 0));
    EXPECT_EQ(m_Transport.Exchanges(), 0);
}

TEST_F(AttributeTest, TheCameraIsAskedOnceThenTheCacheAnswers) {
    m_Table.m_Attributes[CAMERA_NAME] = MakeAttributes(CAMERA_NAME, "name", -5, 500, 50, 1, 7);
    m_Table.m_Attributes[H_SIZE] = MakeAttributes(H_SIZE, "size", 0, 10, 0, 0, 6);
    EXPECT_THAT(Words(ZEL_PARAM_GLOBAL_CAMERA_NAME), ElementsAre(9, 1, 0, -5, 500, 50));
    EXPECT_THAT(Words(ZEL_PARAM_HSIZE), ElementsAre(10, 1, 4, 0, 10, 0));
    EXPECT_EQ(m_Transport.Exchanges(), 2);
}

TEST_F(AttributeTest, RegionBoundsAreThoseOfItsSixEntries) {
    int i = 0, words[6] = {};
    for (const int entry : {H_ROI_ORIGIN, V_ROI_ORIGIN, H_ROI_PIXELS, V_ROI_PIXELS, H_BIN, V_BIN}) {
        m_Table.m_Attributes[entry] = MakeAttributes(entry, "", 0, 10 + i++, 0);
    }
    EXPECT_TRUE(Read(ZEL_PARAM_ROI_BIN, ZEL_ATTR_MAX_VALUE, words));
    EXPECT_THAT(words, ElementsAre(10, 11, 12, 13, 14, 15));
    EXPECT_EQ(Words(ZEL_PARAM_ROI_BIN)[1], 6) << "an array of six";
}

TEST_F(AttributeTest, AFailedFetchAnswersFalseAndWritesNothing) {
    m_Table.m_Exceptions[H_BIN] = m_Table.m_Exceptions[H_SIZE] = kExceptionBadIndex;
    int words[6] = {77, 77, 77, 77, 77, 77};
    for (const int id :
         {ZEL_PARAM_ROI_BIN, ZEL_PARAM_HSIZE, ZEL_PARAM_EXPOSURE_UNIT, ZEL_PARAM_PIXEL_OFFSET, -1, ZEL_MAX_PARAMS}) {
        EXPECT_FALSE(Read(id, ZEL_ATTR_MAX_VALUE, words)) << id;
    }
    for (const int attribute : {-1, 7, 1000}) {
        EXPECT_TRUE(Read(ZEL_PARAM_VSIZE, attribute, words) && Read(ZEL_PARAM_NUM_IMAGE_BUFFERS, attribute, words));
    }
    EXPECT_THAT(words, testing::Each(77));
}

}  // namespace
}  // namespace zel::test
