// Time: a millisecond clock, sleeping, and the performance counter. The clock can be replaced in tests, so that a
// budget of five seconds costs none.
#ifndef PLATFORM_CLOCK_H
#define PLATFORM_CLOCK_H

#include <cstdint>
#include <string>

namespace zel::platform {

class ClockSource {
  public:
    virtual ~ClockSource() = default;
    virtual std::uint32_t Milliseconds() = 0;
    virtual void Sleep(std::uint32_t milliseconds) = 0;
};

// Milliseconds modulo 2^32 of a clock that never goes back.
std::uint32_t MillisecondClock();

// Blocks the calling thread.
void SleepMilliseconds(std::uint32_t milliseconds);

// Replaces the clock behind MillisecondClock and SleepMilliseconds for the whole process; null takes the system's
// again. For tests.
void SetClockSource(ClockSource* source);

// While one of these lives the millisecond clock and sleeps have a resolution of 1 ms.
class TimerResolution {
  public:
    TimerResolution();
    ~TimerResolution();
    TimerResolution(const TimerResolution&) = delete;
    TimerResolution& operator=(const TimerResolution&) = delete;

    // How many live now, in the whole process. For tests: 0 means that every raise was taken back.
    static int LiveCount();
};

// Ticks per second of the performance counter, and its reading. False when the system has none.
bool PerformanceFrequency(std::int64_t& ticks_per_second);
bool PerformanceCounter(std::int64_t& ticks);

// Time of day, UTC: "hh:mm:ss.mmm".
std::string TimeOfDay();

}  // namespace zel::platform

#endif
