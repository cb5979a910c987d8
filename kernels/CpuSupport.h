// What this processor and operating system run. The one place that asks.
#ifndef KERNELS_CPUSUPPORT_H
#define KERNELS_CPUSUPPORT_H

namespace zel::kernels {

// True when the processor has the extension and the system saves the registers that it needs.
bool CpuHasAvx2();
bool CpuHasFma();

// F, BW and VBMI together: processors with the third run 64-byte vectors without lowering their frequency for them; the
// earlier ones with the first two do lower it, and are faster with AVX2.
bool CpuHasAvx512();

// True when the processor has AVX2 and its gathers beat fetching entries one by one. AMD's do not (measured on Zen 4).
bool CpuHasFastGathers();

}  // namespace zel::kernels

#endif
