#include "kernels/Kernels.h"

#include <atomic>

#include "kernels/Avx2Kernels.h"
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
    .bin = scalar::Bin,
    .average_step = scalar::AverageStep,
    .all_bits = scalar::AllBits,
    .demosaic_row = scalar::DemosaicRow,
    .transform_row = scalar::TransformRow,
    .pack_row = scalar::PackRow,
    .transform_pack_row = scalar::TransformPackRow,
};

// In order of preference.
constexpr struct {
    const KernelTable* table;
    bool (*preferred)();
} kPriority[] = {
    {&avx2::kTable, CpuHasFastGathers},
    {&avx2::kTableWithoutGathers, CpuHasAvx2},
    {&kScalar, Always},
};

const KernelTable* Choose() {
    for (const auto& row : kPriority) {
        if (row.preferred()) return row.table;
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
        const bool runs_here = variant == Variant::kScalar || CpuHasAvx2();
        if (row.table->variant == variant && runs_here) return row.table;
    }
    return nullptr;
}

void ForceKernels(const KernelTable* table) { s_Forced.store(table, std::memory_order_relaxed); }

}  // namespace zel::kernels
