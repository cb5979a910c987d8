// The color filters, and the chart whose patches are known.
#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "devices/sim/scene/Scene.h"
#include "devices/sim/scene/Spectrum.h"
#include "tests/devices/sim/scene/PictureFile.h"
#include "tests/devices/sim/sensor/FrameStatistics.h"

namespace zel::sim::test {
namespace {

// Enough light for a quiet picture, not enough to reach any limit.
SensorModel BrightModel(unsigned width, unsigned height, int phase) {
    SensorModel model;
    model.width = width;
    model.height = height;
    model.cfa_phase = phase;
    model.full_well = 1e6;
    model.conversion = 0.0005;
    model.photon_flux = 1e8;
    return model;
}

double Response(const SensorModel& model, double counts) {
    const double per_electron = model.conversion * std::pow(10.0, 5.5 / 20.0) * 16383.0 / 2000.0;
    return (counts - 64.0) / (per_electron * model.photon_flux * 0.01 * model.quantum_efficiency);
}

TEST(CfaPhaseTest, EachPixelSeesThroughItsFilter) {
    const std::string names = "RGB";
    const std::string cells[] = {"RGGB", "BGGR", "GRBG", "GBRG"};
    for (std::size_t run = 0; run < 12; ++run) {
        const int phase = 1 + static_cast<int>(run / 3);
        const std::size_t light = run % 3;
        const std::string& filters = cells[run / 3];
        Color8 color{};
        color[light] = 255;
        const FlatPicture flat(color);
        SensorModel model = BrightModel(64, 64, phase);
        model.scene = flat.Path();
        Sensor sensor(model);
        const Frame frame = RenderFrame(sensor, {}, 1);
        std::array<double, 4> cell{};
        for (std::size_t i = 0; i < frame.size(); ++i) cell[(i / 64 % 2) * 2 + i % 2] += frame[i] / 1024.0;
        for (std::size_t i = 0; i < 4; ++i) {
            const auto filter = names.find(filters[i]);
            EXPECT_NEAR(Response(model, cell[i]), SpectralResponse()[filter][light], 0.002) << filters << " " << i;
            EXPECT_EQ(FilterColor(phase, 6 + i % 2, 4 + static_cast<unsigned>(i) / 2), filter) << filters << " " << i;
        }
    }
}

}  // namespace
}  // namespace zel::sim::test
