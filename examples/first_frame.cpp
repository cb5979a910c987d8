// *  Takes one frame with the first camera and saves it as first_frame.tif.
#include <chrono>
#include <cstdio>
#include <exception>

#include "zel/Zel.h"

using namespace std::chrono_literals;

int main() try {
    zel::Sdk sdk;
    zel::Camera camera = sdk.open();
    std::printf("%s, serial number %s\n", camera.info().name.c_str(), camera.info().serial.c_str());

    camera.set(zel::settings::exposure, 20ms);
    zel::Frame frame = camera.snap();
    std::printf("%u x %u pixels of %u bits\n", frame.width(), frame.height(), frame.bits());

    unsigned long long sum = 0;
    for (const unsigned sample : frame.pixels()) sum += sample;
    std::printf("mean %.1f\n", static_cast<double>(sum) / static_cast<double>(frame.pixels().size()));

    zel::save(frame, "first_frame.tif");
    std::puts("first_frame.tif is written");
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "first_frame: %s\n", error.what());
    return 1;
}
