// The pixel loops of post-processing in their plain form, the reference for every faster one. Pure functions over
// spans: callers make sure that the spans hold the geometry they pass.
#ifndef KERNELS_SCALARKERNELS_H
#define KERNELS_SCALARKERNELS_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "kernels/LineTable.h"

namespace zel::kernels::scalar {

// Bytes that n packed 12-bit samples take.
constexpr std::size_t PackedSize12(std::size_t samples) { return (samples * 3 + 1) / 2; }

// Unpacks samples.size() 12-bit samples, two in three bytes:
//
//    byte 0: bits 11..4 of the first     byte 1: bits 3..0 of the second | bits 3..0 of the first
//    byte 2: bits 11..4 of the second
//
// packed holds at least PackedSize12(samples.size()) bytes.
void Unpack12(std::span<const std::uint8_t> packed, std::span<std::uint16_t> samples);

// Puts one row of a two-tap readout into image order: sample 2k comes from column k, sample 2k + 1 from column
// w - 1 - k. With an odd width the last sample is the middle column's. raw and row have w samples and do not overlap.
void ReorderRowTwoTaps(std::span<const std::uint16_t> raw, std::span<std::uint16_t> row);

// Unpack12 and ReorderRowTwoTaps in one step. The row's first sample begins on a whole byte.
void UnpackRowTwoTaps(std::span<const std::uint8_t> packed, std::span<std::uint16_t> row);

// Puts one pair of rows of a four-tap readout into image order. raw comes in groups of four, one sample from each
// quadrant: top row from the left, top row from the right, bottom row from the left, bottom row from the right. It has
// 4 * (w / 2) samples; top and bottom have w and do not overlap it. With an odd width the middle column, which no group
// covers, keeps what it held.
void ReorderRowPairFourTaps(std::span<const std::uint16_t> raw, std::span<std::uint16_t> top,
                            std::span<std::uint16_t> bottom);

// Unpack12 and ReorderRowPairFourTaps in one step. The pair's first sample begins on a whole byte.
void UnpackRowPairFourTaps(std::span<const std::uint8_t> packed, std::span<std::uint16_t> top,
                           std::span<std::uint16_t> bottom);

// Replaces every sample p by table[p & index_mask] & value_mask. The table has index_mask + 1 entries and two more
// that may be read but are not used.
void LookUp(std::span<std::uint16_t> samples, const std::uint16_t* table, std::uint16_t index_mask,
            std::uint16_t value_mask);

// The same with a table whose lines, if there are any, are these: they may be used in its place.
void LookUpByLines(std::span<std::uint16_t> samples, const std::uint16_t* table, const LineTable& lines,
                   std::uint16_t index_mask, std::uint16_t value_mask);

// Moves the rw * rh samples at (c0, r0) of a picture w samples wide to the front, without gaps.
void Crop(std::span<std::uint16_t> frame, unsigned w, unsigned c0, unsigned r0, unsigned rw, unsigned rh);

// Sums groups of `factor` neighbours of each row, clamped to `ceiling`; the new rows stand without gaps at the front.
// Left-over columns are dropped.
// On purpose: the first sample of the frame is added to itself, clamped and halved before the others are added to it,
// so that one above half the ceiling counts as half the ceiling.
void BinHorizontal(std::span<std::uint16_t> frame, unsigned w, unsigned h, unsigned factor, unsigned ceiling);

// Sums groups of `factor` neighbours of each column, clamped to `ceiling`. Left-over rows are dropped.
// On purpose: the first sample of each column is lost, so that the first output row sums rows 1 to factor - 1 only.
void BinVertical(std::span<std::uint16_t> frame, unsigned w, unsigned h, unsigned factor, unsigned ceiling);

// Both, horizontally first, with factors from 1 to 128. What stands behind the binned frame afterwards is unspecified:
// the two operations above are the reference where it matters.
void Bin(std::span<std::uint16_t> frame, unsigned w, unsigned h, unsigned horizontal, unsigned vertical,
         unsigned ceiling);

// One step of the moving average. `sums` holds, sample by sample, the sum over the frames in the ring, `slot` the
// ring's place for this frame. The frame goes into the slot and into the sums, in the place of what the slot held when
// `replace` is set. When `count` frames are in the ring now and it is 2 or more, every sample of the frame becomes
// sum / count, truncated. All three have the same size.
void AverageStep(std::span<std::uint16_t> frame, std::span<std::uint16_t> slot, std::span<std::uint32_t> sums,
                 std::uint32_t count, bool replace);

}  // namespace zel::kernels::scalar

#endif
