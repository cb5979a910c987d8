// Saving frames: TIFF beside a plain fwrite of the same bytes to the same folder, PNG beside libpng and stb.
//
//   --folder FOLDER   where the files are written; default: memory-backed where there is such a folder
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/Figure.h"
#include "bench/PngPeers.h"
#include "include/ZelImage.h"
#include "util/ZelUtilImpl.h"

namespace {

using namespace zel::bench;
using Samples = std::vector<std::uint16_t>;

// A bright even field with shot noise, in 16-bit counts.
Samples NoisyFrame(unsigned side) {
    std::mt19937 random(1);
    std::normal_distribution<float> noise(30000.0f, 2500.0f);
    Samples samples(std::size_t{side} * side);
    for (std::uint16_t& sample : samples) sample = static_cast<std::uint16_t>(noise(random));
    return samples;
}

// A clean picture: soft waves in 12-bit counts.
Samples SmoothFrame(unsigned side) {
    Samples samples(std::size_t{side} * side);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double x = static_cast<double>(i % side), y = static_cast<double>(i / side);
        samples[i] = static_cast<std::uint16_t>(2000 + 900 * std::sin(x / 90) + 900 * std::cos(y / 70));
    }
    return samples;
}

class FileBench {
  public:
    FileBench(Report& report, const std::string& folder)
        : m_Report(report), m_Side(report.DryRun() ? 64 : 2048), m_Name(folder + "/zel_file_bench.out") {
        m_Image.w = m_Image.h = m_Side;
        m_Image.bytes_per_pixel = 2;
    }
    ~FileBench() { std::remove(m_Name.c_str()); }

    void Tiff(Samples samples) {
        m_Image.pixels = samples.data();
        const std::size_t pixel_bytes = samples.size() * 2;
        std::vector<unsigned char> whole(198 + pixel_bytes);
        const auto [ours, plain] = Medians(
            m_Report.Repetitions(41), [&] { Expect(zel::UtilInstance()->SaveTIFF(Name(), &m_Image)); },
            [&] { Expect(PlainWrite(whole)); });
        m_Report.Add({"file.tiff_vs_fwrite", plain / ours, "x", AtLeast(0.8)});
        m_Report.Add({"file.tiff_speed", static_cast<double>(pixel_bytes) / ours / 1e6, "MB/s"});
    }

    void Png(const std::string& kind, Samples samples, Target libpng_target, Target stb_target) {
        m_Image.pixels = samples.data();
        double ours_size = 0, libpng_size = 0, stb_size = 0;
        const auto [ours, libpng, stb] = Medians(
            m_Report.Repetitions(5),
            [&] {
                Expect(zel::UtilInstance()->SavePNG(Name(), &m_Image));
                ours_size = Size();
            },
            [&] {
                Expect(SaveWithLibpng(Name(), samples, m_Side, m_Side));
                libpng_size = Size();
            },
            [&] {
                Expect(SaveWithStb(Name(), samples, m_Side, m_Side));
                stb_size = Size();
            });
        const double pixel_bytes = static_cast<double>(samples.size()) * 2;
        m_Report.Add({"file.png_" + kind + "_vs_libpng", libpng / ours, "x", libpng_target});
        m_Report.Add({"file.png_" + kind + "_vs_stb", stb / ours, "x", stb_target});
        m_Report.Add({"file.png_" + kind + "_size_vs_stb", ours_size / stb_size, "x", AtMost(1.0)});
        m_Report.Add({"file.png_" + kind + "_size_vs_libpng", ours_size / libpng_size, "x"});
        m_Report.Add({"file.png_" + kind + "_size", ours_size / pixel_bytes, "of pixels"});
        m_Report.Add({"file.png_" + kind + "_speed", pixel_bytes / ours / 1e6, "MB/s"});
    }

    bool Failed() const { return m_Failed; }

  private:
    const char* Name() const { return m_Name.c_str(); }
    double Size() const { return static_cast<double>(std::filesystem::file_size(m_Name)); }
    void Expect(bool written) { m_Failed = m_Failed || !written; }
    bool PlainWrite(const std::vector<unsigned char>& bytes) {
        std::FILE* const file = std::fopen(Name(), "wb");
        if (!file) return false;
        const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
        return std::fclose(file) == 0 && written;
    }

    Report& m_Report;
    const unsigned m_Side;
    const std::string m_Name;
    ZelColorImage m_Image{};
    bool m_Failed = false;
};

}  // namespace

int main(int argc, char** argv) {
    Report report(argc, argv);
    const bool in_memory = std::filesystem::is_directory("/dev/shm");
    FileBench bench(report, report.Option("--folder", in_memory ? "/dev/shm" : "/tmp"));
    const unsigned side = report.DryRun() ? 64 : 2048;
    bench.Tiff(NoisyFrame(side));
    bench.Png("noise", NoisyFrame(side), AtLeast(2.3), AtLeast(5));
    bench.Png("smooth", SmoothFrame(side), Target{}, AtLeast(5));
    if (bench.Failed()) {
        std::fputs("a file could not be written\n", stderr);
        return 1;
    }
    return report.Finish();
}
