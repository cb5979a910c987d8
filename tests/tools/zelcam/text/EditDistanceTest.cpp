#include "tools/zelcam/text/EditDistance.h"

#include <gmock/gmock.h>

namespace zelcam {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(EditDistance, CountsLetters) {
    const std::tuple<const char*, const char*, std::size_t> cases[] = {
        {"", "", 0},         {"GAIN", "GAIN", 0}, {"", "GAIN", 4},          {"GAIN", "GAN", 1},
        {"GAIN", "MAIN", 1}, {"GIAN", "GAIN", 1}, {"KITTEN", "SITTING", 3}, {"EXPOSRUE", "EXPOSURE", 1},
        {"ABC", "CBA", 2},   {"AB", "BCA", 3}};
    for (const auto& [from, to, distance] : cases) {
        EXPECT_EQ(EditDistance(from, to), distance) << from << " " << to;
        EXPECT_EQ(EditDistance(to, from), distance) << "the other way: " << from << " " << to;
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
