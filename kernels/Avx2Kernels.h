// The kernels for processors with AVX2: 32-byte integer vectors and gathers. Call them through Kernels().
#ifndef KERNELS_AVX2KERNELS_H
#define KERNELS_AVX2KERNELS_H

#include "kernels/Kernels.h"

namespace zel::kernels::avx2 {

extern const KernelTable kTable;
extern const KernelTable kTableWithoutGathers;

}  // namespace zel::kernels::avx2

#endif
