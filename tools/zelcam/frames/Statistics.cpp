#include "tools/zelcam/frames/Statistics.h"

#include <algorithm>
#include <cmath>

namespace zelcam {

double Percentile(std::vector<double> values, double percent) {
    if (values.empty()) return 0.0;
    const double count = static_cast<double>(values.size());
    const double rank = std::clamp(std::ceil(percent / 100.0 * count), 1.0, count);
    const auto nth = values.begin() + static_cast<std::ptrdiff_t>(rank) - 1;
    std::nth_element(values.begin(), nth, values.end());
    return *nth;
}

}  // namespace zelcam
