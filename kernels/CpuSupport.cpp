#include "kernels/CpuSupport.h"

namespace zel::kernels {

// The compiler's run-time library reads CPUID and, for the extensions with wide registers, XGETBV.
bool CpuHasAvx2() {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0;
}

bool CpuHasFma() {
    __builtin_cpu_init();
    return __builtin_cpu_supports("fma") != 0;
}

bool CpuHasAvx512() {
    __builtin_cpu_init();
    return CpuHasAvx2() && __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
           __builtin_cpu_supports("avx512vbmi") != 0;
}

bool CpuHasFastGathers() { return CpuHasAvx2() && __builtin_cpu_is("amd") == 0; }

}  // namespace zel::kernels
