// **  Takes a color picture and saves it as a PNG file that any viewer shows as the eye sees the scene.
//
//   color_png [--camera NUMBER-OR-SERIAL] [--exposure MILLISECONDS] [--file NAME.png]
//
// Without --camera it takes the first color camera.
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

#include "Options.h"
#include "zel/Zel.h"

namespace {

zel::Camera open_color_camera(zel::Sdk& sdk, const std::string& wanted) {
    if (!wanted.empty()) return sdk.open(wanted);
    for (const zel::CameraInfo& info : sdk.cameras()) {
        zel::Camera camera = sdk.open(info.number);
        if (!camera.is_monochrome()) return camera;
    }
    throw std::runtime_error("no color camera found");
}

}  // namespace

int main(int argc, char** argv) try {
    const Options options(argc, argv, {{"--camera", ""}, {"--exposure", "30"}, {"--file", "color.png"}});
    const std::string& file = options.text("--file");

    zel::Sdk sdk;
    zel::Camera camera = open_color_camera(sdk, options.text("--camera"));
    camera.set(zel::settings::exposure, std::chrono::milliseconds(options.number("--exposure")));
    // Without options: 16 bits a channel, sRGB. What the sensor counted in the dark is taken off.
    const zel::ColorSetting color = camera.use_color();
    const zel::Frame frame = camera.snap();

    double sums[3] = {};
    const auto samples = frame.color16();
    for (std::size_t i = 0; i < samples.size(); ++i) sums[i % 3] += samples[i];
    const double pixels = static_cast<double>(samples.size()) / 3.0;
    std::printf("%s: black level of %u counts taken off\n", camera.info().name.c_str(), color.black_level);
    std::printf("mean of red %.0f, green %.0f, blue %.0f of 65535\n", sums[2] / pixels, sums[1] / pixels,
                sums[0] / pixels);

    zel::save(frame, file);
    std::printf("%s is written\n", file.c_str());
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "color_png: %s\n", error.what());
    return 1;
}
