// A record's samples as the processing steps may touch them.
#ifndef IMAGE_FRAMESAMPLES_H
#define IMAGE_FRAMESAMPLES_H

#include <cstdint>
#include <span>

#include "image/ZelImageInternal.h"

namespace zel {

inline constexpr unsigned kBytesPerSample = 2;

// In 64 bits: no two 32-bit sizes overflow it.
inline std::uint64_t Area(unsigned w, unsigned h) { return std::uint64_t{w} * h; }

// The first `count` samples of the record's buffer, or none when it holds fewer.
inline std::span<std::uint16_t> Samples(const ZelImageInternal& image, std::uint64_t count) {
    if (!image.pixels || count > image.buffer_size / kBytesPerSample) return {};
    return {image.pixels, static_cast<std::size_t>(count)};
}

}  // namespace zel

#endif
