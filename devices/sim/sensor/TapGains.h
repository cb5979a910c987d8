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

// What a tap makes of the samples that an even one would give.
struct TapMap {
    static constexpr int kWindow = 256;

    const std::uint16_t* entries = nullptr;  // sample -> sample; null: the same
    // The lowest eight bits of entry - sample. Within a window of samples that begins below `windows` the difference
    // changes by less than 128, so these bits are all that is new about it.
    const std::uint8_t* beyond = nullptr;
    int windows = 0;
};

class TapGains {
  public:
    // Of samples of `bits` bits. False without memory. A readout through one tap, or without calibration, is even.
    bool Build(const CalibrationData& data, const TapReadout& readout, int bits) noexcept;

    // The largest sample that a map takes. A tap of low gain reaches the converter's end later than one of gain 1, so
    // it lies above.
    unsigned Ceiling() const { return m_Ceiling; }
    // Of the tap that reads a half of a row, for samples 0 to Ceiling(). h: rows of the sensor.
    const TapMap& Map(unsigned row, unsigned h, bool right) const;

  private:
    struct Tables {
        std::vector<std::uint16_t> entries;
        std::vector<std::uint8_t> beyond;
    };
    std::array<Tables, 4> m_Tables;
    std::array<TapMap, 4> m_Maps{};
    int m_Taps = 1;
    unsigned m_Ceiling = 0;
};

}  // namespace zel::sim

#endif
