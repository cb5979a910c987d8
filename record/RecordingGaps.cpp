#include "record/RecordingGaps.h"

#include <algorithm>
#include <limits>

namespace zel::record {

namespace {

// From one frame's number to the next one's; 0 when counting began anew.
std::uint32_t StepOf(std::uint32_t before, std::uint32_t number) {
    const std::uint32_t step = number - before;
    return step > std::numeric_limits<std::int32_t>::max() ? 0 : step;
}

}  // namespace

NumberGaps FindGaps(std::span<const std::uint32_t> numbers, bool passes_over) {
    NumberGaps found;
    constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();
    std::uint32_t smallest = kNone;
    for (std::size_t i = 1; i < numbers.size(); ++i) {
        if (const std::uint32_t step = StepOf(numbers[i - 1], numbers[i])) smallest = std::min(smallest, step);
    }
    if (passes_over && smallest != kNone) found.step = smallest;
    for (std::size_t i = 1; i < numbers.size(); ++i) {
        const std::uint32_t step = StepOf(numbers[i - 1], numbers[i]);
        if (step > found.step) found.gaps.push_back({i, step - found.step});
    }
    return found;
}

}  // namespace zel::record
