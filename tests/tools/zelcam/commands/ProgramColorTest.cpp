// The program with a simulated color camera: what the sensor saw against what the picture shows.
#include <gmock/gmock.h>
#include <lodepng.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "devices/sim/scene/Scene.h"
#include "devices/sim/sensor/SignalTable.h"
#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

using Light = std::array<double, 3>;  // red, green, blue; or X, Y, Z

constexpr unsigned kWidth = 640;
constexpr unsigned kHeight = 480;
constexpr int kExposureUs = 30000;

// A color picture as the tool writes it, samples from 0 to 1.
struct Picture {
    unsigned width = 0;
    unsigned height = 0;
    std::vector<double> samples;  // three per pixel

    Light Mean(unsigned left, unsigned top, unsigned right, unsigned bottom) const {
        Light sum{};
        for (unsigned y = top; y < bottom; ++y) {
            for (unsigned x = left; x < right; ++x) {
                for (std::size_t c = 0; c < 3; ++c) sum[c] += samples[(std::size_t{y} * width + x) * 3 + c];
            }
        }
        for (double& value : sum) value /= static_cast<double>(right - left) * (bottom - top);
        return sum;
    }
};

// json: what the tool says of the picture; the file must be of that format and space.
Picture ReadPicture(const std::string& name, const nlohmann::json& json) {
    Picture picture;
    std::vector<unsigned char> file;
    std::vector<unsigned char> bytes;
    lodepng::State state;
    state.info_raw.colortype = LCT_RGB;
    state.info_raw.bitdepth = 16;
    EXPECT_EQ(lodepng::load_file(file, name), 0u) << name;
    EXPECT_EQ(lodepng::decode(bytes, picture.width, picture.height, state, file), 0u) << name;
    EXPECT_EQ(state.info_png.color.bitdepth, json["format"] == "16" ? 16u : 8u);
    EXPECT_EQ(state.info_png.color.colortype, json["format"] == "rgba8" ? LCT_RGBA : LCT_RGB);
    EXPECT_EQ(state.info_png.srgb_defined, json["space"] == "srgb" ? 1u : 0u);
    EXPECT_EQ(state.info_png.gama_defined, json["space"] == "srgb" ? 0u : 1u);
    EXPECT_EQ(json["bits"], json["format"] != "16" ? 8 : json["space"] == "srgb" ? 16 : 14);
    EXPECT_EQ(json["black_level_taken_off"], json["space"] == "sensor" ? 0 : 64);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        picture.samples.push_back((bytes[i] * 256 + bytes[i + 1]) / 65535.0);
    }
    return picture;
}

double DecodeCurve(double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); }

Light ToXyz(const Light& rgb) {
    constexpr double kMatrix[3][3] = {
        {0.41214, 0.3576, 0.18036}, {0.21251, 0.71535, 0.07214}, {0.01932, 0.11923, 0.94988}};
    Light xyz{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) xyz[i] += kMatrix[i][j] * rgb[j];
    }
    return xyz;
}

// Counts that a scene value of 1 makes behind the green filter.
double CountsOfWhite() {
    const zel::sim::SensorModel model;
    return model.photon_flux * kExposureUs * 1e-6 * model.quantum_efficiency * zel::sim::CountsPerElectron(model, 0.0);
}

class ProgramColor : public testing::Test {
  protected:
    ProgramColor() {
        UseFastCameras("0", "0", "1");
        zel::platform::SetEnvironment("ZEL_SIM_SIZE", "640x480");
        Simulate("builtin", "", "");
    }
    ~ProgramColor() override { Simulate(nullptr, nullptr, nullptr); }

    static void Simulate(const char* scene, const char* phase, const char* space) {
        zel::platform::SetEnvironment("ZEL_SIM_SCENE", scene);
        zel::platform::SetEnvironment("ZEL_SIM_CFA_PHASE", phase);
        zel::platform::SetEnvironment("ZEL_SIM_COLOR_SPACE", space);
    }

    ToolResult Run(const std::string& arguments) {
        return RunTool("capture --color --json --exposure " + std::to_string(kExposureUs) + " " + arguments +
                       " -p color --overwrite --out \"" + m_Folder.Path().generic_string() + "\"");
    }

    Picture Capture(const std::string& arguments) {
        const ToolResult result = Run(arguments);
        EXPECT_EQ(result.exit_code, 0) << arguments << ": " << result.err;
        if (result.exit_code != 0) return {};
        Picture picture = ReadPicture(m_Folder / "color_0001.png", result.Json()["pictures"][0]["color"]);
        EXPECT_EQ(picture.samples.size(), std::size_t{picture.width} * picture.height * 3);
        return picture;
    }

    TemporaryFolder m_Folder;
};

// A patch's mean as light, and how far it is from what the scene shows. The rim is left out: demosaicing mixes it with
// the frame around the patch.
template <class ToLight>
double LargestPatchError(const Picture& picture, ToLight to_light, bool xyz, bool print) {
    constexpr unsigned kRim = 3;
    double largest = 0.0;
    int number = 0;
    if (print) std::printf("patch     scene: red  green   blue   error in %% of white: red  green   blue\n");
    for (const zel::sim::ScenePatch& patch : zel::sim::ColorChartPatches(kWidth, kHeight)) {
        const Light mean = picture.Mean(patch.left + kRim, patch.top + kRim, patch.left + patch.width - kRim,
                                        patch.top + patch.height - kRim);
        const Light scene{patch.color.r, patch.color.g, patch.color.b};
        const Light expected = xyz ? ToXyz(scene) : scene;
        Light error{};
        for (std::size_t c = 0; c < 3; ++c) {
            error[c] = 100.0 * (to_light(mean[c]) - expected[c]);
            largest = std::max(largest, std::fabs(error[c]));
        }
        ++number;
        if (print) {
            std::printf("%5d         %6.3f %6.3f %6.3f                       %6.2f %6.2f %6.2f\n", number, expected[0],
                        expected[1], expected[2], error[0], error[1], error[2]);
        }
    }
    if (print) std::printf("largest error: %.2f %% of white\n", largest);
    return largest;
}

