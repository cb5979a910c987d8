// The program: running a camera and following its events.
#include <gmock/gmock.h>

#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

using testing::HasSubstr;

class ProgramStream : public testing::Test {
  protected:
    ProgramStream() { UseFastCameras("1", "1", "2"); }
};

TEST_F(ProgramStream, SummaryAddsUp) {
    for (const std::string mode : {"every", "newest"}) {
        const ToolResult result = RunTool("stream --json --frames 200 --mode " + mode);
        ASSERT_EQ(result.exit_code, 0) << result.err;
        const auto json = result.Json();
        ASSERT_TRUE(json.is_object()) << result.out;
        EXPECT_EQ(json["frames"], 200);
        EXPECT_EQ(json["mode"], mode);
        const double seconds = json["seconds"];
        EXPECT_NEAR(json["frames_per_second"].get<double>() * seconds, 199.0, 0.01);
        EXPECT_NEAR(json["megabytes_per_second"].get<double>() * seconds, 199 * 64 * 48 * 2 / 1e6, 0.01);
        for (const char* latency : {"arrival_to_hand_over_ms", "notification_to_hand_over_us"}) {
            EXPECT_LE(json[latency]["median"].get<double>(), json[latency]["percentile_99"].get<double>()) << latency;
        }
        EXPECT_TRUE(mode == "newest" || json["dropped"]["skipped"] == 0) << json;
    }
}

TEST_F(ProgramStream, EndsAfterItsSeconds) {
    const ToolResult result = RunTool("stream --seconds 0.2 -c 1");
    EXPECT_EQ(result.exit_code, 0) << result.err;
    for (const char* word :
         {"frames/s", "MB/s", "median", "99th percentile", "lost on the link", "without a free buffer"}) {
        EXPECT_THAT(result.out, HasSubstr(word));
    }
}

TEST_F(ProgramStream, TriggerModeNamesWhatItWaitsFor) {
    const ToolResult result = RunTool("trigger --hardware --timeout 0.1");
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, HasSubstr("waiting for a trigger"));
}

TEST_F(ProgramStream, WatchEndsAfterItsSeconds) {
    const ToolResult text = RunTool("watch --seconds 0.1");
    EXPECT_EQ(text.exit_code, 0) << text.err;
    EXPECT_THAT(text.out, HasSubstr("watching 4 cameras"));
    const ToolResult json = RunTool("watch --seconds 0.1 --json --no-open");
    EXPECT_EQ(json.exit_code, 0);
    EXPECT_EQ(json.out, "") << "no event, no line";
}

}  // namespace zelcam
