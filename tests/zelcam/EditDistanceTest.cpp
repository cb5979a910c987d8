#include "tools/zelcam/EditDistance.h"

#include <gmock/gmock.h>

namespace zelcam {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(EditDistance, CountsLetters) {
    const struct {
        const char *from, *to;
        std::size_t distance;
    } cases[] = {
        {"", "", 0},
        {"GAIN", "GAIN", 0},
        {"", "GAIN", 4},
        {"GAIN", "", 4},
        {"GAIN", "GAN", 1},
        {"GAN", "GAIN", 1},
        {"GAIN", "MAIN", 1},
        {"GIAN", "GAIN", 1},
        {"KITTEN", "SITTING", 3},
        {"EXPOSRUE", "EXPOSURE", 1},
        {"ABC", "CBA", 2},
        {"AB", "BCA", 3},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(EditDistance(c.from, c.to), c.distance) << c.from << " " << c.to;
        EXPECT_EQ(EditDistance(c.to, c.from), c.distance) << "the other way: " << c.from << " " << c.to;
    }
}

TEST(NearestWords, OrdersByDistanceAndKeepsToTheCount) {
    const std::vector<std::string> words{"VGA_GAIN", "GAIN", "GRAIN", "XBIN"};
    EXPECT_THAT(NearestWords("GAIM", words, 2), ElementsAre("GAIN", "GRAIN"));
    EXPECT_THAT(NearestWords("GAIN", words, 1), ElementsAre("GAIN"));
}

TEST(NearestWords, FindsAWordWithinALongerOne) {
    EXPECT_THAT(NearestWords("TEMP", {"GAIN", "TEMPERATURE"}, 3), ElementsAre("TEMPERATURE"));
    EXPECT_THAT(NearestWords("T", {"GAIN", "TEMPERATURE"}, 3), IsEmpty());
}

TEST(NearestWords, IsSilentWhenNothingIsNear) {
    EXPECT_THAT(NearestWords("QUASAR", {"GAIN", "EXPOSURE_TIME"}, 3), IsEmpty());
}

}  // namespace zelcam
