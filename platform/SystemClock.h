// The system's own clock, behind the replaceable one of Clock.h.
#ifndef PLATFORM_SYSTEMCLOCK_H
#define PLATFORM_SYSTEMCLOCK_H

#include <cstdint>

namespace zel::platform {

std::uint32_t SystemMilliseconds();
void SystemSleep(std::uint32_t milliseconds);
void SystemRaiseTimerResolution();
void SystemRestoreTimerResolution();

}  // namespace zel::platform

#endif
