// The same jobs done by OpenCV on one thread. Where the benchmarks were built without it, HaveOpenCv() is false and the
// jobs do nothing.
#ifndef BENCH_OPENCVPEERS_H
#define BENCH_OPENCVPEERS_H

#include <cstdint>

namespace zel::bench {

bool HaveOpenCv();
// A side x side picture of 16-bit samples to half the size by areas.
void OpenCvHalve(const std::uint16_t* frame, unsigned side);
// Adds a side x side picture to sums in single precision.
void OpenCvAccumulate(const std::uint16_t* frame, float* sums, unsigned side);

}  // namespace zel::bench

#endif
