// The color path on one core, step by step and whole, beside memcpy of the mosaic frame, the scalar reference, OpenCV
// and libdc1394.
#include <array>

#include "bench/ColorPeers.h"
#include "bench/FrameStage.h"
#include "include/ZelCamera.h"
#include "include/zel/Color.h"
#include "kernels/Kernels.h"

namespace zel::bench {
namespace {

using kernels::ColorFormat;
using kernels::KernelTable;
using kernels::PlanarRow;
constexpr unsigned kBits = 14;
constexpr std::array<float, 9> kMatrix{1.62f, -0.47f, -0.15f, -0.26f, 1.49f, -0.23f, 0.02f, -0.61f, 1.59f};

// Pictures of three samples a pixel, in page memory.
class Pictures {
  public:
    Pictures() {
        for (auto& picture : m_Pictures) {
            picture = static_cast<std::uint16_t*>(AllocatePixels(kSamples * 6));
            for (std::size_t i = 0; i < kSamples * 3; ++i)
                picture[i] = static_cast<std::uint16_t>(i * 7 % (1u << kBits));
        }
    }
    ~Pictures() {
        for (auto* picture : m_Pictures) FreePixels(picture);
    }
    std::uint16_t* operator[](std::size_t i) const { return m_Pictures[i]; }
    PlanarRow Row(std::size_t i, std::size_t y) const {
        std::uint16_t* const first = m_Pictures[i] + y * kSide;
        return {{first, first + kSamples, first + 2 * kSamples}, kSide};
    }

  private:
    std::array<std::uint16_t*, kRing> m_Pictures{};
};

auto Demosaic(const Ring& mosaics, const Pictures& planes, const KernelTable& kernel) {
    return [&](std::size_t i) {
        const std::uint16_t* const frame = mosaics[i].data();
        bool small = true;
        for (std::size_t y = 0; y < kSide; ++y) {
            const std::uint16_t* const row = frame + y * kSide;
            if (y + 1 < kSide) small = kernel.all_bits({row + kSide, kSide}) < (1u << kBits);
            kernel.demosaic_row({y ? row - kSide : nullptr, row, y + 1 < kSide ? row + kSide : nullptr, kSide,
                                 kernels::PhaseAt(1, 0, static_cast<unsigned>(y)), small},
                                planes.Row(i, y));
        }
    };
}

// From the planes into the interleaved picture.
auto Transform(const Pictures& planes, const Pictures& out, const KernelTable& kernel, const std::uint16_t* table) {
    kernels::ColorTransform transform{{}, (1u << kBits) - 1, table, 0};
    std::copy(kMatrix.begin(), kMatrix.end(), transform.matrix);
    return [&planes, &out, &kernel, transform](std::size_t i) {
        for (std::size_t y = 0; y < kSide; ++y) {
            kernel.transform_pack_row(planes.Row(i, y), transform, ColorFormat::k16, out[i] + y * kSide * 3);
        }
    };
}

void Steps(FrameBench& bench) {
    const KernelTable& fast = kernels::Kernels();
    const KernelTable& plain = *kernels::FindKernels(kernels::Variant::kScalar);
    const Ring mosaics = MakeRing(kBits);
    const Pictures planes, out;
    bench.Stage("color.demosaic", {0.32, 0.28}, 1, Demosaic(mosaics, planes, fast),
                Peer{"vs_opencv",
                     {2, 1.5},
                     [&](std::size_t i) { OpenCvDemosaic(mosaics[i].data(), out[i], kSide); },
                     HaveOpenCv()},
                Peer{"vs_libdc1394",
                     {2, 1.5},
                     [&](std::size_t i) { Dc1394Demosaic(mosaics[i].data(), out[i], kSide); },
                     HaveDc1394()},
                Peer{"vs_scalar", {}, Demosaic(mosaics, planes, plain)});
    bench.Stage("color.transform", {0.20, 0.21}, 1, Transform(planes, out, fast, nullptr),
                Peer{"vs_scalar", {6, 6}, Transform(planes, out, plain, nullptr)},
                Peer{"vs_opencv_clamped",
                     {1.2, 1.2},
                     [&](std::size_t i) { OpenCvTransform(planes[i], out[i], kSide, kMatrix.data()); },
                     HaveOpenCv()});
    std::vector<std::uint16_t> table((1u << kBits) + 2);
    for (std::size_t i = 0; i < table.size(); ++i) table[i] = static_cast<std::uint16_t>(i ^ 1);
    bench.Stage("color.transform_table", {0.12, 0.16}, 1, Transform(planes, out, fast, table.data()),
                Peer{"vs_scalar", {3, 3}, Transform(planes, out, plain, table.data())});
}

// The frame path with its color steps.
class ColorPath : private FramePath {
  public:
    using FramePath::operator();

