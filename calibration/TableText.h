// The two text files that hold a calibration table. Numbers are written and read alike in every locale.
//
// Cache file, one per camera and readout speed; the digest line tells which table it is a copy of:
//
//    20 decimal numbers                   the SHA-1 digest
//    ROWS TAPS
//    MV GAIN GAIN GAIN GAIN               one line per row, seven decimals; two-tap tables end in "0 0"
//
// Master file, made by hand or by a calibration program: the same without the digest line. Remarks may stand behind the
// numbers of a line and behind the table; a cache file with anything more than its table is none.
#ifndef CALIBRATION_TABLETEXT_H
#define CALIBRATION_TABLETEXT_H

#include <optional>
#include <string>
#include <string_view>

#include "calibration/TapTable.h"

namespace zel {

struct CacheFile {
    Sha1::Digest digest{};
    TapTable table;
};

// Why a text is no such file: the first thing that is wrong.
struct TableTextFault {
    enum class Kind {
        kDigest,    // not 20 numbers from 0 to 255; number: how many there are
        kShape,     // not two whole numbers; number: how many there are
        kTaps,      // number: the taps, neither 2 nor 4
        kRows,      // number: the rows, too few or too many
        kRow,       // not five numbers; number: how many there are
        kValue,     // infinite, too large for a float, or no number at all; number: its column, 0 is the level
        kMoreLines  // number: the rows of the table that they follow
    };
    Kind kind = Kind::kDigest;
    int number = 0;
    int row = 0;         // of the table, the first is 1
    int line = 0;        // that was read last, the first is 1
    bool ended = false;  // there was no further line
};

// What may stand behind the numbers of a line and behind the table.
enum class Remarks { kNone, kAllowed };

std::string FormatCacheFile(const TapTable& table, const Sha1::Digest& digest);

// Nothing, and the fault, when the text is not such a file.
std::optional<CacheFile> ParseCacheFile(std::string_view text, TableTextFault& fault);
std::optional<TapTable> ParseMasterFile(std::string_view text, Remarks remarks, TableTextFault& fault);

// The bytes in hexadecimal, one after the other, without leading zeros.
std::string DigestText(const Sha1::Digest& digest);

}  // namespace zel

#endif
