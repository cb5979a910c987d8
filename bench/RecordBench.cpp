// Recordings: frames to the disk beside plain writes of the same bytes, and compressed frames beside what tifffile
// makes of them.
//
//   --folder FOLDER   on the disk that is measured; default: the present one
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "bench/Figure.h"
#include "record/RecordingWriter.h"

namespace {

namespace fs = std::filesystem;
using zel::bench::AtLeast;
using zel::bench::Medians;
using zel::bench::Report;
using zel::record::Compression;
using zel::record::RecordingFacts;
using zel::record::RecordingWriter;

using Frame = std::vector<std::uint16_t>;

// 14 bits: a slope of light with the noise of its photons and of the readout.
Frame AnyFrame(const RecordingFacts& facts, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> noise;
    Frame frame(std::size_t{facts.width} * facts.height);
    for (std::size_t i = 0; i < frame.size(); ++i) {
        const double light = 500.0 + 6000.0 * static_cast<double>(i % facts.width) / facts.width;
        frame[i] = static_cast<std::uint16_t>(light + noise(random) * std::sqrt(light / 4.0 + 9.0));
    }
    return frame;
}

template <class Job>
double WallSeconds(Job&& job) {
    const auto start = std::chrono::steady_clock::now();
    job();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void MustBe(bool good, const char* what) {
    if (good) return;
    std::perror(what);
    std::exit(1);
}

// Until it is on the disk.
void Settle(const fs::path& path) {
    const int file = open(path.c_str(), O_RDONLY);
    MustBe(file >= 0 && fdatasync(file) == 0 && close(file) == 0, "fdatasync");
}

void Disk(Report& report, const RecordingFacts& facts, const std::vector<Frame>& frames, std::size_t count) {
    const fs::path folder = report.Option("--folder", ".");
    const fs::path plain = folder / "record_bench.plain", recorded = folder / "record_bench.ome.tif";
    const auto write_plain = [&] {
        fs::remove(plain);
        return WallSeconds([&] {
            const int file = open(plain.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
            for (std::size_t i = 0; i < count; ++i) {
                const Frame& frame = frames[i % frames.size()];
                const auto bytes = static_cast<ssize_t>(frame.size() * 2);
                MustBe(write(file, frame.data(), static_cast<std::size_t>(bytes)) == bytes, "write");
            }
            close(file);
            Settle(plain);
        });
    };
    const auto record = [&] {
        fs::remove(recorded);
        return WallSeconds([&] {
            RecordingWriter writer(recorded, facts, {Compression::kNone, count * (frames[0].size() * 2 + 4096)});
            for (std::size_t i = 0; i < count; ++i) writer.Add(frames[i % frames.size()], {});
            writer.Finish({});
            Settle(recorded);
        });
    };
    const auto [plain_s, record_s] = Medians(report.Repetitions(7), write_plain, record);
    const double megabytes = static_cast<double>(count * frames[0].size() * 2) / 1e6;
    fs::remove(plain);
    fs::remove(recorded);
    report.Add({"record.speed", megabytes / record_s, "MB/s"});
    report.Add({"record.plain_write_speed", megabytes / plain_s, "MB/s"});
    report.Add({"record.vs_plain_write", plain_s / record_s, "x", AtLeast(0.95)});
}

// Of tifffile, in megabytes a second and in shares of the samples; zeros where it is not installed.
struct Peer {
    double speed = 0.0;
    double size = 0.0;
};
Peer TifffilesOwn(const RecordingFacts& facts, const Frame& frame) {
    const char* const name = "record_bench.samples";
    std::ofstream(name, std::ios::binary)
        .write(reinterpret_cast<const char*>(frame.data()), static_cast<std::streamsize>(frame.size() * 2));
    const std::string command = std::string(ZEL_PYTHON " " ZEL_PEER_FILE " ") + name + " " +
                                std::to_string(facts.width) + " " + std::to_string(facts.height) + " 2>/dev/null";
    Peer peer;
    if (std::FILE* const answer = popen(command.c_str(), "r")) {
        if (std::fscanf(answer, "%lf %lf", &peer.speed, &peer.size) != 2) peer = {};
        pclose(answer);
    }
    fs::remove(name);
    return peer;
}

void Compressed(Report& report, const RecordingFacts& facts, const Frame& frame) {
    const double bytes = static_cast<double>(frame.size() * 2);
    zel::record::StripEncoder deflate(facts, Compression::kDeflate), zstd(facts, Compression::kZstd);
    double deflate_size = 0.0, zstd_size = 0.0;
    const auto [deflate_s, zstd_s] = Medians(
        report.Repetitions(7), [&] { deflate_size = static_cast<double>(deflate.Encode(frame).size()); },
        [&] { zstd_size = static_cast<double>(zstd.Encode(frame).size()); });
    report.Add({"record.deflate_speed", bytes / 1e6 / deflate_s, "MB/s"});
    report.Add({"record.deflate_size", deflate_size / bytes, "of samples"});
    report.Add({"record.zstd_speed", bytes / 1e6 / zstd_s, "MB/s"});
    report.Add({"record.zstd_size", zstd_size / bytes, "of samples"});
    const Peer peer = TifffilesOwn(facts, frame);
    if (peer.speed <= 0.0) return;
    report.Add({"record.deflate_vs_tifffile", (bytes / 1e6 / deflate_s) * (1.0 / peer.speed), "x"});
    report.Add({"record.deflate_size_vs_tifffile", deflate_size / bytes / peer.size, "x"});
}

}  // namespace

int main(int argc, char** argv) {
    Report report(argc, argv);
    RecordingFacts facts;
    facts.width = facts.height = report.DryRun() ? 64 : 2048;
    facts.bits = 14;
    const std::vector<Frame> frames{AnyFrame(facts, 1), AnyFrame(facts, 2)};
    Disk(report, facts, frames, report.DryRun() ? 2 : 48);
    Compressed(report, facts, frames[0]);
    return report.Finish();
}
