// What the output amplifiers of a multi-tap sensor make of a picture: each tap reads a part of the sensor with a gain
// of its own, which depends on the signal level as the camera's calibration says.
//
//    2 taps   1 | 2        4 taps   1 | 2
//                                   --+--
//                                   4 | 3
#ifndef SIM_TAPGAINS_H
#define SIM_TAPGAINS_H

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "devices/sim/sensor/CalibrationData.h"

namespace zel::sim {

// How a frame is read out.
struct TapReadout {
    int taps = 1;
    int clock_mhz = 20;
    double vga_gain = 0.0;  // steps of 0.0358 dB over 5.5 dB

    bool operator==(const TapReadout&) const = default;
};

class TapGains {
  public:
    // Of samples of `bits` bits. False without memory. A readout through one tap, or without calibration, is even.
    bool Build(const CalibrationData& data, const TapReadout& readout, int bits) noexcept;

    bool Even() const { return m_Maps[0].empty(); }
    // The largest sample that Apply takes. A tap of low gain reaches the converter's end later than one of gain 1, so
    // it lies above.
    unsigned Ceiling() const { return m_Ceiling; }
    // Turns the samples that even taps would give into those that these taps give; `image` has rows of w samples.
    void Apply(std::span<std::uint16_t> image, unsigned w, unsigned h) const;

  private:
    std::array<std::vector<std::uint16_t>, 4> m_Maps;  // per tap: even sample -> sample
    int m_Taps = 1;
    unsigned m_Ceiling = 0;
};

}  // namespace zel::sim

#endif
