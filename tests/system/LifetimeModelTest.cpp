// Cameras, camera objects and the SDK come and go in any order: checked against a model on one thread, and for crashes,
// hangs and leaks with further threads at the same cameras.
//
// ZEL_TEST_SEED chooses the order, ZEL_TEST_STEPS its length.
#include <cstdlib>

#include "tests/support/Process.h"
#include "tests/system/LifetimeDriver.h"
#include "tests/system/ThreadClock.h"

namespace zel::test {
namespace {

unsigned Number(const char* variable, unsigned otherwise) {
    const char* const text = std::getenv(variable);
    return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

// What other threads do with a camera that the driver opens, closes, plugs and unplugs.
constexpr void (*kCalls[])(ZelColorCamera&) = {
    [](ZelColorCamera& camera) { camera.FreeImage(camera.GetPendingImage()); },
    [](ZelColorCamera& camera) { camera.FreeImage(camera.GetLastPendingImage()); },
    [](ZelColorCamera& camera) { camera.FreeColorImage(camera.GetPendingColorImage()); },
    [](ZelColorCamera& camera) { camera.FreeAllPendingImages(); },
    [](ZelColorCamera& camera) { camera.GetParameterValue(ZEL_PARAM_EXPOSURE_TIME); },
    [](ZelColorCamera& camera) { camera.SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 6); },
    [](ZelColorCamera& camera) { camera.SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 8); },
    [](ZelColorCamera& camera) { camera.GetCameraName(); },
    [](ZelColorCamera& camera) { camera.SetImageCallback(nullptr, nullptr); },
    [](ZelColorCamera& camera) { camera.SoftwareTrigger(); },
    [](ZelColorCamera& camera) { camera.StartTriggerAcquisition(); },
    [](ZelColorCamera& camera) { camera.StopTriggerAcquisition(0); },
    [](ZelColorCamera& camera) { camera.Start(); },
    [](ZelColorCamera& camera) { camera.Start(); },
    [](ZelColorCamera& camera) { camera.Stop(); },
    [](ZelColorCamera& camera) { camera.Close(); },
    [](ZelColorCamera& camera) { camera.Open(); },
    [](ZelColorCamera& camera) { camera.Open(); },
};

void CallUntil(const std::atomic<bool>& end, LifetimeDriver& driver, unsigned seed) {
    std::minstd_rand random(seed);
    while (!end) {
        const std::size_t at = random() % LifetimeModel::kCameras;
        const auto call = kCalls[random() % std::size(kCalls)];
        while (driver.ending) std::this_thread::yield();
        if (random() % 8 != 0) {
            const std::shared_lock calling(driver.calling);
            ZelCamera* const camera = driver.objects[at];
            if (camera) call(static_cast<ZelColorCamera&>(*camera));
            continue;
        }
        const std::shared_lock using_sdk(driver.using_sdk);
        ZelSDK* const sdk = driver.sdk;
        if (sdk && random() % 2 == 0) sdk->GetNumberOfCameras();
        if (sdk) sdk->GetCameraName(static_cast<int>(at));
    }
}

class LifetimeModelTest : public testing::TestWithParam<unsigned> {};

TEST_P(LifetimeModelTest, EveryOrderOfStepsEndsWell) {
    const unsigned threads = GetParam();
    const unsigned seed = Number("ZEL_TEST_SEED", 1);
    const unsigned steps = Number("ZEL_TEST_STEPS", threads == 0 ? 3000 : 600);
    const std::string title = "seed " + std::to_string(seed) + ", " + std::to_string(steps) + " steps, " +
                              std::to_string(threads) + " further threads";
    ThreadClock clock;
    Watchdog watchdog(title);
    LifetimeDriver driver(seed, threads == 0, watchdog);
    driver.CleanSession();
    driver.Destroy();
    const int running = platform::RunningThreads();
    const int handles = platform::OpenHandles();
    driver.Create();

    std::atomic<bool> end{false};
    std::vector<std::thread> callers;
    for (unsigned i = 0; i < threads; ++i) {
        callers.emplace_back([&, i] { CallUntil(end, driver, seed * 100 + i); });
    }
    for (unsigned step = 0; step < steps && !HasFailure(); ++step) driver.Step();
    end = true;
    watchdog.Note("the other threads end");
    for (std::thread& caller : callers) caller.join();
    if (HasFailure()) watchdog.Print("failure");
    driver.CleanSession();
    driver.Destroy();

    watchdog.Note("threads end");
    while (platform::RunningThreads() > running) std::this_thread::yield();
    // On Windows a lock that lives on takes a handle when it is first waited for; a leak in any step would be many
    // more.
    EXPECT_LE(platform::OpenHandles(), handles + 20);
    std::printf("%s: ", title.c_str());
    driver.PrintCounts();
}

INSTANTIATE_TEST_SUITE_P(FurtherThreads, LifetimeModelTest, testing::Values(0u, 3u));

}  // namespace
}  // namespace zel::test
