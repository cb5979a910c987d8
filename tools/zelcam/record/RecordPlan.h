// How long a recording shall be, as the user writes it, and what is told of that.
#ifndef ZELCAM_RECORDPLAN_H
#define ZELCAM_RECORDPLAN_H

#include <cstdint>
#include <string>

#include "record/camera/RecordingPlan.h"

namespace zelcam {

// "500" frames, "2.5 GB", "10 min": a number and its unit.
using Amount = zel::record::RecordingLimits;
// False for any other text, and for nothing at all.
bool ParseAmount(const std::string& text, Amount& amount);

// "839.0 MB", "1.2 GB"
std::string SizeText(std::uint64_t bytes);
// "45 s", "12 min", "3 h"
std::string DurationText(double seconds);

}  // namespace zelcam

#endif
