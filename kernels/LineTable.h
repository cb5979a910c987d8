// A lookup table told by straight lines, so that its entries can be computed instead of fetched.
//
// The table is cut into 64 blocks of equal size. A block has two lines; the second takes over behind the place `last`.
// A line says by how much an entry differs from its own index:
//
//    sample, `bits` bits:    | block: 6 bits | place in the block |
//    entry = sample + whole + (slope * (place - middle of the block) + fraction), never above the largest sample
//
// Calibrations are made of lines that take turns at their rows, so two of them to a block suffice nearly everywhere.
// Where they do not, a line is marked, and the table itself decides.
#ifndef KERNELS_LINETABLE_H
#define KERNELS_LINETABLE_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace zel::kernels {

struct LineTable {
    static constexpr unsigned kBlockBits = 6;
    static constexpr std::size_t kBlocks = 1u << kBlockBits;
    static constexpr int kFractionBits = 8;
    static constexpr unsigned kLeastBits = 8;
    static constexpr unsigned kMostBits = 14;
    static constexpr std::uint8_t kMark = 0x80;  // the upper byte of a slope that no line has

    // Whole, in 16 bits with wrap-around; fraction, in 256ths; slope, signed, in 256ths of an entry per 2^16 places.
    struct Lines {
        std::uint8_t whole_low[kBlocks];
        std::uint8_t whole_high[kBlocks];
        std::uint8_t fraction[kBlocks];
        std::uint8_t slope_low[kBlocks];
        std::uint8_t slope_high[kBlocks];
    };

    alignas(64) std::uint8_t last[kBlocks];  // places of a block count from 0 to 255, whatever its size
    Lines lines[2];
    unsigned bits = 0;  // of a sample; 0: the lines do not tell the table

    bool Usable() const { return bits != 0; }
    // The entry for a sample, by the arithmetic that vector forms use; -1 where the line is marked.
    int Entry(unsigned sample) const;
};

// The lines of a table of 2 to the power of `bits` entries. Every entry is computed from them once and compared; a
// table that would have to be asked too often, or whose samples have too few or too many bits, gets none.
LineTable MakeLineTable(std::span<const std::uint16_t> table, unsigned bits);

}  // namespace zel::kernels

#endif
