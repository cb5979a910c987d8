#include "tools/zelcam/camera/ColorSetup.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>

#include "include/ZelCamera.h"
#include "include/ZelCameraInternal.h"
#include "tools/zelcam/camera/CameraParameters.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

const std::vector<std::string> kColorFormats = {"16", "8", "rgba8"};
const std::vector<std::string> kColorSpaces = {"srgb", "ccir709", "xyz", "sensor"};

namespace {

constexpr float kIdentity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
constexpr float kRgbToXyz[9] = {0.41214f, 0.3576f,  0.18036f, 0.21251f, 0.71535f,
                                0.07214f, 0.01932f, 0.11923f, 0.94988f};
constexpr float kXyzToRgb[9] = {3.2406f, -1.5372f, -0.4986f, -0.9689f, 1.8758f, 0.0415f, 0.0557f, -0.204f, 1.057f};

std::size_t IndexOf(const std::vector<std::string>& names, const std::string& name) {
    return static_cast<std::size_t>(std::find(names.begin(), names.end(), name) - names.begin());
}

int FormatOperation(ColorFormat format) {
    if (format == ColorFormat::k16) return ZEL_COLOR_TRANSFORM_16_BIT;
    return format == ColorFormat::k8 ? ZEL_COLOR_TRANSFORM_8_BIT_RGB : ZEL_COLOR_TRANSFORM_8_BIT_RGBX;
}

void Require(bool done, const std::string& what) {
    if (!done) throw Failure(what, "the SDK does not do it for this camera", "leave --color out", kRefused);
}

// The camera's own matrices lead to the color space that it names. What is concatenated last acts on a pixel first, so
// the way from there to the wanted space comes before them.
void ConcatenateMatrices(ZelColorCamera* camera, const std::string& label, ColorSpace wanted) {
    if (wanted == ColorSpace::kSensor) {
        Require(camera->ConcatenateColorMatrix(kIdentity), "the color transform can't be set");
        return;
    }
    const std::string space = ReadText(camera, ZEL_PARAM_CCM_OUTPUT_COLOR_SPACE);
    const bool from_xyz = space == "XYZ";
    if (!from_xyz && space != "CCIR 709") {
        throw Failure(label + " has no known color space", "its matrices lead to '" + space + "'",
                      "use --color-space sensor", kRefused);
    }
    const bool to_xyz = wanted == ColorSpace::kXyz;
    if (from_xyz != to_xyz) {
        Require(camera->ConcatenateColorMatrix(to_xyz ? kRgbToXyz : kXyzToRgb), "the color space can't be set");
    }
    Require(camera->ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_WHITE_BALANCE_AND_CORRECTION, 0),
            "white balance and correction can't be applied");
}

void SetTables(ZelColorCamera* camera, const ColorSetting& setting) {
    if (setting.black_level > 0) {
        const auto table = BlackLevelTable(setting.bits, setting.black_level);
        Require(camera->SetInputLinearizationTable(table.data(), static_cast<unsigned>(table.size() / 3), 3),
                "the black level can't be taken off");
    } else {
        camera->SetInputLinearizationTable(nullptr, 0, 0);
    }
    if (setting.space == ColorSpace::kSrgb) {
        const auto table = CurveTable(setting);
        Require(camera->SetOutputNonLinearizationTable(table.data(), static_cast<unsigned>(table.size() / 3), 3),
                "the curve of the color space can't be set");
    } else {
        camera->SetOutputNonLinearizationTable(nullptr, 0, 0);
    }
}

void AppendThree(std::vector<std::uint16_t>& table, std::uint16_t value) { table.insert(table.end(), 3, value); }

}  // namespace

unsigned ColorSetting::OutputBits() const {
    if (format != ColorFormat::k16) return 8;
    return space == ColorSpace::kSrgb ? 16 : bits;
}

Json ColorSetting::ToJson() const {
    Json json;
    json["space"] = kColorSpaces[static_cast<std::size_t>(space)];
    json["format"] = kColorFormats[static_cast<std::size_t>(format)];
    json["bits"] = OutputBits();
    json["black_level_taken_off"] = black_level;
    return json;
}

void ColorOptions::Declare(CLI::App& command) {
    CLI::Option* const flag = command.add_flag("--color", color, "Color frames (of a color camera)");
    command
        .add_option("--color-space", space,
                    "srgb: as ordinary picture files; ccir709, xyz: linear light; sensor: the sensor's own channels")
        ->needs(flag)
        ->check(CLI::IsMember(kColorSpaces))
        ->capture_default_str();
}

ColorSetting ColorOptions::SetUp(ZelCamera* camera, const std::string& label) const {
    auto* const internal = static_cast<ZelCameraInternal*>(camera);
    if (internal->IsMonochrome()) {
        throw Failure(label + " has no color", "it is a monochrome camera", "leave --color out", kRefused);
    }
    ZelRoiBin region{};
    camera->GetParameter(ZEL_PARAM_ROI_BIN, sizeof region, &region);
    if (region.XBin > 1 || region.YBin > 1) {
        throw Failure("color frames are not binned", "the camera is set to binning", "leave --bin or --color out",
                      kRefused);
    }
    ColorSetting setting;
    setting.format = static_cast<ColorFormat>(IndexOf(kColorFormats, format));
    setting.space = static_cast<ColorSpace>(IndexOf(kColorSpaces, space));
    setting.bits = static_cast<unsigned>(std::clamp(ReadNumber(camera, ZEL_PARAM_BITS_PER_PIXEL), 1LL, 16LL));
    if (setting.space != ColorSpace::kSensor) {
        const long long darkest = (1LL << setting.bits) - 2;
        setting.black_level =
            static_cast<unsigned>(std::clamp(ReadNumber(camera, ZEL_PARAM_OPTICAL_BLACK_LEVEL), 0LL, darkest));
    }
    Require(internal->ConcatenateColorTransform(FormatOperation(setting.format), 0), "color frames can't be made");
    ConcatenateMatrices(internal, label, setting.space);
    SetTables(internal, setting);
    return setting;
}

std::vector<std::uint16_t> BlackLevelTable(unsigned bits, unsigned black_level) {
    std::vector<std::uint16_t> table;
    table.reserve(std::size_t{3} << bits);
    for (unsigned value = 0; value < 1u << bits; ++value) {
        AppendThree(table, static_cast<std::uint16_t>(value > black_level ? value - black_level : 0));
    }
    return table;
}

std::vector<std::uint16_t> CurveTable(const ColorSetting& setting) {
    const unsigned bits = setting.BytesPerChannel() == 2 ? setting.bits : 8;
    const double largest = setting.BytesPerChannel() == 2 ? 65535.0 : 255.0;
    const double full = static_cast<double>((1u << setting.bits) - 1);
    // The largest count stays white although the black level was taken off it.
    const double stretch = full / (full - setting.black_level) / static_cast<double>((1u << bits) - 1);
    std::vector<std::uint16_t> table;
    table.reserve(std::size_t{3} << bits);
    for (unsigned value = 0; value < 1u << bits; ++value) {
        const double light = std::min(value * stretch, 1.0);
        const double encoded = light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1.0 / 2.4) - 0.055;
        AppendThree(table, static_cast<std::uint16_t>(encoded * largest + 0.5));
    }
    return table;
}

}  // namespace zelcam
