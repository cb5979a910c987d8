#include "platform/SystemClock.h"

#include <time.h>

#include <cerrno>
#include <cstdio>
#include <ctime>

#include "platform/Clock.h"

namespace zel::platform {

namespace {
timespec Now(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return now;
}
}  // namespace

std::uint32_t SystemMilliseconds() {
    const timespec now = Now(CLOCK_MONOTONIC);
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(now.tv_sec) * 1000 +
                                      static_cast<std::uint64_t>(now.tv_nsec) / 1000000);
}

void SystemSleep(std::uint32_t milliseconds) {
    timespec left{static_cast<time_t>(milliseconds / 1000), static_cast<long>(milliseconds % 1000) * 1000000};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

// Sleeps and clocks have their full resolution at all times here.
void SystemRaiseTimerResolution() {}
void SystemRestoreTimerResolution() {}

bool PerformanceFrequency(std::int64_t& ticks_per_second) {
    ticks_per_second = 1000000000;
    return true;
}

bool PerformanceCounter(std::int64_t& ticks) {
    const timespec now = Now(CLOCK_MONOTONIC);
    ticks = static_cast<std::int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
    return true;
}

std::string TimeOfDay() {
    const timespec now = Now(CLOCK_REALTIME);
    tm utc{};
    gmtime_r(&now.tv_sec, &utc);
    char text[48];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d.%03ld", utc.tm_hour, utc.tm_min, utc.tm_sec,
                  now.tv_nsec / 1000000);
    return text;
}

}  // namespace zel::platform
