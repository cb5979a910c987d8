// The rows of a PNG file: what its zlib stream holds.
//
//   | filter 1 | channels of the first pixel, red first, high byte first | ... | last pixel |   for each row
//
// Filter 0 leaves the bytes as they are; filter 1 ("Sub") stores each byte minus the same byte of the pixel before.
#ifndef UTIL_PNGROWS_H
#define UTIL_PNGROWS_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "util/PngPicture.h"

namespace zel {

enum class PngFilter : std::uint8_t { kNone = 0, kSub = 1 };

// Length of a row with its filter byte.
inline std::uint64_t PngRowSize(const PngPicture& picture) { return 1 + picture.BytesPerRow(); }

// Makes `count` rows from `first` on, which fill `out`.
void MakePngRows(const PngPicture& picture, std::size_t first, std::size_t count, PngFilter filter,
                 std::span<std::uint8_t> out);

}  // namespace zel

#endif
