// The program with a simulated color camera: what the sensor saw against what the picture shows.
#include <lodepng.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

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
    unsigned width = 0, height = 0;
    std::vector<double> samples;  // three per pixel

    Light Mean(unsigned left, unsigned top, unsigned right, unsigned bottom) const {
        Light mean{};
        for (unsigned i = 0; i < (right - left) * (bottom - top) * 3; ++i) {
            const unsigned x = left + i / 3 % (right - left), y = top + i / 3 / (right - left);
            mean[i % 3] += samples.at((std::size_t{y} * width + x) * 3 + i % 3) / ((right - left) * (bottom - top));
        }
        return mean;
    }
};

// json: what the tool says of the picture; the file must be of that format and space.
Picture ReadPicture(const std::string& name, const nlohmann::json& json) {
    Picture picture;
    std::vector<unsigned char> file, bytes;
    lodepng::State state;
    state.info_raw.colortype = LCT_RGB;
    state.info_raw.bitdepth = 16;
    EXPECT_EQ(lodepng::load_file(file, name), 0u) << name;
    EXPECT_EQ(lodepng::decode(bytes, picture.width, picture.height, state, file), 0u) << name;
    const bool deep = json["format"] == "16", srgb = json["space"] == "srgb";
    EXPECT_EQ(std::tuple(state.info_png.color.bitdepth, state.info_png.color.colortype, state.info_png.srgb_defined),
              std::tuple(deep ? 16u : 8u, json["format"] == "rgba8" ? LCT_RGBA : LCT_RGB, srgb));
    EXPECT_TRUE(!state.info_png.srgb_defined || state.info_png.srgb_intent == 0) << "perceptual";
    EXPECT_NE(state.info_png.gama_defined, state.info_png.srgb_defined);
    const int depth = srgb ? 16 : 14, black = json["space"] == "sensor" ? 0 : 64;
    ExpectMembers(json, {{"bits", deep ? depth : 8}, {"black_level_taken_off", black}});
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        picture.samples.push_back((bytes[i] * 256 + bytes[i + 1]) / 65535.0);
    return picture;
}

double DecodeCurve(double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); }

Light ToXyz(const Light& rgb) {
    constexpr double kMatrix[3][3] = {
        {0.41214, 0.3576, 0.18036}, {0.21251, 0.71535, 0.07214}, {0.01932, 0.11923, 0.94988}};
    Light xyz{};
    for (std::size_t i = 0; i < 9; ++i) xyz[i / 3] += kMatrix[i / 3][i % 3] * rgb[i % 3];
    return xyz;
}

// Counts that a scene value of 1 makes behind the green filter.
double CountsOfWhite() {
    const zel::sim::SensorModel model;
    return model.photon_flux * kExposureUs * 1e-6 * model.quantum_efficiency * zel::sim::CountsPerElectron(model, 0.0);
}

struct ProgramColor : testing::Test {
    ProgramColor() {
        UseFastCameras("0", "0", "1");
        Simulate("SIZE", "640x480");
    }

    Picture Capture(const std::string& arguments) {
        const auto json = JsonOf("capture --color --exposure " + std::to_string(kExposureUs) + " " + arguments +
                                 " --out" + m_Folder.Quoted(""))["pictures"][0];
        Picture picture = ReadPicture(json["path"], json["color"]);
        EXPECT_EQ(std::pair(picture.width, picture.height), std::pair(kWidth, kHeight));
        return picture;
    }

    TemporaryFolder m_Folder;
};

// Light of a sample.
using ToLight = std::function<double(double)>;

// How far the patches are from what the scene shows, channel by channel, in percent of white. The rim of a patch is
// left out: demosaicing mixes it with the frame around it.
std::vector<double> ErrorsOfPatches(const Picture& picture, const ToLight& to_light, bool xyz) {
    constexpr unsigned kRim = 3;
    std::vector<double> errors;
    for (const zel::sim::ScenePatch& patch : zel::sim::ColorChartPatches(kWidth, kHeight)) {
        const Light mean = picture.Mean(patch.left + kRim, patch.top + kRim, patch.left + patch.width - kRim,
                                        patch.top + patch.height - kRim);
        const Light scene{patch.color.r, patch.color.g, patch.color.b};
        const Light expected = xyz ? ToXyz(scene) : scene;
        for (std::size_t i = 0; i < 3; ++i) errors.push_back(100.0 * (to_light(mean[i]) - expected[i]));
    }
    return errors;
}

