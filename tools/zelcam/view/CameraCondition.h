// What is known of the open camera at a moment, apart from its frames.
#ifndef ZELCAM_CAMERACONDITION_H
#define ZELCAM_CAMERACONDITION_H

#include <cstdint>
#include <optional>

#include "tools/zelcam/text/Json.h"

namespace zelcam {

struct CameraCondition {
    bool running = false;
    bool link_lost = false;
    std::uint64_t lost_on_link = 0;  // frames, since the start
    std::optional<double> temperature_c;
    std::optional<long long> exposure_us;
    std::optional<long long> frame_time_us;
    std::optional<long long> gain;
    Json recording;  // null: none
};

}  // namespace zelcam

#endif
