// The lookup tables made of one calibration table for one analog gain: what a raw sample of a tap becomes.
#ifndef TAPBALANCE_LOOKUPTABLES_H
#define TAPBALANCE_LOOKUPTABLES_H

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "calibration/TapTable.h"
#include "kernels/LineTable.h"

namespace zel {

struct LookupTables {
    // Further entries behind each table that may be read but mean nothing: vector loads take four bytes at a time.
    static constexpr std::size_t kPadding = 2;
    static constexpr int kMostBits = 16;

    int taps = 0;
    unsigned entries = 0;  // 2 to the power of the bits per pixel
    std::array<std::vector<std::uint16_t>, kMostTaps> tables;
    std::array<kernels::LineTable, kMostTaps> lines{};  // of the tables, for kernels that use them
};

// A table of fewer rows can't be turned into lookup tables: every line is fitted through four.
inline constexpr int kFitRows = 4;

// Makes the tables of `source`, which has at least kFitRows rows, for samples of `bits` bits. Entries for which the fit
// gives a gain of 0 keep what `previous` has there; null counts as zeros.
// Everything is computed in double precision, with the line of each window of rows fitted once.
std::shared_ptr<const LookupTables> MakeLookupTables(const TapTable& source, int bits, float gain,
                                                     const LookupTables* previous);

// A set that is in use, kept alive by every copy. Empty when there is nothing to correct with.
struct TapTables {
    int taps = 0;
    unsigned mask = 0;  // the number of entries less one
    std::array<std::span<const std::uint16_t>, kMostTaps> lut;
    std::array<const kernels::LineTable*, kMostTaps> lines{};
    std::shared_ptr<const LookupTables> owner;

    explicit operator bool() const { return taps != 0; }
    // Puts samples of one tap through its table.
    void LookUp(std::span<std::uint16_t> samples, std::size_t tap, unsigned value_mask) const;
};

}  // namespace zel

#endif
