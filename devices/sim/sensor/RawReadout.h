// How a sensor's picture leaves the camera: the order in which the taps deliver it, and the packing on the link. The
// inverse of what the SDK's post-processing undoes.
#ifndef SIM_RAWREADOUT_H
#define SIM_RAWREADOUT_H

#include <cstdint>
#include <span>

namespace zel::sim {

// Rows have an even number of samples, and `raw` has room for them all.

// Two taps: a row as pairs, a sample from the left edge moving right, one from the right edge moving left.
void ReadOutTwoTaps(std::span<const std::uint16_t> row, std::span<std::uint16_t> raw);

// Four taps: a row of the upper half and its mirror image below as groups of four: top from the left, top from the
// right, bottom from the left, bottom from the right. Row pairs move from the top and bottom edges to the middle.
void ReadOutFourTaps(std::span<const std::uint16_t> top, std::span<const std::uint16_t> bottom,
                     std::span<std::uint16_t> raw);

// Packs pairs of 12-bit samples a, b into three bytes:
//
//    byte 0: bits 11..4 of a     byte 1: bits 3..0 of b | bits 3..0 of a     byte 2: bits 11..4 of b
//
// Bits above 11 are dropped. A buffer too small for all samples gets the pairs that fit.
void Pack12(std::span<const std::uint16_t> samples, std::span<std::uint8_t> packed);

}  // namespace zel::sim

#endif
