// Simulated cameras of 64 x 48 samples, at the pace of real ones, through the C++ layer.
#ifndef TESTS_LAYER_LAYERFIXTURE_H
#define TESTS_LAYER_LAYERFIXTURE_H

#include <future>
#include <optional>

#include "tests/system/SystemFixture.h"
#include "zel/Zel.h"

namespace zel::test {

using namespace std::chrono_literals;

struct LayerTest : testing::Test {
    enum { kCameraLink, kEbus, kColor, kMono };  // numbers in the SDK; the last two are 0 and 1 of their library
    static constexpr auto kLong = 60s;

    LayerTest() {
        platform::SetEnvironment("ZEL_SIM_PACE", "");
        sdk.emplace();
        EXPECT_EQ(sdk->cameras().size(), 4u);
    }
    ~LayerTest() override {
        camera.reset();
        for (int number : {0, 1}) usb.Mend(number);
        // The libraries are shut down with the SDK that has found them.
        if (!sdk) sdk.emplace();
        static_cast<void>(sdk->cameras());
    }

    // The monochrome camera on USB, 1000 frames a second.
    Camera& Opened() {
        camera.reset();
        camera.emplace(sdk->open(kMono));
        camera->set(settings::exposure, 1ms);
        return *camera;
    }
    Camera& Running() {
        Opened().start();
        return *camera;
    }
    // What a thread of the library is to do, or to have left.
    static void WaitFor(const char* what, const std::function<bool()>& holds) {
        const auto end = std::chrono::steady_clock::now() + kLong;
        while (!holds()) {
            ASSERT_LT(std::chrono::steady_clock::now(), end) << what;
            std::this_thread::sleep_for(1ms);
        }
    }

    SimulatedLibrary usb{"zel_usb.dll"};
    std::optional<Sdk> sdk;
    std::optional<Camera> camera;
};

}  // namespace zel::test

#endif