    explicit ColorPath(int operation) : FramePath(ColorGeometry(), Way::kColor) {
        camera.MainPipeline().ConcatenateTransform(operation, 0);
        camera.MainPipeline().ConcatenateMatrix(kMatrix.data());
    }
    // As ordinary picture files have it: the black level taken off, and the curve of sRGB.
    void UseTables() {
        const ColorSetting setting{zel::ColorFormat::rgb16, ColorSpace::srgb, kBits, 512};
        Set(&ColorSettings::input_linearization, black_level_table(kBits, setting.black_level));
        Set(&ColorSettings::output_non_linearization, srgb_table(setting));
    }

  private:
    void Set(ColorPipeline::TableSlot slot, const std::vector<std::uint16_t>& entries) {
        camera.MainPipeline().SetTable(slot, entries.data(), static_cast<unsigned>(entries.size() / 3), 3);
    }
    static FrameGeometry ColorGeometry() {
        FrameGeometry geometry = GeometryOf(kBits, 1);
        geometry.cfa_phase = 1;
        return geometry;
    }
};

void Whole(Report& report, FrameBench& bench) {
    const Ring mosaics = MakeRing(kBits);
    const Pictures out;
    ColorPath words(ZEL_COLOR_TRANSFORM_16_BIT);
    bench.StageWithin({"8 MiB to 24 MiB", kSamples * 2, kSamples * 6}, "color.whole_16_bit", {0.25, 0.38}, 1, words,
                      Peer{"vs_opencv",
                           {4, 4},
                           [&](std::size_t i) {
                               OpenCvDemosaic(mosaics[i].data(), out[i], kSide);
                               OpenCvTransform(out[i], out[i], kSide, kMatrix.data());
                           },
                           HaveOpenCv()});
    ColorPath bytes(ZEL_COLOR_TRANSFORM_8_BIT_RGBX);
    bench.StageWithin({"8 MiB to 16 MiB", kSamples * 2, kSamples * 4}, "color.whole_8_bit", {0.18, 0.18}, 1, bytes);
    ColorPath srgb(ZEL_COLOR_TRANSFORM_16_BIT);
    srgb.UseTables();
    bench.Stage("color.whole_srgb_16_bit", {}, 1, srgb);

    ColorPath fresh(ZEL_COLOR_TRANSFORM_16_BIT);
    const long before = PageFaults();
    fresh(0);
    if (before < 0) return;
    report.Add({"color.whole.page_faults_first", static_cast<double>(PageFaults() - before), "pages", AtMost(0)});
    const std::size_t times = report.DryRun() ? 1 : 80;
    for (std::size_t i = 1; i < times; ++i) fresh(i % kRing);
    report.Add({"color.whole.page_faults", static_cast<double>(PageFaults() - before) / static_cast<double>(times),
                "per frame", AtMost(0)});
}

}  // namespace
}  // namespace zel::bench

int main(int argc, char** argv) {
    using namespace zel::bench;
    Report report(argc, argv);
    FrameBench bench(report);
    Steps(bench);
    Whole(report, bench);
    return report.Finish();
}
