// Saving frames: TIFF beside a plain fwrite of the same bytes to the same folder, PNG beside libpng, stb and memcpy;
// what the tool's files take before they are written.
//
//   --folder FOLDER   where the files are written; default: memory-backed where there is such a folder
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench/Figure.h"
#include "bench/PngPeers.h"
#include "devices/sim/sensor/CameraModel.h"
#include "devices/sim/sensor/Sensor.h"
#include "include/ZelImage.h"
#include "link/ICameraInterface.h"
#include "util/PngWriter.h"
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

struct CameraFrame {
    unsigned width, height;
    Samples samples;
};

// What a simulated camera sees as it is delivered, its noise in it.
CameraFrame FrameOf(const zel::sim::CameraModel& camera, bool small, std::uint64_t number = 1) {
    zel::sim::SensorModel model;
    model.width = small ? 64 : camera.width;
    model.height = small ? 48 : camera.height;
    model.bits = camera.bits;
    model.cfa_phase = camera.cfa_phase;
    zel::sim::Sensor sensor(model);
    zel::sim::SensorSettings settings;
    settings.exposure_us = 30000.0;
    CameraFrame frame{model.width, model.height, Samples(std::size_t{model.width} * model.height)};
    sensor.Render(settings, zel::sim::SensorFill::kNoise, number, frame.samples);
    return frame;
}

// Three frames of a camera as the channels of a picture: they show the same, each with noise of its own.
Samples ColorOf(const zel::sim::CameraModel& camera, bool small) {
    Samples color;
    const Samples channels[] = {FrameOf(camera, small, 1).samples, FrameOf(camera, small, 2).samples,
                                FrameOf(camera, small, 3).samples};
    for (std::size_t i = 0; i < channels[0].size(); ++i) {
        for (const Samples& channel : channels) color.push_back(static_cast<std::uint16_t>(channel[i] << 2));
    }
    return color;
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

    void Png(const std::string& kind, Samples samples, Target libpng_target, Target stb_target, Target speed_target) {
        m_Image.w = m_Image.h = m_Side;
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
        m_Report.Add({"file.png_" + kind + "_speed", pixel_bytes / ours / 1e6, "MB/s", speed_target});
    }

    // The SDK's file of a camera's frame, and the tool's before it is written.
    void CameraPng(const std::string& kind, CameraFrame frame) {
        m_Image.w = frame.width;
        m_Image.h = frame.height;
        m_Image.pixels = frame.samples.data();
        const zel::PngPicture picture{zel::PngFormat::kGrey16, frame.width, frame.height, m_Image.pixels};
        zel::PngWriter writer(zel::PngFilters::kChosen);
        Samples copy(frame.samples.size());
        double size = 0, tool_size = 0;
        const auto [ours, tool, libpng, plain] = Medians(
            m_Report.Repetitions(7),
            [&] {
                Expect(zel::UtilInstance()->SavePNG(Name(), &m_Image));
                size = Size();
            },
            [&] { tool_size = static_cast<double>(writer.Encode(picture).size()); },
            [&] { Expect(SaveWithLibpng(Name(), frame.samples, frame.width, frame.height)); },
            [&] {
                copy = frame.samples;
                Keep(copy[0]);
            });
        const double pixel_bytes = static_cast<double>(frame.samples.size()) * 2;
        m_Report.Add({"file.png_" + kind + "_speed", pixel_bytes / ours / 1e6, "MB/s", AtLeast(500)});
        m_Report.Add({"file.png_" + kind + "_vs_libpng", libpng / ours, "x"});
        m_Report.Add({"file.png_" + kind + "_vs_memcpy", plain / ours, "x"});
        m_Report.Add({"file.png_" + kind + "_size_vs_level1", size / LevelOneSize(picture), "x", AtMost(1.1)});
        m_Report.Add({"file.png_" + kind + "_size", size / pixel_bytes, "of pixels"});
        m_Report.Add({"file.png_" + kind + "_filtered_ms", tool * 1e3, "ms"});
        m_Report.Add({"file.png_" + kind + "_filtered_size", tool_size / pixel_bytes, "of pixels"});
    }

    // A color picture of the tool's before it is written.
    void ColorPng(const std::string& kind, zel::PngPicture picture) {
        zel::PngWriter writer(zel::PngFilters::kChosen);
        const auto pixel_bytes = static_cast<std::size_t>(picture.BytesPerRow() * picture.height);
        std::vector<char> copy(pixel_bytes);
        double size = 0;
        const auto [ours, plain] = Medians(
            m_Report.Repetitions(9), [&] { size = static_cast<double>(writer.Encode(picture).size()); },
            [&] {
                std::memcpy(copy.data(), picture.pixels, pixel_bytes);
                Keep(copy[0]);
            });
        Expect(size > 0);
        m_Report.Add({"file.png_" + kind + "_ms", ours * 1e3, "ms"});
        m_Report.Add({"file.png_" + kind + "_vs_memcpy", plain / ours, "x"});
        m_Report.Add({"file.png_" + kind + "_size", size / static_cast<double>(pixel_bytes), "of pixels"});
    }

    bool Failed() const { return m_Failed; }

  private:
    const char* Name() const { return m_Name.c_str(); }
    // What libdeflate's level 1 makes of the same rows.
    static double LevelOneSize(const zel::PngPicture& picture) {
        std::vector<std::uint8_t> rows(static_cast<std::size_t>(zel::PngRowSize(picture) * picture.height));
        zel::MakePngRows(picture, 0, picture.height, zel::PngFilter::kNone, rows);
        std::vector<std::uint8_t> stream(zel::ZlibStreamBound(rows.size()));
        return static_cast<double>(zel::Deflate().Compress(rows, stream));
    }
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
    bench.Png("noise", NoisyFrame(side), AtLeast(2.3), AtLeast(5), AtLeast(600));
    bench.Png("smooth", SmoothFrame(side), Target{}, AtLeast(5), Target{});
    const std::pair<const char*, zel::sim::CameraModel> cameras[] = {
        {"camera_link", zel::sim::ModelOfLink(CAMERA_TYPE_EDT_CAMERA_LINK, 0)},
        {"ebus", zel::sim::ModelOfLink(CAMERA_TYPE_PLEORA_EBUS, 0)},
        {"usb_mosaic", zel::sim::ModelOfLink(CAMERA_TYPE_USB, 0)},
        {"usb_mono", zel::sim::ModelOfLink(CAMERA_TYPE_USB, 1)}};
    for (const auto& [kind, camera] : cameras) bench.CameraPng(kind, FrameOf(camera, report.DryRun()));
    const zel::sim::CameraModel& mono = cameras[3].second;
    const Samples color = ColorOf(mono, report.DryRun());
    std::vector<std::uint8_t> narrow;
    for (const std::uint16_t sample : color) narrow.push_back(static_cast<std::uint8_t>(sample >> 8));
    const unsigned width = report.DryRun() ? 64 : mono.width, height = report.DryRun() ? 48 : mono.height;
    bench.ColorPng("color16", {zel::PngFormat::kRgb16, width, height, color.data()});
    bench.ColorPng("color8", {zel::PngFormat::kRgb8, width, height, narrow.data()});
    if (bench.Failed()) {
        std::fputs("a file could not be written\n", stderr);
        return 1;
    }
    return report.Finish();
}
