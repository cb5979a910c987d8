#include "tools/zelcam/text/EditDistance.h"

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

TEST(NearestWords, AreFewNearAndInOrder) {
    const std::vector<std::string> words{"VGA_GAIN", "GAIN", "GRAIN", "TEMPERATURE"};
    EXPECT_THAT(NearestWords("GAIM", words, 2), ElementsAre("GAIN", "GRAIN"));
    EXPECT_THAT(NearestWords("TEMP", words, 3), ElementsAre("TEMPERATURE")) << "within a longer one";
    EXPECT_THAT(NearestWords("T", words, 3), IsEmpty());
    EXPECT_THAT(NearestWords("QUASAR", words, 3), IsEmpty());
}

}  // namespace zelcam
