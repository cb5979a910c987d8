// Post-processing on one core, stage by stage and whole, beside memcpy of the frame, the scalar reference and OpenCV.
#include <array>

#include "bench/FrameJobs.h"
#include "bench/OpenCvPeers.h"
#include "kernels/Kernels.h"

namespace zel::bench {
namespace {

namespace scalar = kernels::scalar;

void Unpack(FrameBench& bench, const kernels::KernelTable& fast) {
    Ring packed = MakeRing(12), out = MakeRing(12);
    const auto with = [&](auto unpack) { return [&, unpack](std::size_t i) { unpack(packed[i].Packed(), out[i]); }; };
    bench.Stage("frame.unpack", {1.05, 0.95}, 1, with(fast.unpack12),
                Peer{"vs_scalar", {2.5, 0}, with(scalar::Unpack12)});
}

// Rows through a scratch of one row, as in the frame path.
template <class Reorder>
auto TwoTaps(Ring& frames, Reorder reorder) {
    return [&frames, reorder](std::size_t i) {
        std::array<std::uint16_t, kSide> scratch;
        for (std::size_t row = 0; row < kSide; ++row) {
            const std::span samples = std::span<std::uint16_t>(frames[i]).subspan(row * kSide, kSide);
            reorder(samples, scratch);
            std::memcpy(samples.data(), scratch.data(), samples.size_bytes());
        }
    };
}

template <class Reorder>
auto FourTaps(const Ring& from, Ring& to, Reorder reorder) {
    return [&from, &to, reorder](std::size_t i) {
        for (std::size_t pair = 0; pair < kSide / 2; ++pair) {
            const std::span<std::uint16_t> picture(to[i]);
            reorder(std::span<std::uint16_t>(from[i]).subspan(pair * 2 * kSide, 2 * kSide),
                    picture.subspan(pair * kSide, kSide), picture.subspan((kSide - 1 - pair) * kSide, kSide));
        }
    };
}

void Reorder(FrameBench& bench, const kernels::KernelTable& fast) {
    Ring a = MakeRing(12), b = MakeRing(12);
    bench.Stage("frame.two_taps", {0.80, 0.65}, 1, TwoTaps(a, fast.reorder_row_two_taps),
                Peer{"vs_scalar", {0, 1.25}, TwoTaps(b, scalar::ReorderRowTwoTaps)});
    bench.Stage("frame.four_taps", {0.85, 0.65}, 1, FourTaps(a, b, fast.reorder_row_pair_four_taps),
                Peer{"vs_scalar", {1.8, 1.8}, FourTaps(a, b, scalar::ReorderRowPairFourTaps)});
}

void Crop(FrameBench& bench) {
    Ring a = MakeRing(12);
    constexpr unsigned half = kSide / 2, quarter = kSide / 4;
    const auto rows = [&](std::size_t i) {
        for (std::size_t row = 0; row < half; ++row) {
            std::memmove(&a[i][row * half], &a[i][(quarter + row) * kSide + quarter], half * 2);
        }
    };
    bench.Stage(
        "frame.crop_to_half", {3, 3}, 1,
        [&](std::size_t i) { scalar::Crop(a[i], kSide, quarter, quarter, half, half); }, Peer{"vs_memmove", {}, rows});
}

void Binning(FrameBench& bench, const kernels::KernelTable& fast) {
    Ring a = MakeRing(12), b = MakeRing(12);
    const auto with = [](Ring& frames, auto bin) {
        return [&frames, bin](std::size_t i) { bin(frames[i], kSide, kSide, 2, 2, 4095); };
    };
    bench.Stage("frame.bin_2x2", {1.5, 1.9}, 1, with(a, fast.bin), Peer{"vs_scalar", {}, with(b, scalar::Bin)},
                Peer{"vs_opencv_area", {}, [&](std::size_t i) { OpenCvHalve(b[i].data(), kSide); }, HaveOpenCv()});
}

// Read: frame, slot, sums (twice as wide); written: frame, slot, sums. That is four times what memcpy moves.
void Average(FrameBench& bench, const kernels::KernelTable& fast) {
    Ring frames = MakeRing(12), slots = MakeRing(12);
    std::vector<std::uint32_t> sums(kSamples, 30000);
    std::vector<float> opencv_sums(kSamples);
    const auto with = [&](auto step) { return [&, step](std::size_t i) { step(frames[i], slots[i], sums, 8, true); }; };
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
auto Separately(Ring& packed, Ring& frames) {
    return [&packed, &frames, reorder = TwoTaps(frames, scalar::ReorderRowTwoTaps)](std::size_t i) {
        scalar::Unpack12(packed[i].Packed(), frames[i]);
        reorder(i);
    };
}

void WholePath(Report& report, FrameBench& bench) {
    Ring packed = MakeRing(12), frames = MakeRing(12);
    Readout two(GeometryOf(12, 2)), four(GeometryOf(12, 4));
    bench.Stage(
        "frame.unpack_two_taps", {0.70, 0.65}, 1, [&](std::size_t i) { two(i); },
        Peer{"vs_separate", {0, 3}, Separately(packed, frames)});
    bench.Stage("frame.unpack_four_taps", {}, 1, [&](std::size_t i) { four(i); });

    FrameGeometry geometry = GeometryOf(12, 2);
    geometry.roi = {kSide / 4, kSide / 4, kSide / 2, kSide / 2, 2, 2};
    FramePath whole(geometry);
    const auto process = [&](std::size_t i) {
        whole.camera.PostProcessOnce(whole.Fresh(i), ZelCameraControlImpl::Path::kMonochrome);
    };
    bench.Stage("frame.whole", {0.55, 0.50}, 1, process);
    for (std::size_t i = 0; i < 16; ++i) process(i % kRing);
    const long before = PageFaults();
    const int times = report.DryRun() ? 1 : 160;
    const auto start = std::clock();
    for (int i = 0; i < times; ++i) process(static_cast<std::size_t>(i) % kRing);
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    report.Add({"frame.whole.page_faults", static_cast<double>(PageFaults() - before) / times, "per frame", AtMost(0)});
    report.Add({"frame.whole.rate", times / seconds, "frames/s"});
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
