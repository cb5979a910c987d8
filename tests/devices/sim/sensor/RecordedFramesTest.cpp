// A recording as a source of frames: when they come. What they show is seen through the whole SDK (playback_tests).
#include "devices/sim/sensor/RecordedFrames.h"

#include <gtest/gtest.h>

#include "tests/record/RecordingFile.h"

namespace zel::sim::test {

// Frames are written 1, 2 and 3 ms behind each other.
TEST(RecordedFramesTest, FramesComeAsTheyWereRecordedOrAtTheRateThatIsAskedFor) {
    const record::test::TemporaryFile file;
    record::test::Record(file, {.width = 8, .height = 6, .bits = 14}, record::test::AnyPictures(4, 8, 6, 14));
    const std::pair<double, std::vector<std::int64_t>> cases[] = {{0.0, {1000, 2000, 3000, 2000, 1000}},
                                                                  {50.0, {20000, 20000, 20000, 20000, 20000}}};
    for (const auto& [rate, pauses] : cases) {
        Recording recording{.file = file.Name(), .rate = rate};
        LookAtFacts(recording);
        LookAtFrames(recording);
        EXPECT_EQ(recording.frames, 4u);
        RecordedFrames frames(recording);
        for (std::size_t i = 0; i < pauses.size(); ++i) {
            EXPECT_EQ(frames.Fetch(i), "");
            EXPECT_EQ(frames.Pause(i), pauses[i]) << rate << " " << i;
        }
        std::filesystem::resize_file(file.Path(), rate > 0.0 ? 0 : std::filesystem::file_size(file.Path()));
        EXPECT_EQ(frames.Fetch(1).empty(), rate <= 0.0) << "a file that shrank";
    }
}

}  // namespace zel::sim::test
