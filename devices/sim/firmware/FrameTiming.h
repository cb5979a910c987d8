// How long a frame takes, from the size of the sensor, its readout channels and the pixel clock.
#ifndef SIM_FRAMETIMING_H
#define SIM_FRAMETIMING_H

#include <algorithm>
#include <cstdint>

namespace zel::sim {

struct FrameTiming {
    std::int64_t exposure_us = 0;
    std::int64_t readout_us = 0;

    // Free running, one frame is exposed while the one before is read out.
    std::int64_t Period() const { return std::max(exposure_us, readout_us); }
};

// Each tap reads its part of every line, and with four taps two lines are read at a time. A line costs its pixels and
// the blanking, in pixel clocks.
inline std::int64_t ReadoutMicroseconds(unsigned width, unsigned height, int taps, int clock_mhz) {
    constexpr std::int64_t kBlanking = 48;
    const std::int64_t columns = taps >= 2 ? (width + 1) / 2 : width;
    const std::int64_t lines = taps >= 4 ? (height + 1) / 2 : height;
    return (lines * (columns + kBlanking) + clock_mhz - 1) / clock_mhz;
}

}  // namespace zel::sim

#endif
