// All cameras at work for as long as one likes, with random settings, starts and stops, searches, unplugging and
// faults, in lives of the SDK of half a minute. Every moment leaves a row of figures; between two lives nothing is
// open, and what is left in memory then is what grows.
//
//     zel_soak SECONDS --folder FOLDER [--seed N] [--every SECONDS]
//
// FOLDER gets soak.csv. Ends with 0 when every frame and every record is accounted for and no thread or handle was
// left; 1 when not; 3 when a thread hangs. Ctrl-C ends it early. scripts/soak.sh draws and judges the memory.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>

#include "bench/Usage.h"
#include "bench/soak/Troublemaker.h"
#include "platform/ProcessUse.h"
#include "platform/Terminal.h"
#include "platform/UserTexts.h"

namespace zel::soak {
namespace {

std::atomic<bool> s_Interrupted{false};

// What came first of all that the cameras' libraries offer; both sides agree on the order.
std::vector<std::unique_ptr<SoakedCamera>> FindCameras(const std::string& folder, unsigned seed, SoakCounts& counts) {
    std::vector<std::unique_ptr<SoakedCamera>> cameras;
    std::map<std::string, int> numbers;
    for (const CameraInfo& info : Sdk().cameras()) {
        const bool usb = info.interface_type.starts_with("USB");
        const char* const library = usb                                    ? "zel_usb.dll"
                                    : info.interface_type == "Camera Link" ? "edt_camera_link.dll"
                                                                           : "pleora_ebus.dll";
        const SimulatedCamera simulated(library, numbers[library]++);
        const std::string picture = folder + "/camera" + info.serial;
        cameras.push_back(std::make_unique<SoakedCamera>(info, simulated, picture, ++seed * 7919, counts));
    }
    return cameras;
}

// One row each time, on a thread of its own, which also looks for others that hang.
class Sampler {
  public:
    Sampler(const std::string& file, std::chrono::milliseconds every, const SoakCounts& counts)
        : m_File(file), m_Every(every), m_Counts(counts) {
        m_File << "seconds,idle,resident_kib,own_kib,allocated_kib,threads,handles";
        for (const char* name : kCountNames) m_File << ',' << name;
        m_File << std::endl;
        m_Thread = std::thread([this] { Run(); });
    }
    ~Sampler() {
        m_End = true;
        m_Thread.join();
    }
    void Watch(const Watched& watched) {
        const std::lock_guard lock(m_Lock);
        m_Watched.push_back(&watched);
    }
    void Row(bool idle) {
        const std::lock_guard lock(m_Lock);
        const bench::Memory memory = bench::MemoryInUse();
        m_File << std::chrono::duration<double>(Clock::now() - m_Begin).count() << ',' << idle << ','
               << memory.resident_kib << ',' << memory.own_kib << ',' << memory.allocated_kib << ','
               << platform::RunningThreads() << ',' << platform::OpenHandles();
        for (const auto& count : m_Counts.of) m_File << ',' << count;
        m_File << std::endl;
    }

  private:
    // Longer than all that a fault can make an operation last.
    static constexpr auto kHang = 120s;

    void Run() {
        for (auto next = m_Begin; !m_End; std::this_thread::sleep_for(20ms)) {
            if (Clock::now() < next) continue;
            Row(false);
            LookForHangs();
            next += m_Every;
        }
    }
    void LookForHangs() {
        const std::lock_guard lock(m_Lock);
        for (const Watched* watched : m_Watched) {
            const char* const step = watched->LongerThan(kHang);
            if (!step) continue;
            std::printf("HANGS: %s, %s\n", watched->name.c_str(), step);
            std::fflush(stdout);
            std::_Exit(3);
        }
    }

