// What this processor and operating system run. The one place that asks.
#ifndef KERNELS_CPUSUPPORT_H
#define KERNELS_CPUSUPPORT_H

namespace zel::kernels {

// True when the processor has the extension and the system saves the registers that it needs.
bool CpuHasAvx2();
bool CpuHasFma();

// True when the processor has AVX2 and its gathers beat fetching entries one by one. AMD's do not (measured on Zen 4).
bool CpuHasFastGathers();

}  // namespace zel::kernels

#endif
