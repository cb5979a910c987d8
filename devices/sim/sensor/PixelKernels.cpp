#include "devices/sim/sensor/PixelKernels.h"

#include <algorithm>

#include "kernels/CpuSupport.h"

namespace zel::sim {

void RenderPixelsPlain(const PixelSettings& settings, const PixelRun& run) {
    for (std::size_t i = 0; i < run.count; ++i) {
        const SignalTable::Signal& signal = settings.signals[run.levels[i]];
        const float charge = std::min(signal.mean + signal.sigma * run.shot[i], settings.full_well);
        const float counts = charge + settings.read_noise * run.read[i] + settings.offset;
        const int sample = static_cast<int>(std::min(std::max(counts, 0.0f), settings.ceiling));
        run.out[i] = settings.map.entries ? settings.map.entries[sample] : static_cast<std::uint16_t>(sample);
    }
}

std::vector<PixelKernel> PixelKernels() {
    std::vector<PixelKernel> forms;
    if (kernels::CpuHasAvx512()) forms.push_back(avx512::RenderPixels);
    if (kernels::CpuHasAvx2()) forms.push_back(avx2::RenderPixels);
    forms.push_back(RenderPixelsPlain);
    return forms;
}

PixelKernel FastestPixelKernel() {
    static const PixelKernel fastest = PixelKernels().front();
    return fastest;
}

}  // namespace zel::sim
