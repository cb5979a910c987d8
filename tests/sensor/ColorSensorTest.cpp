// The color filters, and the chart whose patches are known.
#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "sim/ColorMatrices.h"
#include "sim/Scene.h"
#include "sim/Spectrum.h"
#include "tests/sensor/FrameStatistics.h"
#include "tests/sensor/PictureFile.h"

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

// The 2 x 2 cell at the top left, row after row.
struct Phase {
    int phase;
    const char* cell;
};

class CfaPhaseTest : public testing::TestWithParam<Phase> {};

TEST_P(CfaPhaseTest, EachPixelSeesThroughItsFilter) {
    const Phase& c = GetParam();
    const std::string names = "RGB";
    for (std::size_t light = 0; light < 3; ++light) {
        Color8 color{};
        color[light] = 255;
        const FlatPicture flat(color);
        SensorModel model = BrightModel(64, 64, c.phase);
        model.scene = flat.Path();
        Sensor sensor(model);
        const Frame frame = RenderFrame(sensor, {}, 1);
        std::array<double, 4> cell{};
        for (std::size_t i = 0; i < frame.size(); ++i) cell[(i / 64 % 2) * 2 + i % 2] += frame[i] / 1024.0;
        for (std::size_t i = 0; i < 4; ++i) {
            const auto filter = names.find(c.cell[i]);
            EXPECT_NEAR(Response(model, cell[i]), SpectralResponse()[filter][light], 0.002) << c.cell << " " << i;
            EXPECT_EQ(FilterColor(c.phase, 6 + i % 2, 4 + static_cast<unsigned>(i) / 2), filter) << c.cell << " " << i;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sensor, CfaPhaseTest,
                         testing::Values(Phase{1, "RGGB"}, Phase{2, "BGGR"}, Phase{3, "GRBG"}, Phase{4, "GBRG"}),
                         [](const auto& param) { return std::string(param.param.cell); });

// The phase at the next column and the next row follows from the one at the top left.
TEST(CfaPhase, MovesWithColumnAndRow) {
    constexpr int kNextColumn[] = {0, 3, 4, 1, 2};
    constexpr int kNextRow[] = {0, 4, 3, 2, 1};
    for (int phase = 1; phase <= 4; ++phase) {
        for (unsigned i = 0; i < 4; ++i) {
            EXPECT_EQ(FilterColor(phase, i % 2 + 1, i / 2), FilterColor(kNextColumn[phase], i % 2, i / 2)) << phase;
            EXPECT_EQ(FilterColor(phase, i % 2, i / 2 + 1), FilterColor(kNextRow[phase], i % 2, i / 2)) << phase;
        }
    }
}

using Vector = std::array<double, 3>;

// A host multiplies white balance by correction in single precision; what it gets must undo the sensor.
TEST(ColorMatricesTest, WhiteBalanceTimesCorrectionUndoesTheResponse) {
    constexpr double kIdentity[3][3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
    constexpr double kXyz[3][3] = {
        {0.41214, 0.3576, 0.18036}, {0.21251, 0.71535, 0.07214}, {0.01932, 0.11923, 0.94988}};
    for (const auto& [space, output] :
         {std::pair("CCIR 709", kIdentity), std::pair("XYZ", kXyz), std::pair("unknown", kIdentity)}) {
        const ColorMatrices matrices = MakeColorMatrices(space);
        for (std::size_t i = 0; i < 3; ++i) {
            for (std::size_t j = 0; j < 3; ++j) {
                double sum = 0.0;
                for (std::size_t k = 0; k < 3; ++k) {
                    float transform = 0.0f;
                    for (std::size_t m = 0; m < 3; ++m) {
                        transform += static_cast<float>(matrices.white_balance[i][m]) *
                                     static_cast<float>(matrices.correction[m][k]);
                    }
                    sum += double{transform} * SpectralResponse()[k][j];
                }
                EXPECT_NEAR(sum, output[i][j], 4e-7) << space << " " << i << j;
                EXPECT_EQ(matrices.white_balance[i][j] != 0.0, i == j);
            }
        }
    }
}

// Each of the two alone does what its name says.
TEST(ColorMatricesTest, WhiteBalanceMakesWhiteNeutralAndCorrectionKeepsIt) {
    const ColorMatrices matrices = MakeColorMatrices("CCIR 709");
    Vector white{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (const float share : SpectralResponse()[i]) white[i] += double{share};
    }
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(matrices.white_balance[i][i] * white[i], 1.0, 1e-12);
        double corrected = 0.0;
        for (std::size_t k = 0; k < 3; ++k) corrected += matrices.correction[i][k] * white[k];
        EXPECT_NEAR(corrected, white[i], 1e-12);
    }
}

// Solves response * light = seen by Cramer's rule.
Vector Undo(const SpectralMatrix& m, const Vector& seen) {
    const auto determinant = [](const std::array<Vector, 3>& a) {
        return a[0][0] * (a[1][1] * a[2][2] - a[1][2] * a[2][1]) - a[0][1] * (a[1][0] * a[2][2] - a[1][2] * a[2][0]) +
               a[0][2] * (a[1][0] * a[2][1] - a[1][1] * a[2][0]);
    };
    std::array<Vector, 3> whole{};
    for (std::size_t r = 0; r < 3; ++r) whole[r] = {m[r][0], m[r][1], m[r][2]};
    Vector light{};
    for (std::size_t c = 0; c < 3; ++c) {
        auto replaced = whole;
        for (std::size_t r = 0; r < 3; ++r) replaced[r][c] = seen[r];
        light[c] = determinant(replaced) / determinant(whole);
    }
    return light;
}

// Mean response per filter over a patch; a monochrome sensor has one.
Vector SeenOnPatch(const SensorModel& model, const Frame& frame, const ScenePatch& patch) {
    Vector sums{};
    Vector counts{};
    for (unsigned y = patch.top; y < patch.top + patch.height; ++y) {
        for (unsigned x = patch.left; x < patch.left + patch.width; ++x) {
            const unsigned filter = model.cfa_phase == 0 ? 0 : FilterColor(model.cfa_phase, x, y);
            sums[filter] += frame[y * model.width + x];
            counts[filter] += 1.0;
        }
    }
    Vector seen{};
    for (std::size_t i = 0; i < 3; ++i) seen[i] = counts[i] > 0.0 ? Response(model, sums[i] / counts[i]) : 0.0;
    return seen;
}

TEST(ColorChartTest, UndoingTheResponseGivesThePatches) {
    for (const auto& [w, h] : {std::pair{640u, 480u}, std::pair{480u, 640u}, std::pair{512u, 512u}}) {
        const SensorModel model = BrightModel(w, h, 3);
        Sensor sensor(model);
        const Frame frame = RenderFrame(sensor, {}, 1);
        for (const ScenePatch& patch : ColorChartPatches(w, h)) {
            ASSERT_GE(patch.width, 10u);
            ASSERT_LE(patch.left + patch.width, w);
            ASSERT_LE(patch.top + patch.height, h);
            const Vector light = Undo(SpectralResponse(), SeenOnPatch(model, frame, patch));
            EXPECT_NEAR(light[0], patch.color.r, 0.004) << patch.left << ", " << patch.top;
            EXPECT_NEAR(light[1], patch.color.g, 0.004) << patch.left << ", " << patch.top;
            EXPECT_NEAR(light[2], patch.color.b, 0.004) << patch.left << ", " << patch.top;
        }
    }
}

TEST(ColorChartTest, AMonochromeSensorSeesGrays) {
    const SensorModel model = BrightModel(640, 480, 0);
    Sensor sensor(model);
    const Frame frame = RenderFrame(sensor, {}, 1);
    const auto patches = ColorChartPatches(640, 480);
    const auto& weights = MonochromeResponse();
    EXPECT_NEAR(weights[0] + weights[1] + weights[2], 1.0, 1e-6);
    for (const ScenePatch& patch : patches) {
        const double gray = weights[0] * patch.color.r + weights[1] * patch.color.g + weights[2] * patch.color.b;
        EXPECT_NEAR(SeenOnPatch(model, frame, patch)[0], gray, 0.003);
    }
    for (std::size_t i = kNumColorPatches - 6; i < kNumColorPatches; ++i) {
        EXPECT_EQ(patches[i].color.r, patches[i].color.b);
        EXPECT_EQ(patches[i].color.r, patches[i].color.g);
        EXPECT_TRUE(i == kNumColorPatches - 6 || patches[i].color.g < patches[i - 1].color.g);
    }
}

}  // namespace
}  // namespace zel::sim::test
