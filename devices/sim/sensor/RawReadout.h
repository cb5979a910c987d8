// How a sensor's picture leaves the camera: the order in which the taps deliver it, and the packing on the link. The
// inverse of what the SDK's post-processing undoes.
#ifndef SIM_RAWREADOUT_H
#define SIM_RAWREADOUT_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace zel::sim {

// Rearranges a picture (w * h samples, both even) into tap order.
//   1 tap   as it is (so is any other number of taps not named here)
//   2 taps  each row as pairs: a sample from the left edge moving right, one from the right edge moving left
//   4 taps  groups of four: top row from the left, top row from the right, bottom row from the left, bottom row from
//           the right; rows move from the top and bottom edges to the middle
// Does nothing when either buffer holds fewer than w * h samples.
void ReadOutTaps(std::span<const std::uint16_t> picture, unsigned w, unsigned h, int taps,
                 std::span<std::uint16_t> raw);

// Packs pairs of 12-bit samples a, b into three bytes:
//
//    byte 0: bits 11..4 of a     byte 1: bits 3..0 of b | bits 3..0 of a     byte 2: bits 11..4 of b
//
// Bits above 11 are dropped. A buffer too small for all samples gets the pairs that fit.
void Pack12(std::span<const std::uint16_t> samples, std::span<std::uint8_t> packed);

}  // namespace zel::sim

#endif
