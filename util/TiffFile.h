// The head of an uncompressed 16-bit grey TIFF file: everything before the pixels.
//
//   offset  size
//        0     2  "II": little-endian
//        2     2  42
//        4     4  offset of the directory: 8
//        8     2  number of entries: 14
//       10   168  14 entries of 12 bytes: | tag 2 | type 2 | count 4 | value 4 |
//      178     4  offset of the next directory: 0, there is none
//      182     8  X resolution: | numerator 4 | denominator 4 |
//      190     8  Y resolution: the same
//      198     .  bytes per pixel * height * width bytes of pixels
#ifndef UTIL_TIFFFILE_H
#define UTIL_TIFFFILE_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace zel {

inline constexpr std::size_t kTiffHeadSize = 198;

using TiffHead = std::array<std::uint8_t, kTiffHeadSize>;

TiffHead MakeTiffHead(std::uint32_t width, std::uint32_t height, std::uint32_t pixel_bytes);

}  // namespace zel

#endif
