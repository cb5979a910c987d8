// The pixel loops that the library runs: one table of functions per instruction set, all equal to the scalar reference
// to the bit. Pure functions over spans: no logging, no camera state; callers make sure that the spans hold the
// geometry they pass. ScalarKernels.h and ColorKernels.h say what each one does.
#ifndef KERNELS_KERNELS_H
#define KERNELS_KERNELS_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "kernels/ColorKernels.h"
#include "kernels/ScalarKernels.h"

namespace zel::kernels {

enum class Variant { kScalar, kAvx2WithoutGathers, kAvx2, kAvx512 };

struct KernelTable {
    Variant variant;
    const char* name;
    bool uses_lines = false;  // whether a table's lines are worth making

    decltype(&scalar::Unpack12) unpack12;
    decltype(&scalar::ReorderRowTwoTaps) reorder_row_two_taps;
    decltype(&scalar::UnpackRowTwoTaps) unpack_row_two_taps;
    decltype(&scalar::ReorderRowPairFourTaps) reorder_row_pair_four_taps;
    decltype(&scalar::UnpackRowPairFourTaps) unpack_row_pair_four_taps;
    decltype(&scalar::LookUp) look_up;
    decltype(&scalar::LookUpByLines) look_up_by_lines;
    decltype(&scalar::Bin) bin;
    decltype(&scalar::AverageStep) average_step;

    decltype(&scalar::AllBits) all_bits;
    decltype(&scalar::DemosaicRow) demosaic_row;
    decltype(&scalar::TransformRow) transform_row;
    decltype(&scalar::PackRow) pack_row;
    decltype(&scalar::TransformPackRow) transform_pack_row;
    decltype(&scalar::MapSamples) map_samples;
    decltype(&scalar::ColorRow) color_row;
};

// The fastest table that this machine runs, chosen at the first call. Any thread.
const KernelTable& Kernels();

// The table of a variant, or null where this machine or this build does not have it.
const KernelTable* FindKernels(Variant variant);

// For tests and benchmarks: Kernels() answers this table from now on; null goes back to the choice. Not while frames
// are being processed.
void ForceKernels(const KernelTable* table);

}  // namespace zel::kernels

#endif
