#include "bench/Usage.h"

#include <chrono>

namespace zel::bench {

// The processor time that Windows tells goes in steps of 10 to 16 ms.
double ThreadSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}
double ProcessorSeconds() { return ThreadSeconds(); }
long PageFaults() { return -1; }
Memory MemoryInUse() { return {}; }
void ReturnFreeMemory() {}

}  // namespace zel::bench
