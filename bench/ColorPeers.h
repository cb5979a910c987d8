// The same color jobs done by other libraries on one thread. Where the benchmarks were built without one, its Have...()
// is false and its jobs do nothing.
#ifndef BENCH_COLORPEERS_H
#define BENCH_COLORPEERS_H

#include <cstdint>

#include "bench/OpenCvPeers.h"

namespace zel::bench {

bool HaveDc1394();
// A side x side mosaic to three interleaved channels, bilinear.
void Dc1394Demosaic(const std::uint16_t* mosaic, std::uint16_t* picture, unsigned side);
void OpenCvDemosaic(const std::uint16_t* mosaic, std::uint16_t* picture, unsigned side);
// A 3 x 3 matrix on each pixel, clamped to 14 bits.
void OpenCvTransform(const std::uint16_t* from, std::uint16_t* to, unsigned side, const float* matrix);

}  // namespace zel::bench

#endif
