// ***  Takes frames with one camera for as long as it is there, and goes on when it was unplugged and plugged in again.
//
//   hot_plug [--camera NUMBER-OR-SERIAL] [--frames N] [--patience SECONDS]       --frames 0: until Ctrl-C
//
// Simulated cameras are unplugged by a script, here two seconds after the start and for two seconds:
//
//   ZEL_SIM_FAULTS='@2 unplug 500101; @4 plug 500101' hot_plug --camera 500101 --frames 50
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <string>

#include "Options.h"
#include "zel/Zel.h"

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

// Wakes the main thread when a camera comes or goes.
class Bell {
  public:
    void ring() {
        const std::lock_guard lock(m_Mutex);
        m_Rang = true;
        m_Changed.notify_one();
    }
    void wait(std::chrono::milliseconds at_most) {
        std::unique_lock lock(m_Mutex);
        m_Changed.wait_for(lock, at_most, [this] { return m_Rang; });
        m_Rang = false;
    }

  private:
    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    bool m_Rang = false;
};

// Counts frames until there are `wanted` of them (0: no end) or the link is lost.
void take_frames(zel::Camera& camera, int& frames, int wanted) {
    // A camera that was switched off has lost its settings: they are made anew each time.
    camera.set(zel::settings::exposure, 20ms);
    camera.start();
    while (wanted == 0 || frames < wanted) {
        zel::FrameResult result = camera.wait_frame(camera.frame_timeout());
        if (!result) camera.throw_no_frame(result.no_frame());
        ++frames;
    }
}

}  // namespace

int main(int argc, char** argv) try {
    const Options options(argc, argv, {{"--camera", "0"}, {"--frames", "0"}, {"--patience", "60"}});
    const int wanted = options.number("--frames");
    const std::chrono::seconds patience(options.number("--patience"));

    Bell bell;  // before the Sdk, whose handler rings it
    zel::Sdk sdk;
    sdk.on_hot_plug([&](const zel::HotPlugEvent& event) {
        std::printf("%s: %s, serial number %s\n", event.connected ? "plugged in" : "unplugged",
                    event.camera.name.c_str(), event.camera.serial.c_str());
        std::fflush(stdout);
        bell.ring();
    });

    // The same camera each time, whatever number it has then.
    const auto cameras = sdk.cameras();
    const int first = zel::select_camera(cameras, options.text("--camera"));
    const std::string serial = sdk.info(first).serial;
    int frames = 0;
    int opened = 0;
    std::string trouble;
    Clock::time_point there = Clock::now();
    while (true) {
        const int before = frames;
        try {
            zel::Camera camera = sdk.open(serial);
            ++opened;
            std::printf("camera %s is open\n", serial.c_str());
            take_frames(camera, frames, wanted);
            break;
        } catch (const zel::Error& error) {
            // The camera has been closed on the way here: it can be plugged in again.
            if (trouble != error.what()) std::printf("%d frames; %s\n", frames, error.what());
            std::fflush(stdout);
            trouble = error.what();
        }
        if (frames > before) there = Clock::now();
        if (Clock::now() - there > patience) throw std::runtime_error("the camera does not come back: " + trouble);
        // It may have come back before it was closed, without an event: a search now and then finds it all the same.
        bell.wait(1s);
    }
    std::printf("%d frames, opened %d times\n", frames, opened);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "hot_plug: %s\n", error.what());
    return 1;
}
