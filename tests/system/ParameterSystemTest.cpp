// Every parameter, read, written and asked for its seven attributes, against the simulated firmware; the exchanges are
// counted there, so that a value answered by the host is seen to cost none.
#include <cstring>

#include "tests/system/SystemFixture.h"

namespace zel::test {
namespace {

enum class Home { kCamera, kHost, kNowhere };

Home HomeOf(int id) {
    for (const int unsupported : {0, 1, 23, 29, 39, 40}) {
        if (id == unsupported) return Home::kNowhere;
    }
    for (const int host : {10, 15, 53, 56, 57, 58, 62, 65, 66, 67, 68, 69, 70, 71, 72}) {
        if (id == host) return Home::kHost;
    }
    return Home::kCamera;
}

class ParameterSystemTest : public SystemTest, public testing::WithParamInterface<int> {
  protected:
    int Exchanges() { return std::atoi(m_Usb("exchanges 1").c_str()); }
    // Exchanges that the work costs.
    template <class Work>
    int Cost(Work work) {
        const int before = Exchanges();
        work();
        return Exchanges() - before;
    }
    bool ReadAttribute(int attribute, void* data) {
        const ZelParamAttrId selection{GetParam(), attribute};
        EXPECT_TRUE(m_Camera->SetParameter(ZEL_PARAM_CMD_ID_ATTR_ID, &selection));
        return m_Camera->GetParameter(ZEL_PARAM_ATTR, 72, data);
    }
    ZelCamera* m_Camera = Opened(kMono);
};

TEST_P(ParameterSystemTest, CostsExchangesOnlyWhereTheCameraIsAsked) {
    const int id = GetParam();
    const Home home = HomeOf(id);
    unsigned char value[72] = {};
    bool read = false;
    const int read_cost = Cost([&] { read = m_Camera->GetParameter(static_cast<unsigned>(id), sizeof value, value); });
    if (home == Home::kCamera) {
        const bool known_to_the_host = id == ZEL_PARAM_TAPS_VALUE || id == ZEL_PARAM_READOUT_SPEED;
        EXPECT_TRUE(read);
        EXPECT_EQ(read_cost, known_to_the_host ? 0 : 1);
        EXPECT_EQ(Cost([&] { EXPECT_TRUE(m_Camera->SetParameter(id, value)); }), 1);
    }
    if (home == Home::kNowhere && id != ZEL_PARAM_ATTR) {
        EXPECT_FALSE(read);
        EXPECT_EQ(read_cost, 0);
        EXPECT_EQ(Cost([&] { EXPECT_TRUE(m_Camera->SetParameter(id, value)); }), 0);
    }

    char name[33] = {};
    EXPECT_EQ(Cost([&] { EXPECT_TRUE(ReadAttribute(ZEL_ATTR_NAME, name)); }), 0);
    EXPECT_EQ(std::strncmp(name, "ZEL_PARAM_", 10), 0);
    const int asked = Cost([&] {
        for (int attribute = ZEL_ATTR_DATA_TYPE; attribute <= ZEL_ATTR_DEFAULT_VALUE; ++attribute) {
            unsigned char answer[72] = {};
            const bool known = home == Home::kCamera || (home == Home::kHost && id != ZEL_PARAM_EXPOSURE_UNIT);
            EXPECT_EQ(ReadAttribute(attribute, answer), known) << attribute;
        }
    });
    // A camera's record is fetched once; the region asks for those of its six entries.
    const int most = home == Home::kCamera ? 1 : id == ZEL_PARAM_ROI_BIN ? 6 : 0;
    EXPECT_LE(asked, most);
    EXPECT_EQ(Cost([&] {
                  int answer[18] = {};
                  ReadAttribute(ZEL_ATTR_MAX_VALUE, answer);
              }),
              0)
        << "known by now";
}

INSTANTIATE_TEST_SUITE_P(, ParameterSystemTest, testing::Range(0, ZEL_MAX_PARAMS));

}  // namespace
}  // namespace zel::test
