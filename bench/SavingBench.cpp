// What a user of the tool gets: pictures saved by `zelcam capture` at the pace of a real camera, and how fast cameras
// without a pace of their own run in `zelcam stream`. Each row is a process of its own. Processor time of a frame is
// the simulated camera's, too; it is the difference of a long and a short run, so that the program's start is not in
// it.
//
//   --folder FOLDER   where pictures are written; default: memory-backed where there is such a folder
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "bench/Figure.h"

namespace {

using nlohmann::json;
using zel::bench::AtLeast;
using zel::bench::AtMost;
using zel::bench::Report;
using zel::bench::Target;

// The tool's answer, and the processor time that it took; no object when it failed.
struct Answer {
    json report;
    double seconds = 0;

    double Number(const char* name) const {
        const auto at = report.find(name);
        return at != report.end() && at->is_number() ? at->get<double>() : 0;
    }
    double Lost(const char* cause) const { return report.at("dropped").at(cause).get<double>(); }
};

double ChildSeconds() {
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    const auto of = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return of(usage.ru_utime) + of(usage.ru_stime);
}

Answer Zelcam(const std::string& environment, const std::string& arguments) {
    const double before = ChildSeconds();
    const std::string command = environment + " " + ZEL_TOOL_FILE + " " + arguments + " --json";
    std::string text;
    std::FILE* const pipe = popen(command.c_str(), "r");
    if (!pipe) return {};
    char part[4096];
    while (const std::size_t count = std::fread(part, 1, sizeof part, pipe)) text.append(part, count);
    pclose(pipe);
    return {json::parse(text, nullptr, false), ChildSeconds() - before};
}

class SavingBench {
  public:
    SavingBench(Report& report, const std::string& folder)
        : m_Report(report), m_Folder(folder + "/zel_saving_bench." + std::to_string(getpid())) {
        std::filesystem::create_directories(m_Folder);
    }
    ~SavingBench() { std::filesystem::remove_all(m_Folder); }
    SavingBench(const SavingBench&) = delete;
    SavingBench& operator=(const SavingBench&) = delete;

    // `options` of zelcam capture.
    bool Capture(const std::string& name, const std::string& options) {
        const Runs runs = Measure("", "capture --overwrite --allow-loss --out " + m_Folder + " " + options, 50);
        if (!runs.right) return false;
        const std::string prefix = "capture." + name + ".";
        m_Report.Add({prefix + "rate", runs.last.Number("saved_frames_per_second"), "frames/s"});
        m_Report.Add({prefix + "lost_on_link", runs.last.Lost("link"), "frames", AtMost(0)});
        m_Report.Add({prefix + "no_free_buffer", runs.last.Lost("no_free_buffer"), "frames", AtMost(0)});
        m_Report.Add({prefix + "processor", runs.frame_ms, "ms/frame"});
        return true;
    }

    // A camera without a pace, which the simulator (noise) or the application's side (static frames) keeps up with.
    // `most_ms`: processor time of a frame, by which one core gives the rate that is asked for; 0: none.
    bool Unpaced(const std::string& name, const std::string& environment, const std::string& options, double most_ms) {
        const Runs runs = Measure("ZEL_SIM_PACE=none " + environment, "stream " + options, 400);
        if (!runs.right) return false;
        m_Report.Add({"unpaced." + name + ".rate", runs.last.Number("frames_per_second"), "frames/s"});
        m_Report.Add(
            {"unpaced." + name + ".processor", runs.frame_ms, "ms/frame", most_ms > 0 ? AtMost(most_ms) : Target{}});
        return true;
    }

    // TIFF files as fast as they come beside plain files of the same bytes in the same folder.
    bool Disk() {
        const int frames = m_Report.DryRun() ? 2 : 60;
        std::vector<double> tiff, plain;
        for (int i = 0; i < m_Report.Repetitions(3); ++i) {
            const Answer answer = Zelcam("ZEL_SIM_PACE=none ZEL_SIM_FILL=static",
                                         "capture -c 0 --overwrite --allow-loss --format tiff -n " +
                                             std::to_string(frames) + " --out " + m_Folder);
            if (answer.Number("frames") != frames) return false;
            tiff.push_back(answer.Number("saved_frames_per_second"));
            plain.push_back(PlainFiles(frames));
        }
        const zel::bench::Quantity of_disk = zel::bench::Quantity(tiff) / zel::bench::Quantity(plain);
        m_Report.Add({"capture.tiff_unpaced.of_plain_files", of_disk, "x", AtLeast(0.95)});
        m_Report.Add({"capture.tiff_unpaced.rate", zel::bench::Quantity(tiff), "frames/s"});
        return true;
    }

  private:
    struct Runs {
        bool right = false;
        Answer last{};
        double frame_ms = 0;
    };

    Runs Measure(const std::string& environment, const std::string& arguments, int normal) const {
        constexpr int kShort = 2;
        const int frames = m_Report.DryRun() ? kShort + 1 : normal;
        const Answer start = Zelcam(environment, arguments + " -n " + std::to_string(kShort));
        const Answer answer = Zelcam(environment, arguments + " -n " + std::to_string(frames));
        return {start.Number("frames") == kShort && answer.Number("frames") == frames, answer,
                (answer.seconds - start.seconds) / (frames - kShort) * 1e3};
    }

    double PlainFiles(int frames) const {
        const std::string bytes(std::size_t{2048} * 2048 * 2, 'x');
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < frames; ++i) {
            std::ofstream(m_Folder + "/plain" + std::to_string(i), std::ios::binary) << bytes;
        }
        return frames / std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

    Report& m_Report;
    const std::string m_Folder;
};

}  // namespace

int main(int argc, char** argv) {
    Report report(argc, argv);
    SavingBench bench(report,
                      report.Option("--folder", std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "/tmp"));
    bool right = true;
    for (const char* camera : {"0", "1", "2", "3"}) {
        for (const char* format : {"tiff", "png"}) {
            right = bench.Capture(std::string("camera") + camera + "_" + format,
                                  std::string("-c ") + camera + " --format " + format) &&
                    right;
        }
    }
    right = bench.Capture("camera2_color_16", "-c 2 --color --format 16") && right;
    right = bench.Capture("camera2_color_8", "-c 2 --color --format 8") && right;
    right = bench.Disk() && right;
    // 200 frames/s of 4 MPix with noise, and 100 of 4 MPix in color, on one core.
    right = bench.Unpaced("camera0_noise", "", "-c 0", 5) && right;
    right =
        bench.Unpaced("camera2_color_4mpix", "ZEL_SIM_SIZE=2048x2048 ZEL_SIM_FILL=static", "-c 2 --color", 10) && right;
    if (!right) std::fputs("a run of the tool failed\n", stderr);
    return right ? report.Finish() : 1;
}
