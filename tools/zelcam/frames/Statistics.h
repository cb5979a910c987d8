// Figures of a stream of frames.
#ifndef ZELCAM_STATISTICS_H
#define ZELCAM_STATISTICS_H

#include <vector>

namespace zelcam {

// The smallest of the values that at least `percent` per cent of them do not exceed (nearest rank); 0 without values.
double Percentile(std::vector<double> values, double percent);

}  // namespace zelcam

#endif
