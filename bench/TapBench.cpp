// Correction of the taps on one core: alone and on the way of the readout, and making the lookup tables anew.
#include <array>
#include <cstdio>
#include <fstream>
#include <random>

#include "bench/FrameStage.h"
#include "kernels/Kernels.h"
#include "platform/Locks.h"
#include "tapbalance/TapBalance.h"

namespace zel::bench {
namespace {

constexpr int kBits = 14;
constexpr int kRows = 32;

// Tables of a made-up camera for both readout speeds; nothing is asked of a camera.
class Calibration {
  public:
    explicit Calibration(int taps) {
        balance.SetBitsPerPixel(kBits);
        for (const char* speed : {"20MHz", "40MHz"}) {
            const std::string name = std::string("tap_bench_") + speed + ".txt";
            std::ofstream file(name);
            file << kRows << ' ' << taps << '\n';
            for (int row = 0; row < kRows; ++row) {
                file << row * 1200.0 / kRows;
                for (int tap = 0; tap < 4; ++tap) file << ' ' << (tap < taps ? 0.95 + 0.02 * tap + 0.001 * row : 0.0);
                file << '\n';
            }
            file.close();
            m_Loaded = balance.LoadDataFromMasterFile(name.c_str()) && m_Loaded;
            std::remove(name.c_str());
        }
        m_Loaded = balance.Enable(true) && m_Loaded;
    }
    bool Loaded() const { return m_Loaded; }

  private:
    ExchangeLock m_Lock;
    TextProtocol m_Text{nullptr, "", m_Lock};
    bool m_Loaded = true;

  public:
    TapBalance balance{m_Text, ""};
};

// The quadrants of a frame through their tables, with the kernel given.
template <class LookUp>
auto Correct(const Ring& frames, const Ring& content, const TapTables& tables, LookUp look_up) {
    return InPlace{frames, content, [&frames, &tables, look_up](std::size_t i) {
                       for (std::size_t y = 0; y < kSide; ++y) {
                           const std::span row = std::span<std::uint16_t>(frames[i]).subspan(y * kSide, kSide);
                           const bool bottom = tables.taps == 4 && y >= kSide / 2;
                           look_up(row.first(kSide / 2), tables.lut[bottom ? 3 : 0].data(),
                                   static_cast<std::uint16_t>(tables.mask), 0xFFFF);
                           look_up(row.subspan(kSide / 2), tables.lut[bottom ? 2 : 1].data(),
                                   static_cast<std::uint16_t>(tables.mask), 0xFFFF);
                       }
                   }};
}

// Samples that have nothing to do with their neighbours.
Ring Scattered() {
    Ring ring(kRing);
    std::mt19937 random(1);
    for (Frame& frame : ring) {
        for (std::size_t i = 0; i < kSamples; ++i) frame[i] = static_cast<std::uint16_t>(random() % (1u << kBits));
    }
    return ring;
}

bool Run(Report& report) {
    namespace scalar = kernels::scalar;
    FrameBench bench(report);
    Calibration four(4), two(2);
    if (!four.Loaded() || !two.Loaded()) return false;
    const Ring scene = MakeRing(kBits), frames(kRing);
    constexpr std::size_t kBytes = kSamples * 2;

    const TapTables tables = four.balance.TablesFor(1);
    const auto translate = [&](std::size_t i) { four.balance.TranslatePixels(kSide, kSide, 4, 1, frames[i].data()); };
    const Traffic rewriting{"8 MiB in place", kBytes, kBytes, 0, true};
    bench.StageWithin(rewriting, "taps.correction", {1.0, 1.2}, 1, InPlace{frames, scene, translate},
                      Peer{"vs_scalar", {1.7, 1.7}, Correct(frames, scene, tables, scalar::LookUp)});
    const Ring scattered = Scattered();
    bench.StageWithin(rewriting, "taps.correction_scattered", {}, 1, InPlace{frames, scattered, translate},
                      Peer{"vs_scalar", {}, Correct(frames, scattered, tables, scalar::LookUp)});

    FrameGeometry geometry = GeometryOf(kBits, 2);
    geometry.readout_mhz = 40;
    Readout readout(geometry, &two.balance);
    const TapTables pair = two.balance.TablesFor(1);
    const auto correct = Correct(frames, scene, pair, scalar::LookUp);
    const auto passes = [&](std::size_t i) {
        scalar::Unpack12(scene[i].Packed(), frames[i]);
        std::array<std::uint16_t, kSide> scratch;
        for (std::size_t y = 0; y < kSide; ++y) {
            const std::span row = std::span<std::uint16_t>(frames[i]).subspan(y * kSide, kSide);
            scalar::ReorderRowTwoTaps(row, scratch);
            std::memcpy(row.data(), scratch.data(), row.size_bytes());
        }
        correct(i);
    };
    bench.StageWithin({"6 MiB to 8 MiB", kBytes / 4 * 3, kBytes}, "taps.unpack_two_taps_correction", {0.6, 0.8}, 1,
                      readout, Peer{"vs_three_passes", {0, 3}, passes});

    float gain = 0;
    const auto [time] = Medians(report.Repetitions(21), [&] { four.balance.SetGain(gain += 1); });
    report.Add({"taps.new_tables", time * 1e3, "ms", AtMost(20)});
    return true;
}

}  // namespace
}  // namespace zel::bench

int main(int argc, char** argv) {
    zel::bench::Report report(argc, argv);
    return zel::bench::Run(report) ? report.Finish() : 1;
}
