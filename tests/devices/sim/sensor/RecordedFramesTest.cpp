// A recording as a source of frames: when they come, and what there is without one.
#include "devices/sim/sensor/RecordedFrames.h"

#include <gtest/gtest.h>

#include "tests/record/RecordingFile.h"

namespace zel::sim::test {
namespace {

// Frames are written 1, 2 and 3 ms behind each other.
TEST(RecordedFramesTest, FramesComeAsTheyWereRecordedOrAtTheRateThatIsAskedFor) {
    const record::test::TemporaryFile file;
    const auto pictures = record::test::AnyPictures(4, 8, 6, 14);
    record::test::Record(file, {.width = 8, .height = 6, .bits = 14}, pictures);
    const std::pair<double, std::vector<std::int64_t>> cases[] = {{0.0, {1000, 2000, 3000, 2000, 1000}},
                                                                  {50.0, {20000, 20000, 20000, 20000, 20000}}};
    for (const auto& [rate, pauses] : cases) {
        Recording recording{.file = file.Name(), .rate = rate};
        LookAtFacts(recording);
        LookAtFrames(recording);
        EXPECT_EQ(recording.frames, 4u);
        RecordedFrames frames(recording);
        std::vector<std::uint16_t> room(8);
        for (std::size_t i = 0; i < pauses.size(); ++i) {
            EXPECT_EQ(frames.Fetch(i), "");
            EXPECT_EQ(frames.Pause(i), pauses[i]) << rate << " " << i;
            frames.Begin({}, SensorFill::kNoise, i);
            for (unsigned y = 0; y < 6; ++y) {
                const auto row = frames.Row(y, room);
                EXPECT_TRUE(std::equal(row.begin(), row.end(), pictures[i % 4].begin() + y * 8)) << i << " " << y;
            }
        }
        std::filesystem::resize_file(file.Path(), rate > 0.0 ? 0 : std::filesystem::file_size(file.Path()));
        EXPECT_EQ(frames.Fetch(1).empty(), rate <= 0.0) << "a file that shrank";
    }
}

}  // namespace
}  // namespace zel::sim::test
