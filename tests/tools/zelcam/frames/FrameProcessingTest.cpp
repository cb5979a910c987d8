#include "tools/zelcam/frames/FrameProcessing.h"

#include <gtest/gtest.h>

namespace zelcam {

TEST(FrameProcessing, NumbersAreWholeAndSeparatedByCommas) {
    std::vector<unsigned> values;
    EXPECT_TRUE(ParseNumbers("0,12,4294967295", values));
    EXPECT_EQ(values, (std::vector<unsigned>{0, 12, 4294967295u}));
    for (const char* text : {"", ",", "1,", ",1", "1, 2", "1;2", "-1", "+1", "1.5", "0x10", "4294967296", "1,two"})
        EXPECT_FALSE(ParseNumbers(text, values)) << text;
}

}  // namespace zelcam
