#include "kernels/Avx2Kernels.h"
#include "kernels/Avx512Color.h"
#include "kernels/Avx512Frame.h"
#include "kernels/Avx512Kernels.h"
#include "kernels/CpuSupport.h"

namespace zel::kernels::avx512 {

namespace {
KernelTable MakeTable() {
    KernelTable table = CpuHasFastGathers() ? avx2::kTable : avx2::kTableWithoutGathers;
    table.variant = Variant::kAvx512;
    table.name = "AVX-512";
    table.uses_lines = true;
    table.unpack12 = Unpack12;
    table.reorder_row_two_taps = ReorderRowTwoTaps;
    table.unpack_row_two_taps = UnpackRowTwoTaps;
    table.reorder_row_pair_four_taps = ReorderRowPairFourTaps;
    table.unpack_row_pair_four_taps = UnpackRowPairFourTaps;
    table.look_up_by_lines = LookUpByLines;
    table.bin = Bin;
    table.average_step = AverageStep;
    table.all_bits = AllBits;
    table.demosaic_row = DemosaicRow;
    table.transform_pack_row = TransformPackRow;
    table.color_row = CpuHasFastGathers() ? ColorRow<Gathers512> : ColorRow<Inserts512>;
    return table;
}
}  // namespace

const KernelTable& Table() {
    static const KernelTable s_Table = MakeTable();
    return s_Table;
}

}  // namespace zel::kernels::avx512
