// Sensors, their frames, and what is measured on them.
#ifndef TESTS_SENSOR_FRAMESTATISTICS_H
#define TESTS_SENSOR_FRAMESTATISTICS_H

#include <string>
#include <vector>

#include "devices/sim/sensor/Sensor.h"

namespace zel::sim::test {

using Frame = std::vector<std::uint16_t>;

inline SensorModel ModelOf(unsigned width, unsigned height, int phase = 0, const std::string& scene = "builtin") {
    SensorModel model;
    model.width = width;
    model.height = height;
    model.cfa_phase = phase;
    model.scene = scene;
    return model;
}

inline Frame RenderFrame(Sensor& sensor, const SensorSettings& settings, std::uint64_t number,
                         SensorFill fill = SensorFill::kNoise) {
    Frame frame(static_cast<std::size_t>(sensor.Model().width) * sensor.Model().height);
    sensor.Render(settings, fill, number, frame);
    return frame;
}

// FNV-1a over the samples, low byte first.
inline std::uint64_t Hash(const Frame& frame) {
    std::uint64_t hash = 0xCBF29CE484222325u;
    for (const unsigned value : frame) {
        hash = (hash ^ (value & 0xFF)) * 0x100000001B3u;
        hash = (hash ^ (value >> 8)) * 0x100000001B3u;
    }
    return hash;
}

}  // namespace zel::sim::test

#endif
