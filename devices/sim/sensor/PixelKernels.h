// The loop in which a simulated camera spends its time: light levels become samples. One form per instruction set, all
// equal to the plain one to the bit.
#ifndef SIM_PIXELKERNELS_H
#define SIM_PIXELKERNELS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "devices/sim/sensor/SignalTable.h"
#include "devices/sim/sensor/TapGains.h"

namespace zel::sim {

// What is the same for all pixels of a tap.
struct PixelSettings {
    const SignalTable::Signal* signals = nullptr;  // one per light level
    TapMap map;
    float full_well = 0.0f;
    float read_noise = 0.0f;
    float offset = 0.0f;   // the black level and a half
    float ceiling = 0.0f;  // the largest sample and a half
};

// Pixels beside each other.
struct PixelRun {
    const std::uint16_t* levels;
    const float* shot;  // normally distributed numbers
    const float* read;
    std::uint16_t* out;
    std::size_t count;
};

// The two noises are independent: shot noise goes with the charge and is cut by the full well, read noise comes on top.
using PixelKernel = void (*)(const PixelSettings& settings, const PixelRun& run);
void RenderPixelsPlain(const PixelSettings& settings, const PixelRun& run);

namespace avx2 {
void RenderPixels(const PixelSettings& settings, const PixelRun& run);
}
namespace avx512 {
void RenderPixels(const PixelSettings& settings, const PixelRun& run);
}

// The forms that this machine runs, the fastest first, the plain one last.
std::vector<PixelKernel> PixelKernels();

// The fastest, chosen at the first call.
PixelKernel FastestPixelKernel();

}  // namespace zel::sim

#endif
