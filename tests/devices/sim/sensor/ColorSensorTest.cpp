// What pixels take in through their color filters.
#include <gtest/gtest.h>

#include "devices/sim/scene/Spectrum.h"
#include "devices/sim/sensor/LightPicture.h"
#include "tests/devices/sim/scene/PictureFile.h"

namespace zel::sim::test {
namespace {

TEST(CfaPhaseTest, EachPixelSeesThroughItsFilter) {
    const std::string names = "RGB";
    const std::string cells[] = {"RGGB", "BGGR", "GRBG", "GBRG"};
    for (std::size_t light = 0; light < 3; ++light) {
        Color8 color{};
        color[light] = 255;
        const FlatPicture flat(color);
        for (int phase = 1; phase <= 4; ++phase) {
            const std::string& filters = cells[phase - 1];
            LightPicture picture;
            ASSERT_TRUE(picture.Look(flat.Path(), 4, 4, phase));
            for (std::size_t i = 0; i < 16; ++i) {
                const auto filter = names.find(filters[i / 4 % 2 * 2 + i % 2]);
                EXPECT_NEAR(picture.Levels()[i] / kUnitLevel, SpectralResponse()[filter][light], 1e-4) << filters << i;
            }
        }
    }
}

}  // namespace
}  // namespace zel::sim::test
