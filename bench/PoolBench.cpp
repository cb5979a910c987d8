// The image pool beside the lock it is built on. One cycle takes a free record, makes it pending, hands it over and
// takes it back, on one thread and with logging off: this folder has no logging library.
#include <cstdio>
#include <mutex>
#include <vector>

#include "bench/Figure.h"
#include "image/ImageManager.h"

namespace {

using zel::ImageManager;

void Cycle(ImageManager& pool, int times) {
    for (int i = 0; i < times; ++i) {
        ZelImageInternal* const image = pool.GetFreeImage();
        pool.SetPendingImage(image);
        zel::bench::Keep(pool.GetPendingImage());
        pool.ReleaseImage(image);
    }
}

void LockPairs(zel::platform::RecursiveLock& lock, int times) {
    for (int i = 0; i < times; ++i) std::lock_guard guard(lock);
}

// A pool of this many records, of which the application holds `held`.
bool Measure(zel::bench::Report& report, int records, int held) {
    ImageManager pool("PoolBench");
    pool.SetFrameGeometry(64, 64, 12, 2);
    if (pool.PixelBufferAllocate(records) != zel::kPoolOk) return false;
    for (int i = 0; i < held; ++i) pool.GetFreeImage();

    zel::platform::RecursiveLock lock;
    const int times = report.DryRun() ? 1 : 5000;
    const auto [cycle, pair] = zel::bench::Medians(
        report.Repetitions(101), [&] { Cycle(pool, times); }, [&] { LockPairs(lock, times); });
    const std::string name = "pool.cycle_" + std::to_string(records) + "_held_" + std::to_string(held);
    report.Add({name, cycle / pair, "lock pairs", held ? zel::bench::Target{} : zel::bench::AtMost(16)});
    report.Add({name + "_time", cycle / times * 1e9, "ns"});
    return pool.FreeCount() == records - held;
}

// A start's pool of 64 frames of 2048 x 2048, whose pages the system is asked for, and the next start's, which keeps
// it.
bool MeasureStart(zel::bench::Report& report) {
    const int records = report.DryRun() ? 2 : 64;
    bool right = true;
    const auto start = [&](ImageManager& pool) {
        return [&] { right = pool.PixelBufferAllocate(records) == zel::kPoolOk && right; };
    };
    std::vector<double> first, again;
    for (int i = 0; i < report.Repetitions(5); ++i) {
        ImageManager pool("PoolBench");
        pool.SetFrameGeometry(2048, 2048, 14, 2);
        first.push_back(zel::bench::Seconds(start(pool)));
        again.push_back(zel::bench::Seconds(start(pool)));
    }
    const zel::bench::Quantity seconds(first);
    report.Add({"pool.start_64_frames", seconds * 1e3, "ms", zel::bench::AtMost(500)});
    report.Add({"pool.start_64_frames_touched", records * 2048.0 * 2048 * 2 / 1e9 / seconds, "GB/s"});
    report.Add({"pool.start_again", zel::bench::Quantity(again) * 1e3, "ms", zel::bench::AtMost(1)});
    return right;
}

}  // namespace

int main(int argc, char** argv) {
    zel::bench::Report report(argc, argv);
    if (zel::Logger("ImageManager").Enabled()) {
        std::fputs("a logging library was found: its cost would be measured, not the pool's\n", stderr);
        return 1;
    }
    for (const auto& [records, held] : {std::pair{8, 0}, {64, 0}, {8, 4}}) {
        if (!Measure(report, records, held)) return 1;
    }
    if (!MeasureStart(report)) return 1;
    return report.Finish();
}
