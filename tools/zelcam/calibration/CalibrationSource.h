// Where the SDK would take a camera's calibration from, found without downloading it.
#ifndef ZELCAM_CALIBRATIONSOURCE_H
#define ZELCAM_CALIBRATIONSOURCE_H

#include <string>

#include "tools/zelcam/calibration/CalibrationCamera.h"

namespace zelcam {

struct CalibrationSource {
    std::string name;  // "cache", "flash", "general" or "none"
    std::string why;   // there is none; empty otherwise

    std::string Text() const;
    Json ToJson() const;
};

// The SDK's order: cache files that agree with the camera, the camera's flash memory, and general files for a camera
// that says that it has no tables.
CalibrationSource FindCalibrationSource(const zel::Camera& camera);

}  // namespace zelcam

#endif
