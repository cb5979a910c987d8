// What a camera's frames are made of: a sensor renders them, a recording has them.
#ifndef SIM_FRAMESOURCE_H
#define SIM_FRAMESOURCE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "devices/sim/sensor/TapGains.h"

namespace zel::sim {

// What the camera's registers say at the time of a frame.
struct SensorSettings {
    double exposure_us = 10000.0;
    double gain = 0.0;          // VGA steps of 0.0358 dB over a base gain of 5.5 dB
    double black_level = 64.0;  // counts
    double temperature = 25.0;  // degrees Celsius
    TapReadout readout{};

    bool operator==(const SensorSettings&) const = default;
};

// How much work a frame costs.
enum class SensorFill {
    kNoise,   // the full model, every frame different
    kStatic,  // one frame of the full model, repeated, its number written into the first samples
    kNone     // only the frame number is written; the rest of the buffer stays as it is
};

// One thread at a time.
class FrameSource {
  public:
    virtual ~FrameSource() = default;

    virtual unsigned Width() const = 0;
    virtual unsigned Height() const = 0;

    // Does what would hold the first frame up.
    virtual void Prepare(const SensorSettings& settings, SensorFill fill) = 0;
    // Gets a frame ready that is about to be sent. The answer is empty, or the reason why there are no frames any more.
    virtual std::string Fetch(std::uint64_t /*frame*/) { return {}; }
    // How long after this frame the next one comes, in microseconds; nothing: as the camera's own timing says.
    virtual std::optional<std::int64_t> Pause(std::uint64_t /*frame*/) const { return std::nullopt; }

    // The frame that Row answers rows of.
    virtual void Begin(const SensorSettings& settings, SensorFill fill, std::uint64_t frame) = 0;
    // Row y, in any order; it lies in `room`, of a row's samples, or in the source's own memory.
    virtual std::span<const std::uint16_t> Row(unsigned y, std::span<std::uint16_t> room) = 0;
};

}  // namespace zel::sim

#endif
