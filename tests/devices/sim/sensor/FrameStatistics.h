// Frames and what is measured on them.
#ifndef TESTS_SENSOR_FRAMESTATISTICS_H
#define TESTS_SENSOR_FRAMESTATISTICS_H

#include <functional>
#include <numeric>
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
    return std::accumulate(frame.begin(), frame.end(), 0.0) / static_cast<double>(frame.size());
}

// Covariance of two equally long stretches.
inline double Covariance(const std::uint16_t* a, const std::uint16_t* b, std::size_t count) {
    const auto n = static_cast<double>(count);
    const double sums = std::accumulate(a, a + count, 0.0) * std::accumulate(b, b + count, 0.0);
    return std::inner_product(a, a + count, b, 0.0, std::plus<>(), std::multiplies<double>()) / n - sums / n / n;
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
