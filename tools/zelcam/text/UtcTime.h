#ifndef ZELCAM_UTCTIME_H
#define ZELCAM_UTCTIME_H

#include <chrono>
#include <string>

namespace zelcam {

// ISO 8601 with milliseconds: "2024-02-29T12:34:56.789Z".
std::string UtcText(std::chrono::system_clock::time_point time);
inline std::string UtcNow() { return UtcText(std::chrono::system_clock::now()); }

}  // namespace zelcam

#endif
