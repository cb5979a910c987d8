// Frames that are missing from a recording, by their numbers.
#ifndef ZEL_RECORDINGGAPS_H
#define ZEL_RECORDINGGAPS_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zel::record {

struct NumberGap {
    std::size_t index = 0;      // of the frame behind it
    std::uint32_t missing = 0;  // frames
};

struct NumberGaps {
    std::uint32_t step = 1;  // between the numbers of frames without a gap
    std::vector<NumberGap> gaps{};
};

// passes_over: frames may have been left out on purpose; the smallest step from number to number is then no gap.
// Counting that begins anew, as after a start, is none either.
NumberGaps FindGaps(std::span<const std::uint32_t> numbers, bool passes_over);

}  // namespace zel::record

#endif
