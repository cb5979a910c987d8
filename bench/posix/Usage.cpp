#include "bench/Usage.h"

#include <malloc.h>
#include <sys/resource.h>

#include <ctime>
#include <fstream>
#include <string>

namespace zel::bench {

namespace {
double Seconds(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}
}  // namespace

double ThreadSeconds() { return Seconds(CLOCK_THREAD_CPUTIME_ID); }
double ProcessorSeconds() { return Seconds(CLOCK_PROCESS_CPUTIME_ID); }

long PageFaults() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

Memory MemoryInUse() {
    Memory memory;
    std::ifstream file("/proc/self/smaps_rollup");
    std::string line;
    std::getline(file, line);
    for (long kib = 0; file >> line >> kib; file.ignore(80, '\n')) {
        if (line == "Rss:") memory.resident_kib = kib;
        if (line.starts_with("Private_")) memory.own_kib += kib;
    }
    const auto heap = mallinfo2();
    memory.allocated_kib = static_cast<double>(heap.uordblks + heap.hblkhd) / 1024;
    return memory;
}
void ReturnFreeMemory() { malloc_trim(0); }

}  // namespace zel::bench
