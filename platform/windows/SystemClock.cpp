#include "platform/SystemClock.h"

#include <windows.h>

#include <mmsystem.h>

#include <cstdio>

#include "platform/Clock.h"

namespace zel::platform {

std::uint32_t SystemMilliseconds() { return timeGetTime(); }
void SystemSleep(std::uint32_t milliseconds) { Sleep(milliseconds); }
void SystemRaiseTimerResolution() { timeBeginPeriod(1); }
void SystemRestoreTimerResolution() { timeEndPeriod(1); }

bool PerformanceFrequency(std::int64_t& ticks_per_second) {
    LARGE_INTEGER value;
    if (!QueryPerformanceFrequency(&value)) return false;
    ticks_per_second = value.QuadPart;
    return true;
}

bool PerformanceCounter(std::int64_t& ticks) {
    LARGE_INTEGER value;
    if (!QueryPerformanceCounter(&value)) return false;
    ticks = value.QuadPart;
    return true;
}

std::string TimeOfDay() {
    SYSTEMTIME now;
    GetSystemTime(&now);
    char text[48];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d.%03d", now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
    return text;
}

}  // namespace zel::platform
