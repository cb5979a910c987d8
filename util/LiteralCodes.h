// The Huffman codes of a block of literals, one by one and in pairs: two bytes are looked up at once.
#ifndef UTIL_LITERALCODES_H
#define UTIL_LITERALCODES_H

#include <array>
#include <cstdint>

#include "util/HuffmanLengths.h"

namespace zel {

// The lowest `length` bits, which are written from the highest bit of the code on. 0 when 0 is the length.
struct LiteralCode {
    std::uint16_t bits;
    std::uint16_t length;
};
using LiteralCodes = std::array<LiteralCode, kLiteralSymbols>;

LiteralCodes MakeLiteralCodes(const LiteralLengths& lengths);

// The `length` lowest bits of a code backwards.
unsigned ReversedBits(unsigned code, unsigned length);

// At `first << 8 | second` the codes of two bytes one behind the other:
//
//    31                                        6  5        0
//   | second's bits | first's bits, at most 26  |  length    |
using LiteralPairs = std::array<std::uint32_t, 1 << 16>;
inline constexpr unsigned kPairLengthBits = 6;
static_assert(2 * kMaxLiteralLength + kPairLengthBits <= 32);

void MakeLiteralPairs(const LiteralCodes& codes, LiteralPairs& pairs);

}  // namespace zel

#endif