class ProgramColorPhase : public ProgramColor, public testing::WithParamInterface<int> {};

TEST_P(ProgramColorPhase, ThePatchesComeBackWithinHalfAPercentOfWhite) {
    const std::string phase = std::to_string(GetParam());
    Simulate("builtin", phase.c_str(), "");
    const Picture picture = Capture("--color-space ccir709");
    ASSERT_EQ(picture.width, kWidth);
    ASSERT_EQ(picture.height, kHeight);
    const double white = CountsOfWhite();
    std::printf("phase %d\n", GetParam());
    EXPECT_LT(LargestPatchError(
                  picture, [&](double v) { return v * 65535.0 / white; }, false, true),
              0.5);
}

INSTANTIATE_TEST_SUITE_P(Phases, ProgramColorPhase, testing::Values(1, 2, 3, 4));

// What a camera's own matrices lead to makes no difference to what the user gets.
TEST_F(ProgramColor, EveryFormatAndSpaceShowsThePatches) {
    const double white = CountsOfWhite();
    const double full = 16383.0;
    const auto counts = [&](double v) { return v * 65535.0 / white; };
    const auto scaled = [&](double v) { return counts(v) / 4.0; };
    const auto eight_bits = [&](double v) { return (v * 255.0 + 0.5) * 64.0 / white; };
    const auto curve = [&](double v) { return DecodeCurve(v) * (full - 64.0) / white; };
    const auto coarse_curve = [&](double v) { return v > 0.0 ? curve(v) + 32.0 / white : 0.0; };
    for (const char* camera_space : {"CCIR 709", "XYZ"}) {
        Simulate("builtin", "", camera_space);
        EXPECT_LT(LargestPatchError(Capture("--color-space ccir709"), counts, false, false), 0.5) << camera_space;
        EXPECT_LT(LargestPatchError(Capture("--color-space xyz --scale"), scaled, true, false), 0.5) << camera_space;
        EXPECT_LT(LargestPatchError(Capture(""), curve, false, false), 0.5) << camera_space;
    }
    Simulate("builtin", "", "");
    for (const char* format : {"8", "rgba8"}) {
        const std::string option = std::string("--format ") + format;
        EXPECT_LT(LargestPatchError(Capture(option + " --color-space ccir709"), eight_bits, false, false), 0.7);
        EXPECT_LT(LargestPatchError(Capture(option), coarse_curve, false, false), 1.0) << format;
    }
}

// The whole way of a picture file: through the sensor's filters and back.
TEST_F(ProgramColor, AUsersPictureComesBackInItsColors) {
    constexpr std::array<std::array<unsigned char, 3>, 4> kColors{
        {{200, 60, 30}, {40, 180, 90}, {50, 70, 210}, {230, 220, 120}}};
    std::vector<unsigned char> rgb;
    for (unsigned i = 0; i < kWidth * kHeight; ++i) {
        const auto& color = kColors[(i / kWidth < kHeight / 2 ? 0 : 2) + (i % kWidth < kWidth / 2 ? 0 : 1)];
        rgb.insert(rgb.end(), color.begin(), color.end());
    }
    const std::string scene = m_Folder / "scene.png";
    ASSERT_EQ(lodepng::encode(scene, rgb, kWidth, kHeight, LCT_RGB), 0u);
    Simulate(scene.c_str(), "", "");
    const Picture picture = Capture("--color-space srgb");
    for (unsigned i = 0; i < 4; ++i) {
        const unsigned left = i % 2 * kWidth / 2 + 10;
        const unsigned top = i / 2 * kHeight / 2 + 10;
        const Light mean = picture.Mean(left, top, left + 300, top + 220);
        for (std::size_t c = 0; c < 3; ++c) {
            const double light = DecodeCurve(mean[c]) * (16383.0 - 64.0) / CountsOfWhite();
            EXPECT_NEAR(light, DecodeCurve(kColors[i][c] / 255.0), 0.004) << i << " " << c;
        }
    }
}

TEST_F(ProgramColor, AColorSpaceThatNobodyKnowsIsNamedAndTheSensorsOwnChannelsStillWork) {
    Simulate("builtin", "", "tungsten");
    FailureOfTool("capture --color", kRefused, "its matrices lead to 'tungsten'; use --color-space sensor");
    const Picture picture = Capture("--color-space sensor");
    const zel::sim::ScenePatch white = zel::sim::ColorChartPatches(kWidth, kHeight)[18];
    const Light mean = picture.Mean(white.left + 3, white.top + 3, white.left + 15, white.top + 15);
    const Light expected{0.62, 1.0, 0.72};
    for (std::size_t c = 0; c < 3; ++c) {
        EXPECT_NEAR((mean[c] * 65535.0 - 64.0) / CountsOfWhite(), 0.88 * expected[c], 0.01) << c;
    }
}

TEST_F(ProgramColor, StreamMeasuresColorFrames) {
    const auto json = RunTool("stream --json --color --format rgba8 --frames 5").Json();
    ASSERT_EQ(json["frames"], 5) << json;
    EXPECT_EQ(json["color"]["format"], "rgba8");
    EXPECT_NEAR(json["megabytes_per_second"].get<double>() / json["frames_per_second"].get<double>(),
                kWidth * kHeight * 4 / 1e6, 1e-6);
}

}  // namespace zelcam
