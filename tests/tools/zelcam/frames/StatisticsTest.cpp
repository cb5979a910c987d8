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

TEST(FrameCounter, TellsTheCausesApartAndTheCamerasRate) {
    const struct {
        const char* name;
        std::vector<std::uint32_t> numbers;
        std::uint64_t link, skipped, missing, no_buffer;
    } cases[] = {
        {"no frame", {}, 0, 0, 0, 0},
        {"one frame, whatever its number", {1000}, 0, 0, 0, 0},
        {"none missing", {3, 4, 5}, 0, 0, 0, 0},
        {"no free buffer", {0, 1, 5}, 0, 0, 3, 3},
        {"lost on the link", {0, 1, 5}, 3, 0, 3, 0},
        {"both", {0, 4, 8}, 2, 0, 6, 4},
        {"passed over", {0, 4, 8}, 0, 6, 6, 0},
        {"all three", {0, 10}, 2, 3, 9, 4},
        {"the transport lost more after the last frame", {0, 2}, 5, 0, 1, 0},
        {"numbers wrap", {0xFFFFFFFEu, 0xFFFFFFFFu, 1}, 0, 0, 1, 1},
        {"numbers start again", {7, 8, 0, 1}, 0, 0, 0, 0},
        {"the same number twice", {7, 7, 8}, 0, 0, 0, 0},
    };
    for (const auto& c : cases) {
        FrameCounter counter;
        for (const std::uint32_t number : c.numbers) counter.Frame(number, 0);
        counter.SetSkipped(c.skipped);
        const Drops drops = counter.Count(c.link);
        EXPECT_EQ(std::tuple(drops.link, drops.skipped, counter.Missing(), drops.no_buffer),
                  std::tuple(c.link, c.skipped, c.missing, c.no_buffer))
            << c.name;
        EXPECT_EQ(counter.CameraRate(), 0.0) << c.name;
    }
    // The camera's rate counts the frames that are missing.
    FrameCounter counter;
    counter.Frame(7, 0xFFFFFF00u);
    counter.Frame(12, 0xFFFFFF00u + 500);  // the clock begins anew, too
    EXPECT_EQ(counter.CameraRate(), 10.0);
}

}  // namespace zelcam
