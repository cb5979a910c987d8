#include "tools/zelcam/frames/Statistics.h"

#include <gtest/gtest.h>

#include <numeric>

namespace zelcam {

TEST(Percentile, TakesTheNearestRank) {
    std::vector<double> hundred(100);
    std::iota(hundred.rbegin(), hundred.rend(), 1.0);  // 100, 99, ... 1
    const std::tuple<std::vector<double>, double, double> cases[] = {
        {{}, 50, 0},       {{7}, 0, 7},       {{7}, 99, 7},        {{3, 1, 2}, 50, 2}, {{4, 1, 3, 2}, 50, 2},
        {hundred, 50, 50}, {hundred, 99, 99}, {hundred, 100, 100}, {hundred, 0, 1},    {{5, 5, 5, 1}, 25, 1}};
    for (const auto& [values, percent, expected] : cases) EXPECT_EQ(Percentile(values, percent), expected) << percent;
}

}  // namespace zelcam
