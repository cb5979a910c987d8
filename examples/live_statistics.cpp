// **  Shows what a running camera sees, once a second, from the newest frame there is: mean, spread, smallest and
// largest count, frames per second and the frames that did not arrive, by cause. Ctrl-C ends it.
//
//   live_statistics [--camera NUMBER-OR-SERIAL] [--exposure MILLISECONDS] [--frames N]       --frames 0: until Ctrl-C
#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <span>

#include "Options.h"
#include "zel/Zel.h"

using namespace std::chrono_literals;

namespace {

volatile std::sig_atomic_t s_Stop = 0;

struct Statistics {
    double mean = 0.0;
    double sigma = 0.0;
    unsigned smallest = 0;
    unsigned largest = 0;
};

Statistics statistics_of(std::span<const std::uint16_t> samples) {
    std::uint64_t sum = 0;
    std::uint64_t squares = 0;
    unsigned smallest = 0xffff;
    unsigned largest = 0;
    for (const unsigned sample : samples) {
        sum += sample;
        squares += std::uint64_t{sample} * sample;
        smallest = std::min(smallest, sample);
        largest = std::max(largest, sample);
    }
    const auto count = static_cast<double>(samples.size());
    const double mean = static_cast<double>(sum) / count;
    return {mean, std::sqrt(std::max(0.0, static_cast<double>(squares) / count - mean * mean)), smallest, largest};
}

void print(const zel::Frame& frame, const zel::FrameCounter& counter, const zel::Camera& camera) {
    const Statistics s = statistics_of(frame.pixels());
    const zel::Drops drops = counter.count(camera.link_drops());
    std::printf("frame %u: mean %.1f, sigma %.1f, %u to %u; camera: %.1f frames/s\n", frame.number(), s.mean, s.sigma,
                s.smallest, s.largest, counter.camera_rate());
    std::printf("    dropped: %llu on the link, %llu without a free buffer; skipped for newer ones: %llu\n",
                static_cast<unsigned long long>(drops.link), static_cast<unsigned long long>(drops.no_buffer),
                static_cast<unsigned long long>(drops.skipped));
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) try {
    const Options options(argc, argv, {{"--camera", "0"}, {"--exposure", "20"}, {"--frames", "0"}});
    const auto wanted = static_cast<std::uint64_t>(options.number("--frames"));
    std::signal(SIGINT, [](int) { s_Stop = 1; });

    zel::Sdk sdk;
    zel::Camera camera = sdk.open(options.text("--camera"));
    camera.set(zel::settings::exposure, std::chrono::milliseconds(options.number("--exposure")));
    camera.start();

    zel::FrameCounter counter;
    auto next_line = std::chrono::steady_clock::now() + 1s;
    while (!s_Stop) {
        // Short waits, so that Ctrl-C is noticed while no frame comes.
        zel::FrameResult result = camera.wait_newest(500ms);
        if (!result) {
            if (result.reason() == zel::Reason::link_lost) camera.throw_no_frame(result.no_frame());
            std::printf("no frame: %s\n", result.why().c_str());
            std::fflush(stdout);
            continue;
        }
        counter.frame(result->number(), result->info().arrival_ms);
        counter.set_skipped(camera.skipped());
        const bool last = counter.frames() == wanted;
        const auto now = std::chrono::steady_clock::now();
        if (last || now >= next_line) {
            print(*result, counter, camera);
            next_line = now + 1s;
        }
        if (last) break;
    }
    camera.stop();
    std::printf("%llu frames seen\n", static_cast<unsigned long long>(counter.frames()));
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "live_statistics: %s\n", error.what());
    return 1;
}
