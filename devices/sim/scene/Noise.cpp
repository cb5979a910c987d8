#include "devices/sim/scene/Noise.h"

#include <cmath>

#include "devices/sim/scene/PlainMath.h"

namespace zel::sim {
namespace {

struct Gaussians {
    Gaussians() {
        Draw();
        Normalize();
    }

    // Points drawn evenly over the unit disc give two independent numbers each (polar method).
    void Draw() {
        RandomNumbers numbers(0x5EED);
        for (std::size_t i = 0; i < values.size();) {
            const double x = 2.0 * numbers.NextFraction() - 1.0;
            const double y = 2.0 * numbers.NextFraction() - 1.0;
            const double square = x * x + y * y;
            if (square >= 1.0 || square <= 0.0) continue;
            const double factor = std::sqrt(-2.0 * PlainLog(square) / square);
            values[i++] = static_cast<float>(x * factor);
            values[i++] = static_cast<float>(y * factor);
        }
    }

    // Takes the sample's own mean and variance out, so that they do not bias every frame.
    void Normalize() {
        double sum = 0.0;
        double squares = 0.0;
        for (const float value : values) {
            sum += value;
            squares += static_cast<double>(value) * value;
        }
        const double mean = sum / static_cast<double>(values.size());
        const double deviation = std::sqrt(squares / static_cast<double>(values.size()) - mean * mean);
        for (float& value : values) value = static_cast<float>((value - mean) / deviation);
    }

    std::array<float, kGaussianTableSize> values{};
};

}  // namespace

const std::array<float, kGaussianTableSize>& GaussianTable() {
    static const Gaussians table;
    return table.values;
}

const float* GaussianStretch(RandomNumbers& numbers) {
    return GaussianTable().data() + numbers.NextBelow(kGaussianTableSize - kGaussianStretch + 1);
}

}  // namespace zel::sim
