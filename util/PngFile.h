// A PNG file in memory: what stands around its zlib stream.
//
//   offset   size
//        0      8  signature
//        8     25  IHDR  | length 13 | "IHDR" | width 4 | height 4 | bits | color type | 0 | 0 | 0 | CRC 4 |
//                         color type: 0 grey, 2 red, green and blue, 6 the same with opacity
//       33     13  sRGB  | length 1  | "sRGB" | 0 (perceptual) | CRC 4 |     when the samples have that curve, or
//       33     16  gAMA  | length 4  | "gAMA" | 100000 | CRC 4 |             when they are proportional to light
//        h   12+n  IDAT  | length n  | "IDAT" | zlib stream, n bytes | CRC 4 |
//   h+12+n     12  IEND  | length 0  | "IEND" | CRC 4 |
//
// Numbers are big-endian; a CRC covers a chunk's type and data.
#ifndef UTIL_PNGFILE_H
#define UTIL_PNGFILE_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "util/PngPicture.h"

namespace zel {

// Where the zlib stream begins.
std::size_t PngStreamOffset(PngLight light);

inline constexpr std::size_t kPngEndSize = 4 + 12;            // what follows it
inline constexpr std::size_t kMaxPngStreamSize = 0x7FFFFFFF;  // the largest length of a chunk

// Writes everything around a zlib stream that stands at its offset of `file` and ends kPngEndSize bytes before its end.
void FramePngStream(const PngPicture& picture, std::span<std::uint8_t> file);

}  // namespace zel

#endif
