// *  Takes frames when the program says so, and tells how long each took from the trigger to the hand.
//
//   software_trigger [--camera NUMBER-OR-SERIAL] [--exposure MICROSECONDS] [--frames N]
#include <chrono>
#include <cstdio>
#include <exception>

#include "Options.h"
#include "zel/Zel.h"

using Clock = std::chrono::steady_clock;

int main(int argc, char** argv) try {
    const Options options(argc, argv, {{"--camera", "0"}, {"--exposure", "2000"}, {"--frames", "3"}});

    zel::Sdk sdk;
    zel::Camera camera = sdk.open(options.text("--camera"));
    camera.set(zel::settings::exposure, std::chrono::microseconds(options.number("--exposure")));
    camera.start({.trigger = zel::Trigger::software});
    for (int i = 0; i < options.number("--frames"); ++i) {
        const Clock::time_point before = Clock::now();
        camera.trigger();
        zel::FrameResult result = camera.wait_frame(camera.frame_timeout());
        if (!result) camera.throw_no_frame(result.no_frame());
        const std::chrono::duration<double, std::milli> took = Clock::now() - before;
        std::printf("frame %u, %.1f ms after its trigger\n", result->number(), took.count());
    }
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "software_trigger: %s\n", error.what());
    return 1;
}
