#include "tools/zelcam/view/AutoExposure.h"

#include <algorithm>
#include <cmath>

#include "tools/zelcam/view/FrameReducer.h"
#include "tools/zelcam/view/FrameStatistics.h"

namespace zelcam {

namespace {

constexpr double kTolerance = 0.04;
// Above, nobody knows by how much it is too bright.
constexpr double kSaturated = 0.97;
constexpr double kWayDown = 4.0;
// A dark picture is mostly noise, which tells little of the light.
constexpr double kLargestStep = 16.0;

}  // namespace

std::optional<long long> NextExposure(const ExposureStep& step) {
    if (std::abs(step.brightness - kWantedBrightness) <= kTolerance) return std::nullopt;
    const double factor = step.brightness >= kSaturated
                              ? 1.0 / kWayDown
                              : std::min(kWantedBrightness / std::max(step.brightness, 1e-6), kLargestStep);
    const double wanted = std::round(static_cast<double>(step.now) * factor);
    const double bounded = std::clamp(wanted, static_cast<double>(step.least), static_cast<double>(step.most));
    const auto next = static_cast<long long>(bounded);
    return next == step.now ? std::nullopt : std::optional(next);
}

double BrightnessOf(const Samples& frame, const Area& area, long long black_level) {
    // As many samples as there are: nothing is averaged.
    const ReducedPicture part = Reduce(frame, {0, area, frame.width, frame.height});
    const Samples samples{*part.samples, part.columns, part.rows, frame.channels, frame.bits};
    const double full = static_cast<double>((1u << std::clamp(frame.bits, 1u, 16u)) - 1);
    const double black = std::clamp(static_cast<double>(black_level), 0.0, full - 1.0);
    return (StatisticsMaker().Measure(samples).p99_9 - black) / (full - black);
}

}  // namespace zelcam
