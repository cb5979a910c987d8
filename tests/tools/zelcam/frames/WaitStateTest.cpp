#include "tools/zelcam/frames/WaitState.h"

#include <gmock/gmock.h>

namespace zelcam {

using testing::HasSubstr;

TEST(WaitState, NamesTheCause) {
    WaitState running;
    running.started = true;
    running.buffers = 8;
    running.exposure_us = 20000;
    running.waited_ms = 5000;

    const std::pair<const char*, void (*)(WaitState&)> cases[] = {
        {"running (exposure of 20 ms) and sends nothing", [](WaitState&) {}},
        {"there are no image buffers", [](WaitState& s) { s.buffers = 0; }},
        {"all 8 image buffers are held", [](WaitState& s) { s.buffers_held = 8; }},
        {"not started", [](WaitState& s) { s.started = false; }},
        {"its sequence of 1 frame is over", [](WaitState& s) { s.started = false, s.sequence = 1; }},
        {"the link to the camera is lost", [](WaitState& s) { s = {}, s.sequence = 1, s.link_lost = true; }},
        {"the exposure of 6000 ms is not over", [](WaitState& s) { s.exposure_us = 6000000; }},
        {"the exposure of 5000.500 ms is not over", [](WaitState& s) { s.exposure_us = 5000500; }},
    };
    for (const auto& [why, change] : cases) {
        WaitState state = running;
        change(state);
        EXPECT_THAT(WhyNoFrame(state), HasSubstr(why));
        EXPECT_NE(AdviceForNoFrame(state), "") << why;
    }
}

}  // namespace zelcam
