// What the camera object itself costs: a parameter read over a transport in memory, and a frame's way from the
// transport's hand-over to the application's callback. Logging is off: this folder has no logging library.
#include <chrono>

#include "bench/CameraRig.h"
#include "bench/Figure.h"

namespace {

using zel::bench::CameraRig;
using WallClock = std::chrono::steady_clock;

bool MeasureParameter(zel::bench::Report& report) {
    CameraRig bench;
    bench.transport.m_Instant = true;
    const int times = report.DryRun() ? 1 : 20000;
    bool right = true;
    const auto [read] = zel::bench::Medians(report.Repetitions(31), [&] {
        for (int i = 0; i < times; ++i) {
            int value = 0;
            right = bench.camera.GetParameter(ZEL_PARAM_HSIZE, sizeof value, &value) && value == 640 && right;
        }
    });
    report.Add({"camera.get_parameter", read / times * 1e6, "us", zel::bench::AtMost(3)});
    return right;
}

struct Arrivals {
    CameraRig* bench;
    WallClock::time_point handed_over;
    std::vector<double> microseconds;
};

void ZEL_CALL Take(ZelImage*, void* context) {
    auto* arrivals = static_cast<Arrivals*>(context);
    const std::chrono::duration<double, std::micro> way = WallClock::now() - arrivals->handed_over;
    arrivals->microseconds.push_back(way.count());
    ZelCamera& camera = arrivals->bench->camera;
    camera.FreeImage(camera.GetPendingImage());
}

bool MeasureFrames(zel::bench::Report& report) {
    CameraRig bench;
    Arrivals arrivals{&bench, {}, {}};
    if (bench.camera.StartCommon() != 0 || !bench.camera.SetImageCallback(Take, &arrivals)) return false;
    const int frames = report.DryRun() ? 10 : 100000;
    arrivals.microseconds.reserve(static_cast<std::size_t>(frames));
    IZelCameraCommon& common = bench.camera;
    int lost = 0;
    for (int n = 0; n < frames; ++n) {
        ZelImage* image = common.GetFreeImage();
        if (!image) {
            ++lost;
            continue;
        }
        common.FillImageInfo(image);
        arrivals.handed_over = WallClock::now();
        common.SetPendingImage(image);
        bench.transport.EmitEvent(CAMERA_EVENT_IMAGE_READY);
        bench.transport.EmitImage(image);
    }
    std::vector<double>& times = arrivals.microseconds;
    if (times.empty()) return false;
    std::sort(times.begin(), times.end());
    report.Add({"camera.frame_to_callback_median", times[times.size() / 2], "us", zel::bench::AtMost(200)});
    report.Add({"camera.frame_to_callback_99", times[times.size() * 99 / 100], "us"});
    report.Add({"camera.frames_lost_of_" + std::to_string(frames),
                static_cast<double>(frames) - static_cast<double>(times.size()), "frames", zel::bench::AtMost(0)});
    return lost == 0;
}

}  // namespace

int main(int argc, char** argv) {
    zel::bench::Report report(argc, argv);
    if (!MeasureParameter(report) || !MeasureFrames(report)) return 1;
    return report.Finish();
}
