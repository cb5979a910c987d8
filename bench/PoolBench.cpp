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
    return report.Finish();
}
