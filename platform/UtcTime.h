// Moments by the clock on the wall, as text.
#ifndef PLATFORM_UTCTIME_H
#define PLATFORM_UTCTIME_H

#include <chrono>
#include <string>

namespace zel::platform {

// ISO 8601 with milliseconds: "2024-02-29T12:34:56.789Z".
std::string UtcText(std::chrono::system_clock::time_point time);

}  // namespace zel::platform

#endif
