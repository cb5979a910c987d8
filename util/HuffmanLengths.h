// The lengths of a Huffman code for the 256 byte values and the mark that ends a block.
#ifndef UTIL_HUFFMANLENGTHS_H
#define UTIL_HUFFMANLENGTHS_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace zel {

inline constexpr std::size_t kEndMark = 256;
inline constexpr std::size_t kLiteralSymbols = 257;
// Two less than the format allows: the codes of two bytes and their length then fit 32 bits, those of four a word.
inline constexpr unsigned kMaxLiteralLength = 13;

using LiteralCounts = std::array<std::uint32_t, kLiteralSymbols>;
using LiteralLengths = std::array<std::uint8_t, kLiteralSymbols>;

// A length for every symbol that occurs, at most kMaxLiteralLength, and 0 for the others. At least two must occur.
LiteralLengths MakeLiteralLengths(const LiteralCounts& counts);

}  // namespace zel

#endif
