#include "kernels/Kernels.h"

#include <atomic>

#include "kernels/Avx2Kernels.h"
#include "kernels/Avx512Kernels.h"
#include "kernels/CpuSupport.h"

namespace zel::kernels {

namespace {
bool Always() { return true; }

constexpr KernelTable kScalar{
    .variant = Variant::kScalar,
    .name = "scalar",
    .unpack12 = scalar::Unpack12,
    .reorder_row_two_taps = scalar::ReorderRowTwoTaps,
    .unpack_row_two_taps = scalar::UnpackRowTwoTaps,
    .reorder_row_pair_four_taps = scalar::ReorderRowPairFourTaps,
    .unpack_row_pair_four_taps = scalar::UnpackRowPairFourTaps,
    .look_up = scalar::LookUp,
    .look_up_by_lines = scalar::LookUpByLines,
    .bin = scalar::Bin,
    .average_step = scalar::AverageStep,
    .all_bits = scalar::AllBits,
    .demosaic_row = scalar::DemosaicRow,
    .transform_row = scalar::TransformRow,
    .pack_row = scalar::PackRow,
    .transform_pack_row = scalar::TransformPackRow,
    .map_samples = scalar::MapSamples,
    .color_row = scalar::ColorRow,
};

// In order of preference.
constexpr struct {
    Variant variant;
    const KernelTable& (*table)();
    bool (*runs)();
    bool (*preferred)();
} kPriority[] = {
    {Variant::kAvx512, avx512::Table, CpuHasAvx512, CpuHasAvx512},
    {Variant::kAvx2, []() -> const KernelTable& { return avx2::kTable; }, CpuHasAvx2, CpuHasFastGathers},
    {Variant::kAvx2WithoutGathers, []() -> const KernelTable& { return avx2::kTableWithoutGathers; }, CpuHasAvx2,
     CpuHasAvx2},
    {Variant::kScalar, []() -> const KernelTable& { return kScalar; }, Always, Always},
};

const KernelTable* Choose() {
    for (const auto& row : kPriority) {
        if (row.preferred()) return &row.table();
    }
    return &kScalar;
}

std::atomic<const KernelTable*> s_Forced{nullptr};
}  // namespace

const KernelTable& Kernels() {
    static const KernelTable* const chosen = Choose();
    const KernelTable* const forced = s_Forced.load(std::memory_order_relaxed);
    return forced ? *forced : *chosen;
}

const KernelTable* FindKernels(Variant variant) {
    for (const auto& row : kPriority) {
        if (row.variant == variant && row.runs()) return &row.table();
    }
    return nullptr;
}

void ForceKernels(const KernelTable* table) { s_Forced.store(table, std::memory_order_relaxed); }

}  // namespace zel::kernels
