// A calibration table as a picture: the gain of each tap over the signal level.
#ifndef ZELCAM_CALIBRATIONPLOT_H
#define ZELCAM_CALIBRATIONPLOT_H

#include <string>

#include "tools/zelcam/calibration/CalibrationTable.h"

namespace zelcam {

// An SVG document with one curve for each tap.
std::string PlotSvg(const CalibrationTable& table, const std::string& title);

}  // namespace zelcam

#endif
