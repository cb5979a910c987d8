// The color kernels for processors with AVX-512. Call them through Kernels().
#ifndef KERNELS_AVX512COLOR_H
#define KERNELS_AVX512COLOR_H

#include "kernels/Kernels.h"

namespace zel::kernels::avx512 {

struct Gathers512;
struct Inserts512;

std::uint16_t AllBits(std::span<const std::uint16_t> samples);
void DemosaicRow(const MosaicRow& mosaic, const PlanarRow& out);
void TransformPackRow(const PlanarRow& row, const ColorTransform& transform, ColorFormat format, void* out);
// How entries of the maps' tables are fetched: Gathers512 or Inserts512.
template <class Fetch>
void ColorRow(const MosaicRow& mosaic, const ColorSteps& steps, const PlanarRow& scratch, void* out);

}  // namespace zel::kernels::avx512

#endif
