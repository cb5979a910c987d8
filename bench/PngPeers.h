// 16-bit greyscale PNG files as other libraries write them, for comparison.
#ifndef BENCH_PNGPEERS_H
#define BENCH_PNGPEERS_H

#include <cstdint>
#include <vector>

namespace zel::bench {

// libpng at level 1 without filters.
bool SaveWithLibpng(const char* name, const std::vector<std::uint16_t>& samples, unsigned width, unsigned height);

// The same file with stb_image_write's compressor at its standard quality, and its CRC.
bool SaveWithStb(const char* name, const std::vector<std::uint16_t>& samples, unsigned width, unsigned height);

}  // namespace zel::bench

#endif
