#include "tools/zelcam/camera/ColorArguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "tools/zelcam/text/Failure.h"

namespace zelcam {

const std::vector<std::string> kColorFormats = {"16", "8", "rgba8"};
const std::vector<std::string> kColorSpaces = {"srgb", "ccir709", "xyz", "sensor"};

namespace {

template <class Value>
Value ValueNamed(const std::vector<std::string>& names, const std::string& name) {
    return static_cast<Value>(std::find(names.begin(), names.end(), name) - names.begin());
}

}  // namespace

void ColorArguments::Declare(CLI::App& command) {
    CLI::Option* const flag = command.add_flag("--color", color, "Color frames (of a color camera)");
    command
        .add_option("--color-space", space,
                    "srgb: as ordinary picture files; ccir709, xyz: linear light; sensor: the sensor's own channels")
        ->needs(flag)
        ->check(CLI::IsMember(kColorSpaces))
        ->capture_default_str();
}

zel::ColorSetting ColorArguments::SetUp(zel::Camera& camera) const {
    try {
        return camera.use_color(
            {ValueNamed<zel::ColorFormat>(kColorFormats, format), ValueNamed<zel::ColorSpace>(kColorSpaces, space)});
    } catch (const zel::Error& error) {
        if (error.hint().empty()) throw Failure(error, "leave --color out");
        const ZelRoiBin region = camera.get(zel::settings::region_and_binning);
        if (region.XBin > 1 || region.YBin > 1) throw Failure(error, "leave --bin or --color out");
        throw Failure(error, "use --color-space sensor");
    }
}

Json ToJson(const zel::ColorSetting& setting) {
    Json json;
    json["space"] = kColorSpaces[static_cast<std::size_t>(setting.space)];
    json["format"] = kColorFormats[static_cast<std::size_t>(setting.format)];
    json["bits"] = setting.output_bits();
    json["black_level_taken_off"] = setting.black_level;
    return json;
}

}  // namespace zelcam