// What a camera's own matrices lead to makes no difference.
TEST_F(ProgramColor, ThePatchesComeBackInEveryPhaseFormatAndSpace) {
    const double white = CountsOfWhite();
    const ToLight counts = [&](double v) { return v * 65535.0 / white; };
    const ToLight scaled = [&](double v) { return counts(v) / 4.0; };
    const ToLight eight_bits = [&](double v) { return (v * 255.0 + 0.5) * 64.0 / white; };
    const ToLight curve = [&](double v) { return DecodeCurve(v) * (16383.0 - 64.0) / white; };
    const ToLight coarse_curve = [&](double v) { return v > 0.0 ? curve(v) + 32.0 / white : 0.0; };
    const struct {
        const char *phase, *camera_space, *arguments;
        const ToLight& to_light;
        bool xyz;
        double limit;
    } cases[] = {
        {"2", "", "--color-space ccir709", counts, false, 0.5},
        {"3", "", "--color-space ccir709", counts, false, 0.5},
        {"4", "", "--color-space ccir709", counts, false, 0.5},
        {"", "CCIR 709", "--color-space xyz --scale", scaled, true, 0.5},
        {"", "CCIR 709", "", curve, false, 0.5},
        {"", "XYZ", "--color-space ccir709", counts, false, 0.5},
        {"", "XYZ", "--color-space xyz --scale", scaled, true, 0.5},
        {"", "XYZ", "", curve, false, 0.5},
        {"", "", "--format 8 --color-space ccir709", eight_bits, false, 0.7},
        {"", "", "--format rgba8 --color-space ccir709", eight_bits, false, 0.7},
        {"", "", "--format 8", coarse_curve, false, 1.0},
        {"", "", "--format rgba8", coarse_curve, false, 1.0},
    };
    for (const auto& c : cases) {
        Simulate("CFA_PHASE", c.phase);
        Simulate("COLOR_SPACE", c.camera_space);
        const Picture picture = Capture(c.arguments);
        for (const double error : ErrorsOfPatches(picture, c.to_light, c.xyz))
            EXPECT_NEAR(error, 0.0, c.limit) << "row " << &c - cases;
    }
}

// docs/color.md shows what this prints.
TEST_F(ProgramColor, TheTableOfThePatches) {
    const double white = CountsOfWhite();
    Simulate("CFA_PHASE", "1");
    const auto errors = ErrorsOfPatches(
        Capture("--color-space ccir709"), [&](double v) { return v * 65535.0 / white; }, false);
    std::printf("patch     scene: red  green   blue   error in %% of white: red  green   blue\n");
    std::size_t n = 0;
    double largest = 0.0;
    for (const zel::sim::ScenePatch& patch : zel::sim::ColorChartPatches(kWidth, kHeight)) {
        const double* const error = &errors.at(3 * n);
        std::printf("%5zu         %6.3f %6.3f %6.3f                       %6.2f %6.2f %6.2f\n", ++n, patch.color.r,
                    patch.color.g, patch.color.b, error[0], error[1], error[2]);
        for (std::size_t i = 0; i < 3; ++i) largest = std::max(largest, std::fabs(error[i]));
    }
    std::printf("largest error: %.2f %% of white\n", largest);
    EXPECT_LE(largest, 0.5);
}

// The whole way of a picture file: through the sensor's filters and back.
TEST_F(ProgramColor, AUsersPictureComesBackInItsColors) {
    const std::vector<unsigned char> rgb{200, 60, 30, 40, 180, 90, 50, 70, 210, 230, 220, 120};  // 2 x 2 pixels
    ASSERT_EQ(lodepng::encode(m_Folder / "scene.png", rgb, 2, 2, LCT_RGB), 0u);
    Simulate("SCENE", m_Folder / "scene.png");
    const Picture picture = Capture("--color-space srgb");
    for (unsigned i = 0; i < rgb.size(); ++i) {
        const unsigned left = i / 3 % 2 * 500 + 20, top = i / 6 * 400 + 20;
        const double light = DecodeCurve(picture.Mean(left, top, left + 100, top + 40)[i % 3]) * (16383.0 - 64.0);
        EXPECT_NEAR(light / CountsOfWhite(), DecodeCurve(rgb[i] / 255.0), 0.004) << i;
    }
}

TEST_F(ProgramColor, AColorSpaceThatNobodyKnowsIsNamedAndTheSensorsOwnChannelsStillWork) {
    Simulate("COLOR_SPACE", "tungsten");
    FailureOfTool("capture --color", kRefused, "its matrices lead to 'tungsten'; use --color-space sensor");
    const Picture picture = Capture("--color-space sensor");
    const zel::sim::ScenePatch white = zel::sim::ColorChartPatches(kWidth, kHeight)[18];
    const Light mean = picture.Mean(white.left + 3, white.top + 3, white.left + 15, white.top + 15);
    const Light expected{0.62, 1.0, 0.72};
    for (std::size_t c = 0; c < 3; ++c)
        EXPECT_NEAR((mean[c] * 65535.0 - 64.0) / CountsOfWhite(), 0.88 * expected[c], 0.01) << c;
}

}  // namespace zelcam
