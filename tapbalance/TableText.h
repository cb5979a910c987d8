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
#ifndef TAPBALANCE_TABLETEXT_H
#define TAPBALANCE_TABLETEXT_H

#include <optional>
#include <string>
#include <string_view>

#include "tapbalance/TapTable.h"

namespace zel {

struct CacheFile {
    Sha1::Digest digest{};
    TapTable table;
};

std::string FormatCacheFile(const TapTable& table, const Sha1::Digest& digest);

// Nothing, and the line for the log, when the text is not such a file.
std::optional<CacheFile> ParseCacheFile(std::string_view text, std::string& error);
std::optional<TapTable> ParseMasterFile(std::string_view text, std::string& error);

// The bytes in hexadecimal, one after the other, without leading zeros.
std::string DigestText(const Sha1::Digest& digest);

}  // namespace zel

#endif
