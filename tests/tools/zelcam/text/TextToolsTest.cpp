#include "tools/zelcam/text/TextTools.h"

#include <gmock/gmock.h>

#include "include/ZelImage.h"
#include "tools/zelcam/frames/PictureEncoder.h"
#include "tools/zelcam/text/Json.h"
#include "tools/zelcam/text/Progress.h"
#include "tools/zelcam/text/ProgressBar.h"
#include "tools/zelcam/text/UtcTime.h"

namespace zelcam {

TEST(TextTools, TablesLineUpAndOneIsNotCountedInThePlural) {
    EXPECT_EQ(FormatTable({{"a", "name", "x"}, {"100", "b", ""}, {"", "", "y"}}),
              "a    name  x\n"
              "100  b\n"
              "           y\n");
    EXPECT_EQ(Counted(1, "frame") + ", " + Counted(0, "frame") + ", " + Counted(2, "frame"),
              "1 frame, 0 frames, 2 frames");
}

TEST(UtcTime, IsIso8601) {
    using namespace std::chrono;
    EXPECT_EQ(UtcText(sys_days(2024y / February / 29) + 12h + 34min + 56s + 789ms), "2024-02-29T12:34:56.789Z");
    EXPECT_EQ(UtcText(sys_days(1969y / December / 31) + 23h + 59min + 59s + 1ms), "1969-12-31T23:59:59.001Z");
}

TEST(Json, ReplacesBytesThatAreNotUtf8AndKeepsTheOrder) {
    EXPECT_EQ(JsonText(Json{{"z", "a\xFFz"}, {"a", 1}}, -1), "{\"z\":\"a\xEF\xBF\xBDz\",\"a\":1}");
}

TEST(Progress, BarFillsUpAndLinesShowAsFarAsTheyAreKnown) {
    EXPECT_EQ(BarText(0, 10, 10), "[..........]");
    EXPECT_EQ(BarText(5, 10, 10), "[#####.....]");
    EXPECT_EQ(BarText(12, 10, 10), "[##########]");
    EXPECT_EQ(BarText(3, 0, 4), "[....]");

    EXPECT_EQ(ProgressText("Stopping camera...", "", -1), "Stopping camera...");
    EXPECT_EQ(ProgressText("Loading", "row 3", 42), "Loading, row 3 [########............] 42 %");
    EXPECT_EQ(ProgressText("", "", 100), "[####################] 100 %");
    EXPECT_EQ(ProgressText("", "", -1), "");
}

TEST(ScaleToSixteenBits, MovesSamplesIntoTheUpperBits) {
    ZelColorImage image{};
    unsigned short pixels[4] = {0, 1, 4095, 5000};
    image.w = 2;
    image.h = 2;
    image.pixels = pixels;
    image.bit_depth = 12;
    EXPECT_EQ(ScaleToSixteenBits(&image), 4u);
    EXPECT_THAT(pixels, testing::ElementsAre(0, 16, 65520, 65520)) << "a sample above the depth stays white";
    for (const unsigned bits : {0u, 16u, 17u}) {
        image.bit_depth = bits;
        EXPECT_EQ(ScaleToSixteenBits(&image), 0u);
        EXPECT_EQ(pixels[1], 16) << bits;
    }
}

}  // namespace zelcam
