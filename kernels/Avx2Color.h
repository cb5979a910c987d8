// The color kernels for processors with AVX2. Call them through Kernels().
#ifndef KERNELS_AVX2COLOR_H
#define KERNELS_AVX2COLOR_H

#include "kernels/ColorKernels.h"

namespace zel::kernels::avx2 {

std::uint16_t AllBits(std::span<const std::uint16_t> samples);
void DemosaicRow(const MosaicRow& mosaic, const PlanarRow& out);
// How entries of the transform's table are fetched: Gathers or Inserts.
template <class Fetch>
void TransformRow(const PlanarRow& row, const ColorTransform& transform);
void PackRow(const PlanarRow& row, ColorFormat format, void* out);
template <class Fetch>
void TransformPackRow(const PlanarRow& row, const ColorTransform& transform, ColorFormat format, void* out);
template <class Fetch>
void MapSamples(std::span<std::uint16_t> samples, const SampleMap& map);
template <class Fetch>
void ColorRow(const MosaicRow& mosaic, const ColorSteps& steps, const PlanarRow& scratch, void* out);

}  // namespace zel::kernels::avx2

#endif
