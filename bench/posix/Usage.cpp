#include "bench/Usage.h"

#include <sys/resource.h>

#include <ctime>

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

}  // namespace zel::bench
