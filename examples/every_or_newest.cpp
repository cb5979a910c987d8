// **  Shows what becomes of frames when a program is slower than its camera: with each frame in order, and with the
// newest.
//
//   every_or_newest [--camera NUMBER-OR-SERIAL] [--frames N] [--work MILLISECONDS] [--buffers N]
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <thread>

#include "Options.h"
#include "zel/Zel.h"

using namespace std::chrono_literals;

namespace {

void take(zel::Camera& camera, const zel::StreamOptions& how, std::chrono::milliseconds work) {
    zel::FrameCounter counter;
    camera.start();
    for (const zel::Frame& frame : zel::FrameStream(camera, how)) {
        std::printf(" %u", frame.number());
        counter.frame(frame.number(), frame.info().arrival_ms);
        std::this_thread::sleep_for(work);  // what a program does with a frame
    }
    camera.stop();
    counter.set_skipped(camera.skipped());
    const zel::Drops drops = counter.count(camera.link_drops());
    std::printf("\nskipped for newer ones: %llu, without a free buffer: %llu, lost on the link: %llu\n",
                static_cast<unsigned long long>(drops.skipped), static_cast<unsigned long long>(drops.no_buffer),
                static_cast<unsigned long long>(drops.link));
}

}  // namespace

int main(int argc, char** argv) try {
    const Options options(argc, argv, {{"--camera", "0"}, {"--frames", "12"}, {"--work", "200"}, {"--buffers", "8"}});
    const std::chrono::milliseconds work(options.number("--work"));
    zel::StreamOptions how{.frames = static_cast<std::uint64_t>(options.number("--frames"))};

    zel::Sdk sdk;
    zel::Camera camera = sdk.open(options.text("--camera"));
    camera.set(zel::settings::exposure, 2ms);
    camera.set(zel::settings::buffers, static_cast<unsigned>(options.number("--buffers")));

    std::printf("every frame:");
    how.order = zel::Order::every;
    take(camera, how, work);
    std::printf("newest frame:");
    how.order = zel::Order::newest;
    take(camera, how, work);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "every_or_newest: %s\n", error.what());
    return 1;
}
