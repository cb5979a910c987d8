// What the C++ layer costs: a frame through wait_frame() and through on_frame(), each from the transport's event until
// it is back in the pool, beside a bare callback that takes it and gives it back. Then the same with the frame handed
// to another thread, which waits for it. The camera objects are the SDK's own, over a transport in memory; the layer
// gets them from an SDK object made here.
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <thread>

#include "bench/CameraRig.h"
#include "bench/Figure.h"
#include "zel/Zel.h"

namespace {

using Clock = std::chrono::steady_clock;
using zel::bench::CameraRig;

// Number 0 is the one for the layer.
class BenchSdk : public ZelSDK {
  public:
    ZEL_IMPLEMENTATION_DESTRUCTOR(BenchSdk)
    ZelCamera* camera = nullptr;

    int GetNumberOfCameras() override { return 1; }
    ZelCamera* GetCamera(int) override { return camera; }
};
BenchSdk s_Sdk;

double Microseconds(Clock::duration time) { return std::chrono::duration<double, std::micro>(time).count(); }

double Median(std::vector<double>& values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// A frame as a transport brings it, up to the event. Result: before the event.
Clock::time_point Arrive(CameraRig& rig) {
    IZelCameraCommon& common = rig.camera;
    ZelImage* const image = common.GetFreeImage();
    if (image) {
        common.FillImageInfo(image);
        common.SetPendingImage(image);
    }
    const auto start = Clock::now();
    rig.transport.EmitEvent(CAMERA_EVENT_IMAGE_READY);
    return start;
}

void ZEL_CALL TakeBare(int, void* camera) {
    auto* const bare = static_cast<ZelCamera*>(camera);
    bare->FreeImage(bare->GetPendingImage());
}

bool MeasureInPlace(zel::bench::Report& report, CameraRig& bare, CameraRig& layered, zel::Camera& camera) {
    bare.camera.SetImageNotificationCallback(TakeBare, &bare.camera);
    const int frames = report.DryRun() ? 10 : 100000;
    std::vector<double> bares, waits, handlers;
    int came = 0;
    const zel::FrameHandler handler = [&](const zel::Frame& frame) { came += frame ? 1 : 0; };
    // In turns, so that a slow phase of the machine falls on all; the handler is set once in a while.
    for (int n = 0; n < frames; ++n) {
        auto start = Arrive(bare);
        bares.push_back(Microseconds(Clock::now() - start));
        const bool by_handler = n / 10 % 2 == 1;
        if (n % 10 == 0) camera.on_frame(by_handler ? handler : nullptr);
        start = Arrive(layered);
        if (!by_handler) came += camera.wait_frame(std::chrono::seconds(1)) ? 1 : 0;
        (by_handler ? handlers : waits).push_back(Microseconds(Clock::now() - start));
    }
    if (handlers.empty()) handlers = waits;
    camera.on_frame(nullptr);
    const double bare_us = Median(bares);
    report.Add({"layer.bare_callback", bare_us, "us"});
    report.Add({"layer.wait_frame", Median(waits), "us"});
    report.Add({"layer.wait_frame_more", Median(waits) - bare_us, "us", zel::bench::AtMost(1)});
    report.Add({"layer.on_frame_more", Median(handlers) - bare_us, "us", zel::bench::AtMost(1)});
    return came == frames;
}

// What an application writes by itself to wait for a frame on a thread of its own.
struct Signal {
    std::mutex mutex;
    std::condition_variable changed;
    int frames = 0;

    static void ZEL_CALL Raise(int, void* signal) {
        auto* const self = static_cast<Signal*>(signal);
        const std::lock_guard lock(self->mutex);
        ++self->frames;
        self->changed.notify_one();
    }
    void Wait() {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return frames > 0; });
        --frames;
    }
};

bool MeasureHandOver(zel::bench::Report& report, CameraRig& bare, CameraRig& layered, zel::Camera& camera) {
    Signal signal;
    bare.camera.SetImageNotificationCallback(&Signal::Raise, &signal);
    const int frames = report.DryRun() ? 10 : 20000;
    std::atomic<int> taken = 0;
    std::vector<Clock::time_point> in_hand;
    in_hand.reserve(2 * static_cast<std::size_t>(frames));
    ZelCamera& bare_camera = bare.camera;
    std::thread application([&] {
        for (int n = 0; n < frames; ++n) {
            signal.Wait();
            ZelImage* const image = bare_camera.GetPendingImage();
            in_hand.push_back(Clock::now());
            bare_camera.FreeImage(image);
            ++taken;
            const auto frame = camera.wait_frame(std::chrono::minutes(1));
            in_hand.push_back(Clock::now());
            ++taken;
        }
    });
    std::vector<double> bares, waits;
    for (int n = 0; n < 2 * frames; ++n) {
        while (taken < n) std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::microseconds(20));  // it sleeps when the next frame comes
        const auto start = Arrive(n % 2 ? layered : bare);
        while (taken <= n) std::this_thread::yield();
        (n % 2 ? waits : bares).push_back(Microseconds(in_hand[static_cast<std::size_t>(n)] - start));
    }
    application.join();
    report.Add({"layer.hand_over_bare", Median(bares), "us"});
    report.Add({"layer.hand_over_wait_frame", Median(waits), "us"});
    return true;
}

}  // namespace

extern "C" {
ZelSDK* ZEL_CALL zel_create_sdk() { return &s_Sdk; }
void ZEL_CALL zel_destroy_sdk(ZelSDK*) {}
ZelSDK* ZEL_CALL zel_retain_sdk() { return &s_Sdk; }
void ZEL_CALL zel_release_sdk() {}
int ZEL_CALL zel_claim_camera(const ZelCamera*) { return 1; }
void ZEL_CALL zel_release_camera(const ZelCamera*) {}
int ZEL_CALL zel_set_camera_connect_callback(ZelCameraConnectCallback, void*) { return 1; }
char* ZEL_CALL get_version_str() {
    static char s_Version[] = "bench";
    return s_Version;
}
}

int main(int argc, char** argv) {
    zel::bench::Report report(argc, argv);
    CameraRig bare, layered;
    if (bare.camera.StartCommon() != 0) return 1;
    s_Sdk.camera = &layered.camera;
    zel::Sdk sdk;
    zel::Camera camera = sdk.open();
    camera.start();
    if (!MeasureInPlace(report, bare, layered, camera) || !MeasureHandOver(report, bare, layered, camera)) return 1;
    return report.Finish();
}
