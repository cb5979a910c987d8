// ***  Takes a picture at an interval and saves each as a TIFF file, in a folder of its own for each run: nothing is
// overwritten. A camera that is unplugged costs the pictures of that time; a disk that is full ends the run.
//
//   time_lapse [--camera NUMBER-OR-SERIAL] [--exposure MILLISECONDS] [--interval MILLISECONDS] [--frames N] [--folder
//   NAME]
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

#include "Options.h"
#include "zel/Zel.h"

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

std::string numbered(const std::string& name, int number, int digits) {
    std::string text = std::to_string(number);
    while (text.size() < static_cast<std::size_t>(digits)) text.insert(text.begin(), '0');
    return name + text;
}

// Makes NAME_001, or the first one after it that is not there yet. Making a folder tells whether somebody else did, so
// two programs never share one.
fs::path make_folder(const std::string& name) {
    for (int number = 1;; ++number) {
        const fs::path folder = numbered(name + "_", number, 3);
        if (fs::create_directories(folder)) return folder;
    }
}

// One picture in its file.
void take_picture(zel::Camera& camera, std::chrono::milliseconds exposure, const std::string& file) {
    // Each time: a camera that was switched off in between has lost its settings.
    camera.set(zel::settings::exposure, exposure);
    const zel::Frame frame = camera.snap();
    try {
        zel::save(frame, file);
    } catch (const zel::Error&) {
        std::error_code ignored;
        fs::remove(file, ignored);  // half a picture is none
        throw;
    }
}

}  // namespace

int main(int argc, char** argv) try {
    const Options options(argc, argv,
                          {{"--camera", "0"},
                           {"--exposure", "20"},
                           {"--interval", "1000"},
                           {"--frames", "10"},
                           {"--folder", "time_lapse"}});
    const int wanted = options.number("--frames");
    const std::chrono::milliseconds exposure(options.number("--exposure"));
    const std::chrono::milliseconds interval(options.number("--interval"));

    zel::Sdk sdk;
    std::optional<zel::Camera> camera = sdk.open(options.text("--camera"));
    const std::string serial = camera->info().serial;
    const fs::path folder = make_folder(options.text("--folder"));

    int taken = 0;
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < wanted; ++i) {
        // Counted from the start: what one picture takes does not move the next.
        std::this_thread::sleep_until(start + i * interval);
        const std::string file = (folder / (numbered("", i + 1, 5) + ".tif")).string();
        try {
            if (!camera) camera = sdk.open(serial);
            take_picture(*camera, exposure, file);
            std::printf("%s\n", file.c_str());
            ++taken;
        } catch (const zel::Error& error) {
            if (error.kind() == zel::ErrorKind::output) throw;
            std::printf("picture %d is missing: %s\n", i + 1, error.what());
            camera.reset();  // closed, so that it is found when it comes back
        }
        std::fflush(stdout);
    }
    std::printf("%d of %d pictures are in %s\n", taken, wanted, folder.string().c_str());
    std::fflush(stdout);
    if (taken < wanted) throw std::runtime_error(std::to_string(wanted - taken) + " pictures are missing");
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "time_lapse: %s\n", error.what());
    return 1;
}
