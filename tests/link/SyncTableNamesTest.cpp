#include "link/SyncTableNames.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>

#include "link/SyncTableIndex.h"

namespace zel::test {
namespace {

TEST(SyncTableNamesTest, EntriesHaveTheirNames) {
    const std::pair<int, const char*> cases[] = {
        {0, "HOST_PORT_PROTOCOL"}, {2, "HW_VERSION"}, {9, "EXPOSURE_TIME"}, {15, "H_BIN"},       {21, "FRAME_COUNT"},
        {37, "CALC_STATE"},        {49, "SW_TRIG"},   {59, "FEATURELIST"},  {66, "TDI_EXP_COR"}, {67, "CCM_1_1"},
        {78, "CFA_PHASE"},         {88, "DWB_3_3"},   {89, "UNKNOWN"},      {-1, "UNKNOWN"},     {100000, "UNKNOWN"},
    };
    for (const auto& [index, name] : cases) EXPECT_STREQ(name, SyncTableName(index)) << index;
    std::set<std::string> names;
    for (int i = 0; i < SYNC_TABLE_SELECT_MAX; ++i) names.insert(SyncTableName(i));
    EXPECT_EQ(89u, names.size());
}

TEST(SyncTableNamesTest, CfaPhaseAndHwVersionAreValuesAmongBlocks) {
    std::set<int> blocks{1, 3, 4, 5};
    for (int i = 67; i <= 88; ++i) blocks.insert(i);
    blocks.erase(78);
    for (int i = -1; i <= 90; ++i) EXPECT_EQ(blocks.count(i) == 1, SyncTableIsBlock(i)) << i;
}

}  // namespace
}  // namespace zel::test
