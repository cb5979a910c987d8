// **  Takes a sequence of frames, each started by a signal at the camera's trigger input, and tells which are missing.
//
//   hardware_trigger [--camera NUMBER-OR-SERIAL] [--exposure MICROSECONDS] [--frames N] [--patience SECONDS]
//
// Simulated cameras get their signals from a script, here one in 100 ms, from half a second on:
//
//   ZEL_SIM_FAULTS='@0.5+0.1 hwtrigger L2048-4M' hardware_trigger
#include <chrono>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

#include "Options.h"
#include "zel/Zel.h"

using namespace std::chrono_literals;

int main(int argc, char** argv) try {
    const Options options(argc, argv,
                          {{"--camera", "0"}, {"--exposure", "2000"}, {"--frames", "10"}, {"--patience", "10"}});
    const int wanted = options.number("--frames");
    const std::chrono::milliseconds patience = options.number("--patience") * 1s;

    zel::Sdk sdk;
    zel::Camera camera = sdk.open(options.text("--camera"));
    camera.set(zel::settings::exposure, std::chrono::microseconds(options.number("--exposure")));
    // Once this returns no signal is missed. The camera ends the sequence by itself.
    camera.start({.frames = wanted, .trigger = zel::Trigger::hardware});
    std::printf("armed for %d triggers\n", wanted);
    std::fflush(stdout);

    int came = 0;
    unsigned next = 0;  // the camera numbers its frames from 0; each trigger is one
    std::chrono::milliseconds waited{};
    while (next < static_cast<unsigned>(wanted)) {
        zel::FrameResult result = camera.wait_frame(500ms);
        if (result) {
            for (; next < result->number(); ++next) std::printf("frame %u is missing\n", next);
            std::printf("frame %u\n", next++);
            std::fflush(stdout);
            ++came;
            waited = 0ms;
            continue;
        }
        // What has not come when the sequence is over was lost on the way.
        if (result.reason() == zel::Reason::sequence_over) {
            for (; next < static_cast<unsigned>(wanted); ++next) std::printf("frame %u is missing\n", next);
            break;
        }
        waited += result.no_frame().state().waited;
        if (result.reason() != zel::Reason::waits_for_hardware || waited >= patience) {
            camera.throw_no_frame(result.no_frame());
        }
        std::printf("%d of %d; %s\n", came, wanted, result.why().c_str());
        std::fflush(stdout);
    }
    camera.stop();
    std::printf("%d of %d frames came; lost on the link: %llu\n", came, wanted,
                static_cast<unsigned long long>(camera.link_drops()));
    std::fflush(stdout);
    if (came < wanted) throw std::runtime_error(std::to_string(wanted - came) + " frames are missing");
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "hardware_trigger: %s\n", error.what());
    return 1;
}
