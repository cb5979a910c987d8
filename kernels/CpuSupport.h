// What this processor and operating system run. The one place that asks.
#ifndef KERNELS_CPUSUPPORT_H
#define KERNELS_CPUSUPPORT_H

namespace zel::kernels {

// True when the processor has the extension and the system saves the registers that it needs.
bool CpuHasAvx2();
bool CpuHasFma();

}  // namespace zel::kernels

#endif
