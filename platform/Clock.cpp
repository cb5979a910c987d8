// The replaceable part of the clock; what the system provides stands in SystemClock.
#include "platform/Clock.h"

#include <atomic>

#include "platform/SystemClock.h"

namespace zel::platform {

namespace {
std::atomic<ClockSource*> g_Source{nullptr};
std::atomic<int> g_Resolutions{0};
}  // namespace

std::uint32_t MillisecondClock() {
    ClockSource* source = g_Source.load(std::memory_order_acquire);
    return source ? source->Milliseconds() : SystemMilliseconds();
}

void SleepMilliseconds(std::uint32_t milliseconds) {
    if (ClockSource* source = g_Source.load(std::memory_order_acquire)) return source->Sleep(milliseconds);
    SystemSleep(milliseconds);
}

void SetClockSource(ClockSource* source) { g_Source.store(source, std::memory_order_release); }

TimerResolution::TimerResolution() {
    ++g_Resolutions;
    SystemRaiseTimerResolution();
}

TimerResolution::~TimerResolution() {
    SystemRestoreTimerResolution();
    --g_Resolutions;
}

int TimerResolution::LiveCount() { return g_Resolutions; }

}  // namespace zel::platform
