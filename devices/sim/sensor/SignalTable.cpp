#include "devices/sim/sensor/SignalTable.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "devices/sim/scene/PlainMath.h"
#include "devices/sim/sensor/LightPicture.h"

namespace zel::sim {
namespace {

double LargestCount(const SensorModel& model) { return static_cast<double>((1 << std::clamp(model.bits, 1, 16)) - 1); }

double ExposureSeconds(const SensorSettings& settings) { return settings.exposure_us * 1e-6; }

}  // namespace

double CountsPerElectron(const SensorModel& model, double gain) {
    const double decibel = gain * 0.0358 + 5.5;
    return model.conversion * PlainPow(10.0, decibel / 20.0) * LargestCount(model) / 2000.0;
}

double DarkElectrons(const SensorModel& model, const SensorSettings& settings) {
    const double doublings = (settings.temperature - 25.0) / 6.0;
    return model.dark_current * PlainPow(2.0, doublings) * ExposureSeconds(settings);
}

bool SignalTable::Build(const SensorModel& model, const SensorSettings& settings) noexcept {
    try {
        m_Signals.resize(kNumLevels);
    } catch (const std::bad_alloc&) {
        return false;
    }
    const double counts = CountsPerElectron(model, settings.gain);
    const double dark = DarkElectrons(model, settings);
    const double electrons_per_level =
        model.photon_flux * ExposureSeconds(settings) * model.quantum_efficiency / static_cast<double>(kUnitLevel);
    for (std::size_t level = 0; level < kNumLevels; ++level) {
        const double electrons = static_cast<double>(level) * electrons_per_level + dark;
        m_Signals[level] = {static_cast<float>(electrons * counts), static_cast<float>(std::sqrt(electrons) * counts)};
    }
    m_FullWell = static_cast<float>(model.full_well * counts);
    m_ReadNoise = static_cast<float>(model.read_noise * counts);
    m_BlackLevel = static_cast<float>(settings.black_level);
    return true;
}

}  // namespace zel::sim
