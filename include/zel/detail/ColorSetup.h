/// Setting the SDK's color pipeline up.
#ifndef ZEL_LAYER_COLORSETUP_H
#define ZEL_LAYER_COLORSETUP_H

#include <algorithm>
#include <string>

#include "ZelCameraInternal.h"
#include "zel/Color.h"
#include "zel/Error.h"
#include "zel/detail/CameraState.h"
#include "zel/detail/Texts.h"

namespace zel::detail {

inline int format_operation(ColorFormat format) {
    if (format == ColorFormat::rgb16) return ZEL_COLOR_TRANSFORM_16_BIT;
    return format == ColorFormat::rgb8 ? ZEL_COLOR_TRANSFORM_8_BIT_RGB : ZEL_COLOR_TRANSFORM_8_BIT_RGBX;
}

inline void require_color(bool done, const char* what) {
    if (!done) throw Error(ErrorKind::refused, what, "the SDK does not do it for this camera");
}

// The camera's own matrices lead to the color space that it names. What is concatenated last acts on a pixel first, so
// the way from there to the wanted space comes before them.
inline void concatenate_matrices(CameraState& camera, ColorSpace wanted) {
    ZelCameraInternal* const native = camera.internal();
    if (wanted == ColorSpace::sensor) {
        return require_color(native->ConcatenateColorMatrix(kIdentity), "the color transform can't be set");
    }
    char text[72] = {};
    native->GetParameter(ZEL_PARAM_CCM_OUTPUT_COLOR_SPACE, sizeof text, text);
    const std::string space = trimmed({text, std::find(text, text + 32, '\0')});
    const bool from_xyz = space == "XYZ";
    if (!from_xyz && space != "CCIR 709") {
        throw Error(ErrorKind::refused, camera.label() + " has no known color space",
                    "its matrices lead to '" + space + "'", "use the sensor's own channels");
    }
    const bool to_xyz = wanted == ColorSpace::xyz;
    if (from_xyz != to_xyz) {
        require_color(native->ConcatenateColorMatrix(to_xyz ? kRgbToXyz : kXyzToRgb), "the color space can't be set");
    }
    require_color(native->ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_WHITE_BALANCE_AND_CORRECTION, 0),
                  "white balance and correction can't be applied");
}

inline void set_tables(ZelCameraInternal* camera, const ColorSetting& setting) {
    if (setting.black_level > 0) {
        const auto table = black_level_table(setting.bits, setting.black_level);
        require_color(camera->SetInputLinearizationTable(table.data(), static_cast<unsigned>(table.size() / 3), 3),
                      "the black level can't be taken off");
    } else {
        camera->SetInputLinearizationTable(nullptr, 0, 0);
    }
    if (setting.space == ColorSpace::srgb) {
        const auto table = srgb_table(setting);
        require_color(camera->SetOutputNonLinearizationTable(table.data(), static_cast<unsigned>(table.size() / 3), 3),
                      "the curve of the color space can't be set");
    } else {
        camera->SetOutputNonLinearizationTable(nullptr, 0, 0);
    }
}

inline ColorSetting set_up_color(CameraState& camera, const ColorOptions& options) {
    ZelCameraInternal* const native = camera.internal();
    if (native->IsMonochrome()) {
        throw Error(ErrorKind::refused, camera.label() + " has no color", "it is a monochrome camera");
    }
    ZelRoiBin region{};
    native->GetParameter(ZEL_PARAM_ROI_BIN, sizeof region, &region);
    if (region.XBin > 1 || region.YBin > 1) {
        throw Error(ErrorKind::refused, "color frames are not binned", "the camera is set to binning",
                    "set both factors to 1");
    }
    const auto number = [&](unsigned id) {
        int value = 0;
        return native->GetParameter(id, sizeof value, &value) ? value : 0;
    };
    ColorSetting setting{options.format, options.space, 0, 0};
    setting.bits = static_cast<unsigned>(std::clamp(number(ZEL_PARAM_BITS_PER_PIXEL), 1, 16));
    if (setting.space != ColorSpace::sensor) {
        const int darkest = (1 << setting.bits) - 2;
        setting.black_level = static_cast<unsigned>(std::clamp(number(ZEL_PARAM_OPTICAL_BLACK_LEVEL), 0, darkest));
    }
    require_color(native->ConcatenateColorTransform(format_operation(setting.format), 0), "color frames can't be made");
    concatenate_matrices(camera, setting.space);
    set_tables(native, setting);
    return setting;
}

}  // namespace zel::detail

#endif
