// *  Reads and writes settings: exposure and others with the types of their values, any parameter by its name, what a
// camera refuses, the region of the sensor, binning and averaging.
#include <chrono>
#include <cstdio>
#include <exception>

#include "zel/Zel.h"

using namespace std::chrono_literals;

int main() try {
    zel::Sdk sdk;
    zel::Camera camera = sdk.open();

    // With types: times are times, temperatures are degrees.
    camera.set(zel::settings::exposure, 5ms);
    std::printf("exposure %lld us\n", static_cast<long long>(camera.get(zel::settings::exposure).count()));
    const unsigned width = camera.get(zel::settings::sensor_width);
    const unsigned height = camera.get(zel::settings::sensor_height);
    const zel::Celsius temperature = camera.get(zel::settings::temperature);
    std::printf("sensor of %u x %u pixels at %.1f degrees\n", width, height, temperature.degrees);

    // Any parameter, by the name that 'zelcam params' shows.
    const zel::Parameter gain = camera.parameter("GAIN");
    std::printf("%s is %s, range %s, default %lld\n", gain.name().c_str(), gain.text().c_str(),
                gain.range().text().c_str(), gain.range().standard);

    // A value that the camera does not take is an answer ...
    const zel::SetResult result = gain.try_set(5000);
    if (!result) std::printf("%s: %s\n", result.text().c_str(), result.reason.c_str());
    // ... or an exception, whichever the program wants.
    try {
        camera.set(zel::settings::gain, 5000);
    } catch (const zel::Error& error) {
        std::printf("caught: %s\n", error.what());
    }

    // These hold from the next start on: the middle of the sensor, two by two pixels as one, the mean of four frames.
    camera.set_region({.x = width / 4, .y = height / 4, .width = width / 2, .height = height / 2});
    camera.set_binning({.x = 2, .y = 2});
    camera.set_averaging(4);
    for (const zel::Frame& frame : zel::every_frame(camera, 4)) {
        std::printf("frame %u: %u x %u pixels\n", frame.number(), frame.width(), frame.height());
    }
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "settings: %s\n", error.what());
    return 1;
}
