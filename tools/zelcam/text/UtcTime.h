#ifndef ZELCAM_UTCTIME_H
#define ZELCAM_UTCTIME_H

#include "platform/UtcTime.h"

namespace zelcam {

using zel::platform::UtcText;
inline std::string UtcNow() { return UtcText(std::chrono::system_clock::now()); }

}  // namespace zelcam

#endif
