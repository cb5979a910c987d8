// Post-processing on one core, stage by stage and whole, beside memcpy of the frame, the scalar reference and OpenCV.
#include <array>

#include "bench/FrameStage.h"
#include "bench/OpenCvPeers.h"
#include "kernels/Kernels.h"

namespace zel::bench {
namespace {

namespace scalar = kernels::scalar;
constexpr std::size_t kBytes = kSamples * 2;
constexpr Traffic kCopying{"moving 8 MiB", kBytes, kBytes};
constexpr Traffic kUnpacking{"6 MiB to 8 MiB", kBytes / 4 * 3, kBytes};

void Unpack(FrameBench& bench, const kernels::KernelTable& fast) {
    Ring packed = MakeRing(12), out = MakeRing(12);
    const auto with = [&](auto unpack) { return [&, unpack](std::size_t i) { unpack(packed[i].Packed(), out[i]); }; };
    bench.StageWithin(kUnpacking, "frame.unpack", {1.05, 0.95}, 1, with(fast.unpack12),
                      Peer{"vs_scalar", {2.5, 0}, with(scalar::Unpack12)});
}

// Rows through a scratch of one row, as in the frame path.
template <class Reorder>
auto TwoTaps(const Ring& frames, const Ring& content, Reorder reorder) {
    return InPlace{frames, content, [&frames, reorder](std::size_t i) {
                       std::array<std::uint16_t, kSide> scratch;
                       for (std::size_t row = 0; row < kSide; ++row) {
                           const std::span samples = std::span<std::uint16_t>(frames[i]).subspan(row * kSide, kSide);
                           reorder(samples, scratch);
                           std::memcpy(samples.data(), scratch.data(), samples.size_bytes());
                       }
                   }};
}

template <class Reorder>
auto FourTaps(const Ring& from, const Ring& to, Reorder reorder) {
    return [&from, &to, reorder](std::size_t i) {
        for (std::size_t pair = 0; pair < kSide / 2; ++pair) {
            const std::span<std::uint16_t> picture(to[i]);
            reorder(std::span<std::uint16_t>(from[i]).subspan(pair * 2 * kSide, 2 * kSide),
                    picture.subspan(pair * kSide, kSide), picture.subspan((kSide - 1 - pair) * kSide, kSide));
        }
    };
}

void Reorder(FrameBench& bench, const kernels::KernelTable& fast) {
    const Ring a = MakeRing(12), b(kRing);
    bench.Stage("frame.two_taps", {0.80, 0.65}, 1, TwoTaps(b, a, fast.reorder_row_two_taps),
                Peer{"vs_scalar", {0, 1.25}, TwoTaps(b, a, scalar::ReorderRowTwoTaps)});
    bench.StageWithin(kCopying, "frame.four_taps", {1.0, 1.3}, 1, FourTaps(a, b, fast.reorder_row_pair_four_taps),
                      Peer{"vs_scalar", {1.8, 1.8}, FourTaps(a, b, scalar::ReorderRowPairFourTaps)});
}

void Crop(FrameBench& bench) {
    const Ring a = MakeRing(12), b(kRing);
    constexpr unsigned half = kSide / 2, quarter = kSide / 4;
    const auto rows = [&](std::size_t i) {
        for (std::size_t row = 0; row < half; ++row) {
            std::memmove(&b[i][row * half], &b[i][(quarter + row) * kSide + quarter], half * 2);
        }
    };
    bench.Stage("frame.crop_to_half", {3, 3}, 1,
                InPlace{b, a, [&](std::size_t i) { scalar::Crop(b[i], kSide, quarter, quarter, half, half); }},
                Peer{"vs_memmove", {}, InPlace{b, a, rows}});
}

void Binning(FrameBench& bench, const kernels::KernelTable& fast) {
    const Ring a = MakeRing(12), b(kRing);
    const auto with = [&](auto bin) {
        return InPlace{b, a, [&b, bin](std::size_t i) { bin(b[i], kSide, kSide, 2, 2, 4095); }};
    };
    const Traffic reading{"reading the frame", kBytes, 0, 0.85};
    bench.StageWithin(
        reading, "frame.bin_2x2", {}, 1, with(fast.bin), Peer{"vs_scalar", {}, with(scalar::Bin)},
        Peer{"vs_opencv_area", {}, [&](std::size_t i) { OpenCvHalve(a[i].data(), kSide); }, HaveOpenCv()});
}

// Read: frame, slot, sums (twice as wide); written: frame, slot, sums. That is four times what memcpy moves.
void Average(FrameBench& bench, const kernels::KernelTable& fast) {
    // Slots that hold what the frames bring leave the sums as they are.
    const Ring content = MakeRing(12), frames(kRing), slots = MakeRing(12);
    std::vector<std::uint32_t> sums(kSamples, 30000);
    std::vector<float> opencv_sums(kSamples);
    const auto with = [&](auto step) {
        return InPlace{frames, content, [&, step](std::size_t i) { step(frames[i], slots[i], sums, 8, true); }};
    };
    bench.Stage("frame.average_8", {0.65, 0.65}, 4, with(fast.average_step),
                Peer{"vs_scalar", {}, with(scalar::AverageStep)},
                Peer{"vs_opencv_accumulate_8",
                     {},
                     [&](std::size_t) {
                         for (const auto& slot : slots) OpenCvAccumulate(slot.data(), opencv_sums.data(), kSide);
                     },
                     HaveOpenCv()});
}

// The same in three passes over the whole frame.
auto Separately(const Ring& packed, const Ring& frames) {
    return [&packed, &frames, reorder = TwoTaps(frames, packed, scalar::ReorderRowTwoTaps)](std::size_t i) {
        scalar::Unpack12(packed[i].Packed(), frames[i]);
        reorder(i);
    };
}

// Pages that the system gives from the first frame of a start on, and the rate at which frames are done with.
void Steady(Report& report, const FrameGeometry& geometry) {
    FramePath path(geometry);
    const std::size_t times = report.DryRun() ? 1 : 160;
    const auto process = [&](std::size_t i) { path(i % kRing); };
    const long before = PageFaults();
    process(0);
    const long first = PageFaults() - before;
    const double seconds = Seconds([&] {
        for (std::size_t i = 1; i <= times; ++i) process(i);
    });
    const double faults = static_cast<double>(PageFaults() - before) / static_cast<double>(times);
    if (before >= 0) {
        report.Add({"frame.whole.page_faults_first", static_cast<double>(first), "pages", AtMost(0)});
        report.Add({"frame.whole.page_faults", faults, "per frame", AtMost(0)});
    }
    report.Add({"frame.whole.rate", static_cast<double>(times) / seconds, "frames/s"});
}

void WholePath(Report& report, FrameBench& bench) {
    const Ring packed = MakeRing(12), frames(kRing);
    Readout two(GeometryOf(12, 2)), four(GeometryOf(12, 4));
    bench.StageWithin(kUnpacking, "frame.unpack_two_taps", {0.70, 0.65}, 1, two,
                      Peer{"vs_separate", {0, 3}, Separately(packed, frames)});
    bench.StageWithin(kUnpacking, "frame.unpack_four_taps", {}, 1, four);

    FrameGeometry geometry = GeometryOf(12, 2);
    geometry.roi = {kSide / 4, kSide / 4, kSide / 2, kSide / 2, 2, 2};
    FramePath whole(geometry);
    bench.Stage("frame.whole", {0.55, 0.50}, 1, whole);
    Steady(report, geometry);
}

}  // namespace
}  // namespace zel::bench

int main(int argc, char** argv) {
    using namespace zel::bench;
    Report report(argc, argv);
    FrameBench bench(report);
    const auto& fast = zel::kernels::Kernels();
    Unpack(bench, fast);
    Reorder(bench, fast);
    Crop(bench);
    Binning(bench, fast);
    Average(bench, fast);
    WholePath(report, bench);
    return report.Finish();
}