    const Clock::time_point m_Begin = Clock::now();
    std::mutex m_Lock;
    std::ofstream m_File;
    std::vector<const Watched*> m_Watched;
    const std::chrono::milliseconds m_Every;
    const SoakCounts& m_Counts;
    std::atomic<bool> m_End{false};
    std::thread m_Thread;
};

// Cameras of their own size, and of sizes that many frames of fit into a second. They are made anew with each life.
void ChooseSize(std::size_t life) {
    static constexpr const char* kSizes[] = {"", "640x480", "128x96"};
    platform::SetEnvironment("ZEL_SIM_SIZE", kSizes[life % std::size(kSizes)]);
}

// Cameras and trouble from the opening of the SDK to its end.
void Live(const std::vector<std::unique_ptr<SoakedCamera>>& cameras, Troublemaker& trouble, Clock::time_point until) {
    std::atomic<bool> end{false};
    Sdk sdk;
    sdk.on_hot_plug([&sdk](const HotPlugEvent& event) {
        if (event.connected) static_cast<void>(sdk.info(event.camera.number));
    });
    std::vector<std::thread> threads;
    threads.emplace_back([&] { trouble.Run(sdk, end); });
    for (const auto& camera : cameras) threads.emplace_back([&] { camera->Run(sdk, end); });
    while (!s_Interrupted && Clock::now() < until) std::this_thread::sleep_for(50ms);
    end = true;
    for (std::thread& thread : threads) thread.join();
}

int Judge(const SoakCounts& counts, double seconds, int threads, int handles) {
    std::printf("%.0f s", seconds);
    for (std::size_t i = 0; i < kCounts; ++i) {
        std::printf(", %s %llu", kCountNames[i], static_cast<unsigned long long>(counts.of[i]));
    }
    std::printf("\nthreads left: %d, handles left: %d\n", threads, handles);
    const bool whole = counts.of[kUnaccounted] == 0 && counts.of[kMissingRecords] == 0;
    const bool worked = counts.of[kTaken] > 0;
    std::printf("%s\n", !worked                 ? "NO FRAME CAME"
                        : !whole                ? "FRAMES OR RECORDS ARE MISSING"
                        : threads + handles > 0 ? "THREADS OR HANDLES ARE LEFT"
                                                : "every frame and record is accounted for");
    return worked && whole && threads + handles <= 0 ? 0 : 1;
}

int Run(double seconds, std::map<std::string, std::string> options) {
    platform::InstallInterruptHandler([](int) { s_Interrupted = true; });
    const auto seed = static_cast<unsigned>(std::atoi(options["--seed"].c_str()));
    const double every = std::max(0.2, std::atof(options["--every"].c_str()));
    const std::string folder = options["--folder"];
    SoakCounts counts;
    const auto cameras = FindCameras(folder, seed, counts);
    Troublemaker trouble(cameras, seed, counts);
    for (const auto& camera : cameras)
        std::printf("%s%s\n", camera->name.c_str(),
                    camera->simulated.Tells() ? "" : ", which tells nothing of what it sends");
    const auto begin = Clock::now();
    const auto end = begin + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    const auto life = std::min<Clock::duration>(30s, (end - begin) / 8);
    int threads = 0, handles = 0;
    {
        Sampler sampler(folder + "/soak.csv", std::chrono::milliseconds(static_cast<int>(every * 1000)), counts);
        for (const auto& camera : cameras) sampler.Watch(*camera);
        sampler.Watch(trouble);
        for (std::size_t lives = 0; !s_Interrupted && Clock::now() < end; ++lives) {
            ChooseSize(lives);
            Live(cameras, trouble, std::min(Clock::now() + life, end));
            bench::ReturnFreeMemory();
            sampler.Row(true);
            // What the first life made for good belongs to the program.
            if (lives == 0) threads = platform::RunningThreads(), handles = platform::OpenHandles();
        }
        threads = platform::RunningThreads() - threads;
        handles = platform::OpenHandles() - handles;
    }
    return Judge(counts, std::chrono::duration<double>(Clock::now() - begin).count(), threads, handles);
}

}  // namespace
}  // namespace zel::soak

int main(int count, char** arguments) {
    std::map<std::string, std::string> options{{"--seed", "1"}, {"--every", "1"}, {"--folder", "."}};
    bool right = count % 2 == 0;
    for (int i = 2; i + 1 < count; i += 2)
        right &= options.insert_or_assign(arguments[i], arguments[i + 1]).second == false;
    const double seconds = right ? std::atof(arguments[1]) : 0;
    if (seconds > 0) return zel::soak::Run(seconds, options);
    std::fprintf(stderr, "zel_soak SECONDS --folder FOLDER [--seed N] [--every SECONDS]\n");
    return 2;
}
