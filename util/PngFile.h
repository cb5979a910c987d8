// A 16-bit greyscale PNG file in memory: signature and three chunks.
//
//   offset   size
//        0      8  signature
//        8     25  IHDR  | length 13 | "IHDR" | width 4 | height 4 | 16 | 0 | 0 | 0 | 0 | CRC 4 |
//       33   12+n  IDAT  | length n  | "IDAT" | zlib stream, n bytes                    | CRC 4 |
//     45+n     12  IEND  | length 0  | "IEND"                                           | CRC 4 |
//
// Numbers are big-endian; a CRC covers a chunk's type and data. The zlib stream holds the scanlines:
//
//   | 0 | w samples, high byte first |  for each row: one filter byte (no filter) and the row
#ifndef UTIL_PNGFILE_H
#define UTIL_PNGFILE_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace zel {

inline constexpr std::size_t kPngStreamOffset = 41;
inline constexpr std::size_t kPngFrameSize = 57;  // the file without its zlib stream

// Bytes of the scanlines of a frame.
std::uint64_t PngScanlineBytes(std::uint32_t width, std::uint32_t height);

// Builds the scanlines of width * height samples.
void MakePngScanlines(const std::uint16_t* samples, std::uint32_t width, std::uint32_t height,
                      std::span<std::uint8_t> scanlines);

// Writes everything around a zlib stream of `stream_size` bytes that stands at kPngStreamOffset of `file`, which holds
// kPngFrameSize + stream_size bytes.
void FramePngStream(std::uint32_t width, std::uint32_t height, std::size_t stream_size, std::span<std::uint8_t> file);

}  // namespace zel

#endif
