// What a user gets of the simulated cameras, in a program over the C++ layer: each of them alone, the color camera in
// color, and two to four at once, all at the pace of a real camera. Frames/s, frames that are lost by cause, processor
// time and pages for each frame (of the whole program, the cameras included) and how long frames take from the
// transport's event into the application's hands.
#include <chrono>
#include <cstdio>
#include <exception>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "bench/Figure.h"
#include "zel/FrameCounter.h"
#include "zel/Zel.h"

namespace {

using zel::bench::AtMost;
using zel::bench::Quantity;
using zel::bench::Target;

struct Usage {
    double seconds = zel::bench::ProcessorSeconds();
    long faults = zel::bench::PageFaults();
};

// One camera's run on a thread of its own.
class Run {
  public:
    Run(zel::Camera& camera, int frames) : m_Camera(camera), m_Frames(frames) {
        hand_over_us.reserve(static_cast<std::size_t>(frames));
    }

    void operator()() {
        m_Camera.start();
        for (int i = 0; i < m_Frames; ++i) {
            const zel::FrameResult frame = m_Camera.wait_frame(std::chrono::seconds(5));
            if (!frame) break;
            counter.frame(frame->info().number, frame->info().arrival_ms);
            // The waiting thread's own first steps are not the frames'.
            if (i == 0) {
                first = Usage();
                continue;
            }
            hand_over_us.push_back(std::chrono::duration<double, std::micro>(frame->hand_over()).count());
        }
        m_Camera.stop();
        drops = counter.count(m_Camera.link_drops());
    }

    zel::FrameCounter counter;
    zel::Drops drops;
    Usage first;
    std::vector<double> hand_over_us;

  private:
    zel::Camera& m_Camera;
    const int m_Frames;
};

// Hand-over in microseconds that is asked for; 0: none.
bool Measure(zel::bench::Report& report, std::vector<zel::Camera>& cameras, const std::string& name, double most_us) {
    std::vector<Run> runs;
    for (zel::Camera& camera : cameras) runs.emplace_back(camera, report.DryRun() ? 3 : 40);
    std::vector<std::thread> threads;
    for (Run& run : runs) threads.emplace_back(std::ref(run));
    for (std::thread& thread : threads) thread.join();
    const Usage end;

    Usage begin = runs[0].first;
    double frames = 0, rate = 0, link = 0, no_buffer = 0;
    std::vector<double> hand_over;
    for (const Run& run : runs) {
        // The last camera to begin: from there on all of them run.
        if (run.first.seconds > begin.seconds) begin = run.first;
        frames += static_cast<double>(run.hand_over_us.size());
        rate += run.counter.camera_rate();
        link += static_cast<double>(run.drops.link);
        no_buffer += static_cast<double>(run.drops.no_buffer);
        hand_over.insert(hand_over.end(), run.hand_over_us.begin(), run.hand_over_us.end());
    }
    if (frames == 0) return false;
    const Quantity latency(hand_over);
    const std::string prefix = "stream." + name + ".";
    report.Add({prefix + "rate", rate, "frames/s"});
    report.Add({prefix + "lost_on_link", link, "frames", AtMost(0)});
    report.Add({prefix + "no_free_buffer", no_buffer, "frames", AtMost(0)});
    report.Add({prefix + "processor", (end.seconds - begin.seconds) / frames * 1e3, "ms/frame"});
    report.Add(
        {prefix + "page_faults", static_cast<double>(end.faults - begin.faults) / frames, "per frame", AtMost(0)});
    report.Add({prefix + "hand_over", latency, "us", most_us > 0 ? AtMost(most_us) : Target{}});
    report.Add({prefix + "hand_over_99", latency.Quantile(0.99), "us"});
    return true;
}

bool MeasureAll(zel::bench::Report& report) {
    zel::Sdk sdk;
    const int count = static_cast<int>(sdk.cameras().size());
    bool right = count > 0;
    for (int number = 0; number < count; ++number) {
        std::vector<zel::Camera> one;
        one.push_back(sdk.open(number));
        // Frames of one tap are not processed: what is left is the hand-over.
        const bool one_tap = one[0].number(ZEL_PARAM_TAPS_INDEX) == 0;
        right = Measure(report, one, "camera" + std::to_string(number), one_tap ? 100 : 0) && right;
        if (one[0].is_monochrome()) continue;
        one[0].use_color();
        right = Measure(report, one, "camera" + std::to_string(number) + "_color", 2000) && right;
    }
    for (int together = 2; together <= count; ++together) {
        std::vector<zel::Camera> several;
        for (int number = 0; number < together; ++number) several.push_back(sdk.open(number));
        right = Measure(report, several, std::to_string(together) + "_cameras", 0) && right;
    }
    return right;
}

}  // namespace

int main(int argc, char** argv) try {
    zel::bench::Report report(argc, argv);
    return MeasureAll(report) ? report.Finish() : 1;
} catch (const std::exception& error) {
    std::fprintf(stderr, "stream_bench: %s\n", error.what());
    return 1;
}
