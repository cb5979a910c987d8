// The pixel loops of post-processing in their plain form, the reference for every faster one. Pure functions over
// spans: callers make sure that the spans hold the geometry they pass.
#ifndef KERNELS_SCALARKERNELS_H
#define KERNELS_SCALARKERNELS_H

#include <cstddef>
#include <cstdint>
#include <span>

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

// Puts a four-tap readout of w * h samples into image order. It comes in groups of four, one from each quadrant: top
// row from the left, top row from the right, bottom row from the left, bottom row from the right; rows run from the top
// and bottom edges to the middle. Samples that no group covers (odd w or h) keep what `picture` held.
void ReorderFourTaps(std::span<const std::uint16_t> raw, std::span<std::uint16_t> picture, unsigned w, unsigned h);

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

// Replaces every sample by the mean of the same sample in `count` frames, truncated. Each ring frame has at least
// frame.size() samples.
void Average(std::span<const std::uint16_t* const> ring, std::span<std::uint16_t> frame);

}  // namespace zel::kernels::scalar

#endif
