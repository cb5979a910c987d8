// The table directory: what calibration tables a camera's flash holds, and where.
//
// Page 0 of the flash begins with it. 57 bytes, little-endian:
//
//    offset  size  field
//    0       1     number of tables; 255 = none was ever written
//    1       28    entry of table 0 (20 MHz)
//    29      28    entry of table 1 (40 MHz)
//
// An entry:
//
//    offset  size  field
//    0       2     number of rows
//    2       2     number of columns: mV and one per tap
//    4       4     where the table begins, in bytes from the start of the flash
//    8       20    SHA-1 digest of the table
#ifndef CALIBRATION_TABLEDIRECTORY_H
#define CALIBRATION_TABLEDIRECTORY_H

#include <array>
#include <cstdint>

#include "calibration/TapTable.h"

namespace zel {

struct TableEntry {
    static constexpr std::size_t kSize = 28;
    int rows = 0;
    int columns = 0;
    std::uint32_t offset = 0;
    Sha1::Digest digest{};
};

struct TableDirectory {
    static constexpr std::size_t kSize = 1 + kTapTables * TableEntry::kSize;
    static constexpr int kEmpty = 255;
    using Bytes = std::array<std::uint8_t, kSize>;

    int num_tables = kEmpty;
    std::array<TableEntry, kTapTables> entries;

    // Every field as it stands there; nothing is checked.
    static TableDirectory Decode(const Bytes& bytes);
    Bytes Encode() const;
};
static_assert(TableDirectory::kSize == 57);

}  // namespace zel

#endif
