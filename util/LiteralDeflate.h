// A second way to a zlib stream: Huffman codes of single bytes, without a search for repetitions. Sensor noise hardly
// repeats itself, so that its stream gets as short this way, several times faster.
#ifndef UTIL_LITERALDEFLATE_H
#define UTIL_LITERALDEFLATE_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace zel {

// How many bytes `data` takes as one block of literals, its head included.
std::size_t LiteralBlockSize(std::span<const std::uint8_t> data);

// Writes `data` as a zlib stream of literals and answers its length; 0 when `out` is too small or `data` is empty.
std::size_t LiteralZlibCompress(std::span<const std::uint8_t> data, std::span<std::uint8_t> out);

}  // namespace zel

#endif
