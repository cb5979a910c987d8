// The exposure time that makes a picture bright and leaves it unsaturated.
#ifndef ZELCAM_AUTOEXPOSURE_H
#define ZELCAM_AUTOEXPOSURE_H

#include <optional>

#include "tools/zelcam/view/Picture.h"

namespace zelcam {

// Where the brightest pixels shall be, as a part of what is above the black level.
inline constexpr double kWantedBrightness = 0.8;

struct ExposureStep {
    long long now = 0;  // microseconds
    long long least = 1;
    long long most = 1;
    double brightness = 0.0;  // of the brightest pixels, 0 at the black level, 1 saturated
};

// The next time to try; nothing when the present one does, or none in the range is better.
std::optional<long long> NextExposure(const ExposureStep& step);

// Of the grey samples in an area of a frame: the brightest but one in a thousand, which may be hot pixels.
double BrightnessOf(const Samples& frame, const Area& area, long long black_level);

}  // namespace zelcam

#endif
