#include "util/LiteralCodes.h"

namespace zel {

unsigned ReversedBits(unsigned code, unsigned length) {
    unsigned reversed = 0;
    for (unsigned i = 0; i < length; ++i) reversed |= (code >> i & 1u) << (length - 1 - i);
    return reversed;
}

// Shorter codes come first, and among codes of one length those of smaller symbols.
LiteralCodes MakeLiteralCodes(const LiteralLengths& lengths) {
    std::array<unsigned, kMaxLiteralLength + 2> next{};
    for (const std::uint8_t length : lengths) {
        if (length) ++next[length + 1u];
    }
    for (unsigned length = 1; length < next.size(); ++length) next[length] = (next[length - 1] + next[length]) << 1;
    LiteralCodes codes{};
    for (std::size_t i = 0; i < kLiteralSymbols; ++i) {
        const unsigned length = lengths[i];
        if (!length) continue;
        codes[i] = {static_cast<std::uint16_t>(ReversedBits(next[length]++, length)),
                    static_cast<std::uint16_t>(length)};
    }
    return codes;
}

void MakeLiteralPairs(const LiteralCodes& codes, LiteralPairs& pairs) {
    // Of the second byte: its bits, and length, where they stand when the first one has none.
    std::array<std::uint32_t, 256> bits, lengths;
    for (std::size_t i = 0; i < 256; ++i) {
        bits[i] = std::uint32_t{codes[i].bits} << kPairLengthBits;
        lengths[i] = codes[i].length;
    }
    for (std::size_t first = 0; first < 256; ++first) {
        const unsigned shift = codes[first].length;
        if (shift == 0) continue;  // it does not occur
        const std::uint32_t base = bits[first] + shift;
        std::uint32_t* const row = &pairs[first << 8];
        for (std::size_t second = 0; second < 256; ++second)
            row[second] = (bits[second] << shift) + lengths[second] + base;
    }
}

}  // namespace zel
