// What python_bench.py does with the package, done with the C++ layer, so that the two can be set side by side:
//
//     frame_loop frames|drain|reads COUNT CAMERA WIDTHxHEIGHT [PLUGINS]
//
//   frames   takes frames as they come: rate, processor time of the program and of this thread for each
//   drain    takes frames that wait already: time on the clock for each
//   reads    reads a parameter: time on the clock for each
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/Usage.h"
#include "zel/Zel.h"

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

double Microseconds(Clock::duration time) { return std::chrono::duration<double, std::micro>(time).count(); }

zel::Frame Take(zel::Camera& camera) {
    zel::FrameResult result = camera.wait_frame(10s);
    if (!result) throw std::runtime_error(result.why());
    return result.take();
}

// The samples are there and the number is known: what Python asks for as well.
unsigned Look(const zel::Frame& frame) { return frame.number() + frame.pixels()[0]; }

void Frames(zel::Camera& camera, int count) {
    camera.start();
    unsigned first = Take(camera).number(), last = first, sum = 0;
    const auto begin = Clock::now();
    const double process = zel::bench::ProcessorSeconds(), thread = zel::bench::ThreadSeconds();
    for (int i = 0; i < count; ++i) {
        const zel::Frame frame = Take(camera);
        sum += Look(frame);
        last = frame.number();
    }
    const double thread_us = (zel::bench::ThreadSeconds() - thread) * 1e6 / count;
    const double process_us = (zel::bench::ProcessorSeconds() - process) * 1e6 / count;
    const double wall_us = Microseconds(Clock::now() - begin) / count;
    camera.stop();
    std::printf(R"({"rate": %.1f, "process_us": %.2f, "thread_us": %.2f, "lost": %d, "sum": %u})"
                "\n",
                1e6 / wall_us, process_us, thread_us, static_cast<int>(last - first) - count, sum);
}

// As median_time() there.
template <class Call>
void PrintMedianTime(const char* name, int count, const Call& call) {
    std::vector<double> times;
    unsigned long long sum = 0;  // so that nothing is left out
    for (int i = 0; i < count; ++i) {
        const auto begin = Clock::now();
        sum += call();
        times.push_back(Microseconds(Clock::now() - begin));
    }
    std::nth_element(times.begin(), times.begin() + count / 2, times.end());
    std::printf(R"({"%s": %.3f, "sum": %llu})"
                "\n",
                name, times[static_cast<std::size_t>(count) / 2], sum);
}

void Drain(zel::Camera& camera, int count) {
    camera.set(zel::settings::buffers, static_cast<unsigned>(count) + 2);
    camera.start({.frames = count});
    Take(camera);
    std::this_thread::sleep_for(500ms);
    PrintMedianTime("wall_us", count - 1, [&] { return Look(Take(camera)); });
}

void Reads(zel::Camera& camera, int count) {
    PrintMedianTime("read_us", count,
                    [&] { return static_cast<unsigned>(camera.get(zel::settings::exposure).count()); });
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc < 5) throw std::runtime_error("frames|drain|reads COUNT CAMERA WIDTHxHEIGHT [PLUGINS]");
    const std::string job = argv[1];
    const int count = std::atoi(argv[2]);
    setenv("ZEL_SIM_SIZE", argv[4], 1);
    if (argc > 5) zel::use_plugins(argv[5]);
    zel::Sdk sdk;
    zel::Camera camera = sdk.open(argv[3]);
    camera.set(zel::settings::exposure, 1ms);
    if (job == "drain") {
        Drain(camera, count);
    } else if (job == "reads") {
        Reads(camera, count);
    } else {
        camera.set(zel::settings::buffers, 30u);
        Frames(camera, count);
    }
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "frame_loop: %s\n", error.what());
    return 1;
}
