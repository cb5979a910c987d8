// The AVX-512 forms of the frame kernels; ScalarKernels.h says what each one does.
#ifndef KERNELS_AVX512FRAME_H
#define KERNELS_AVX512FRAME_H

#include <cstdint>
#include <span>

#include "kernels/LineTable.h"

namespace zel::kernels::avx512 {

void Unpack12(std::span<const std::uint8_t> packed, std::span<std::uint16_t> samples);
void ReorderRowTwoTaps(std::span<const std::uint16_t> raw, std::span<std::uint16_t> row);
void UnpackRowTwoTaps(std::span<const std::uint8_t> packed, std::span<std::uint16_t> row);
void ReorderRowPairFourTaps(std::span<const std::uint16_t> raw, std::span<std::uint16_t> top,
                            std::span<std::uint16_t> bottom);
void UnpackRowPairFourTaps(std::span<const std::uint8_t> packed, std::span<std::uint16_t> top,
                           std::span<std::uint16_t> bottom);
void LookUpByLines(std::span<std::uint16_t> samples, const std::uint16_t* table, const LineTable& lines,
                   std::uint16_t index_mask, std::uint16_t value_mask);
void Bin(std::span<std::uint16_t> frame, unsigned w, unsigned h, unsigned horizontal, unsigned vertical,
         unsigned ceiling);
void AverageStep(std::span<std::uint16_t> frame, std::span<std::uint16_t> slot, std::span<std::uint32_t> sums,
                 std::uint32_t count, bool replace);

}  // namespace zel::kernels::avx512

#endif
