// The replaceable part of the clock; what the system provides stands in SystemClock.
#include "platform/Clock.h"

#include <atomic>

#include "platform/SystemClock.h"

namespace zel::platform {

namespace {
std::atomic<ClockSource*> s_Source{nullptr};
std::atomic<int> s_Resolutions{0};
}  // namespace

std::uint32_t MillisecondClock() {
    ClockSource* source = s_Source.load(std::memory_order_acquire);
    return source ? source->Milliseconds() : SystemMilliseconds();
}

void SleepMilliseconds(std::uint32_t milliseconds) {
    if (ClockSource* source = s_Source.load(std::memory_order_acquire)) return source->Sleep(milliseconds);
    SystemSleep(milliseconds);
}

void SetClockSource(ClockSource* source) { s_Source.store(source, std::memory_order_release); }

TimerResolution::TimerResolution() {
    ++s_Resolutions;
    SystemRaiseTimerResolution();
}

TimerResolution::~TimerResolution() {
    SystemRestoreTimerResolution();
    --s_Resolutions;
}

int TimerResolution::LiveCount() { return s_Resolutions; }

}  // namespace zel::platform
