#include "tools/zelcam/frames/FrameProcessing.h"

#include <gtest/gtest.h>

#include "include/ZelImage.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

TEST(FrameProcessing, NumbersAreWholeAndSeparatedByCommas) {
    std::vector<unsigned> values;
    EXPECT_TRUE(ParseNumbers("0,12,4294967295", values));
    EXPECT_EQ(values, (std::vector<unsigned>{0, 12, 4294967295u}));
    for (const char* text : {"", ",", "1,", ",1", "1, 2", "1;2", "-1", "+1", "1.5", "0x10", "4294967296", "1,two"}) {
        EXPECT_FALSE(ParseNumbers(text, values)) << text;
    }
}

TEST(FrameProcessing, RegionMustLieInTheFrameAndLeaveAPixel) {
    constexpr unsigned kHuge = 0xFFFFFFFFu;
    const struct {
        ZelRoiBin wanted;
        bool good;
    } cases[] = {
        {{0, 0, 64, 48, 1, 1}, true},    {{63, 47, 1, 1, 1, 1}, true},     {{1, 0, 64, 48, 1, 1}, false},
        {{0, 1, 64, 48, 1, 1}, false},   {{0, 0, 65, 48, 1, 1}, false},    {{64, 0, 1, 1, 1, 1}, false},
        {{0, 0, 0, 48, 1, 1}, false},    {{kHuge, 0, 2, 48, 1, 1}, false}, {{1, 0, kHuge, 48, 1, 1}, false},
        {{0, 0, 8, 4, 8, 4}, true},      {{0, 0, 8, 4, 9, 1}, false},      {{0, 0, 8, 4, 1, 5}, false},
        {{0, kHuge, 8, 4, 1, 1}, false}, {{0, 47, 8, kHuge, 1, 1}, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(RegionFault(c.wanted, 64, 48).empty(), c.good)
            << c.wanted.XOrigin << "," << c.wanted.YOrigin << "," << c.wanted.XPixels << "," << c.wanted.YPixels;
    }
}

}  // namespace zelcam
