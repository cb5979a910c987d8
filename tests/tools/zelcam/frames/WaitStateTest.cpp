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

    const struct {
        const char* why;
        void (*change)(WaitState&);
    } cases[] = {
        {"running (exposure of 20 ms) and sends nothing", [](WaitState&) {}},
        {"there are no image buffers", [](WaitState& s) { s.buffers = 0; }},
        {"all 8 image buffers are held", [](WaitState& s) { s.buffers_held = 8; }},
        {"waiting for a trigger at its input", [](WaitState& s) { s.waits_for_hardware = true; }},
        {"not started", [](WaitState& s) { s.started = false; }},
        {"its sequence of 1 frame is over", [](WaitState& s) { s.started = false, s.sequence = 1; }},
        {"the link to the camera is lost", [](WaitState& s) { s = {}, s.sequence = 1, s.link_lost = true; }},
        {"the exposure of 6000 ms is not over", [](WaitState& s) { s.exposure_us = 6000000; }},
        {"the exposure of 5000.500 ms is not over", [](WaitState& s) { s.exposure_us = 5000500; }},
        {"software trigger brought no frame", [](WaitState& s) { s.waits_for_software = true; }},
    };
    for (const auto& c : cases) {
        WaitState state = running;
        c.change(state);
        EXPECT_THAT(WhyNoFrame(state), HasSubstr(c.why));
        EXPECT_NE(AdviceForNoFrame(state), "") << c.why;
    }
}

}  // namespace zelcam
