// The program: running a camera and following its events.

#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

using testing::HasSubstr;
using testing::MatchesRegex;

struct ProgramStream : testing::Test {
    ProgramStream() { UseFastCameras("1", "1", "2"); }
};

TEST_F(ProgramStream, SummaryAddsUp) {
    for (const std::string mode : {"every", "newest"}) {
        const auto json = JsonOf("stream --frames 200 --mode " + mode);
        ExpectMembers(json, {{"frames", 200}, {"mode", mode}});
        const double seconds = json["seconds"];
        EXPECT_NEAR(json["frames_per_second"].get<double>() * seconds, 199.0, 0.01);
        EXPECT_NEAR(json["megabytes_per_second"].get<double>() * seconds, 199 * 64 * 48 * 2 / 1e6, 0.01);
        EXPECT_TRUE(mode == "newest" || json["dropped"]["skipped"] == 0) << json;
    }
}

TEST_F(ProgramStream, EndsAfterItsSeconds) {
    EXPECT_THAT(RunTool("stream --seconds 0.2 -c 1").out,
                MatchesRegex(".* frames, .* frames/s, .* MB/s \\(camera: .* frames/s\\) in .* s, mode every, .*\n"
                             "latency, .*: median .*, 99th .*\nlatency, .*: median .*, 99th .*\n"
                             "dropped: .* lost on the link, .* without a free buffer\n"));
}

// The signal comes when the first line is out: the run begins, and would take ten minutes.
TEST_F(ProgramStream, SignalsEndARunWithItsSummary) {
    if (std::filesystem::path::preferred_separator != '/') GTEST_SKIP() << "this system has no signals";
    const TemporaryFolder folder;
    for (const auto& [signal, exit_code] : {std::pair{"INT", 130}, {"TERM", 143}, {"HUP", 129}}) {
        const std::string out = folder.Quoted(signal);
        const ToolResult result = RunCommand("{ ./zelcam stream --seconds 600 --gain 1 >" + out + "& until [ -s" + out +
                                             "]; do :; done; kill -" + signal + " $!; wait $!; }");
        EXPECT_EQ(result.exit_code, exit_code) << signal;
        EXPECT_THAT(result.err, HasSubstr("zelcam: interrupted: ")) << signal;
        EXPECT_THAT(FileText(folder / signal), HasSubstr(", ended by the user\nlatency, ")) << signal;
    }
}

TEST_F(ProgramStream, WatchEndsAfterItsSeconds) {
    EXPECT_THAT(OutputOf("watch --seconds 0.1"), HasSubstr("watching 4 cameras"));
    EXPECT_EQ(OutputOf("watch --seconds 0.1 --json --no-open"), "") << "no event, no line";
}

}  // namespace zelcam
