/// @file
/// The part of the sensor that frames show.
#ifndef ZEL_LAYER_REGION_H
#define ZEL_LAYER_REGION_H

#include <string>

#include "ZelParameters.h"

namespace zel {

/// A rectangle in sensor pixels.
struct Region {
    unsigned x = 0;       ///< left edge, counted from 0
    unsigned y = 0;       ///< upper edge
    unsigned width = 0;   ///< pixels of a row
    unsigned height = 0;  ///< rows

    /// Member by member.
    bool operator==(const Region&) const = default;
};

/// So many sensor pixels become one.
struct Binning {
    unsigned x = 1;  ///< side by side
    unsigned y = 1;  ///< below each other

    /// Member by member.
    bool operator==(const Binning&) const = default;
};

/// "x,y,width,height,xbin,ybin", as parameters are written.
inline std::string text_of(const ZelRoiBin& r) {
    std::string text;
    for (const unsigned word : {r.XOrigin, r.YOrigin, r.XPixels, r.YPixels, r.XBin, r.YBin}) {
        if (!text.empty()) text += ',';
        text += std::to_string(word);
    }
    return text;
}

/// What is wrong with a region and its binning on a sensor of so many pixels, or empty.
inline std::string region_fault(const ZelRoiBin& wanted, unsigned sensor_width, unsigned sensor_height) {
    const auto inside = [](unsigned from, unsigned length, unsigned size) {
        return length > 0 && length <= size && from <= size - length;
    };
    const auto size = [](unsigned width, unsigned height) {
        return std::to_string(width) + "x" + std::to_string(height);
    };
    if (!inside(wanted.XOrigin, wanted.XPixels, sensor_width) ||
        !inside(wanted.YOrigin, wanted.YPixels, sensor_height)) {
        return "the region is not within the frame of " + size(sensor_width, sensor_height);
    }
    if (wanted.XBin > wanted.XPixels || wanted.YBin > wanted.YPixels) {
        return "binning leaves nothing of the region of " + size(wanted.XPixels, wanted.YPixels);
    }
    return "";
}

}  // namespace zel

#endif
