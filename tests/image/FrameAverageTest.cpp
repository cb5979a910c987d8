// The moving average alone.
#include "image/FrameAverage.h"

#include <gmock/gmock.h>

#include "tests/image/Record.h"

namespace zel::test {
namespace {

TEST(FrameAverageTest, TheMeanOfTheLastThreeFrames) {
    Logger logger("FrameAverageTest");
    FrameAverage average(logger);
    EXPECT_FALSE(average.IsOn());
    average.SetLength(3, false);
    ASSERT_EQ(average.Prepare(2), 0);
    const auto mean = [&](const Words& content) {
        Record record(static_cast<unsigned>(content.size()), 1, content);
        EXPECT_EQ(average.Process(&record), content.size() <= 2) << "there is no room for a larger one";
        return record.Content();
    };
    EXPECT_EQ(mean({10, 0}), (Words{10, 0}));
    EXPECT_EQ(mean({21, 1}), (Words{15, 0}));
    EXPECT_EQ(mean({30, 1}), (Words{20, 0}));
    EXPECT_EQ(mean({40, 1}), (Words{30, 1}));
    EXPECT_EQ(mean({7, 8, 9}), (Words{7, 8, 9}));
    EXPECT_EQ(mean({5}), Words{5}) << "frames of another size begin the ring anew";
    EXPECT_EQ(mean({8}), Words{6});
    EXPECT_FALSE(average.Process(nullptr));
}

}  // namespace
}  // namespace zel::test
