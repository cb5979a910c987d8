// The kernels for processors with AVX-512: vectors of 64 bytes. Call them through Kernels().
#ifndef KERNELS_AVX512KERNELS_H
#define KERNELS_AVX512KERNELS_H

#include "kernels/Kernels.h"

namespace zel::kernels::avx512 {

// Only for processors that CpuHasAvx512() is true of. What has no form of its own here is AVX2's.
const KernelTable& Table();

}  // namespace zel::kernels::avx512

#endif
