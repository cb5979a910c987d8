// Frames and what is measured on them.
#ifndef TESTS_SENSOR_FRAMESTATISTICS_H
#define TESTS_SENSOR_FRAMESTATISTICS_H

#include <cmath>
#include <cstdint>
#include <vector>

#include "devices/sim/sensor/Sensor.h"

namespace zel::sim::test {

using Frame = std::vector<std::uint16_t>;

inline Frame RenderFrame(Sensor& sensor, const SensorSettings& settings, std::uint64_t number,
                         SensorFill fill = SensorFill::kNoise) {
    Frame frame(static_cast<std::size_t>(sensor.Model().width) * sensor.Model().height);
    sensor.Render(settings, fill, number, frame);
    return frame;
}

inline double Mean(const Frame& frame) {
    double sum = 0.0;
    for (const auto value : frame) sum += value;
    return sum / static_cast<double>(frame.size());
}

// Covariance of two equally long stretches.
inline double Covariance(const std::uint16_t* a, const std::uint16_t* b, std::size_t count) {
    double sum_a = 0.0;
    double sum_b = 0.0;
    double products = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        sum_a += a[i];
        sum_b += b[i];
        products += static_cast<double>(a[i]) * b[i];
    }
    const auto n = static_cast<double>(count);
    return products / n - sum_a / n * (sum_b / n);
}

inline double Variance(const Frame& frame) { return Covariance(frame.data(), frame.data(), frame.size()); }

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
