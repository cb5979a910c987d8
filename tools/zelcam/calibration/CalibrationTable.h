// One tap calibration table on the tool's side: its numbers, its files (calibration/TableText.h) and its digest.
#ifndef ZELCAM_CALIBRATIONTABLE_H
#define ZELCAM_CALIBRATIONTABLE_H

#include <filesystem>
#include <string>
#include <vector>

#include "calibration/TapTable.h"
#include "tools/zelcam/text/Json.h"

namespace zelcam {

// The two readout speeds, by the number that selects their table.
inline constexpr int kSpeeds = zel::kTapTables;
inline constexpr auto& kSpeedNames = zel::kReadoutNames;

using Digest = zel::Sha1::Digest;
std::string HexText(const Digest& digest);

using CalibrationRow = zel::TapRow;

struct CalibrationTable {
    int taps = 0;
    std::vector<CalibrationRow> rows;

    CalibrationTable() = default;
    explicit CalibrationTable(const zel::TapTable& table);
    bool operator==(const CalibrationTable&) const = default;

    // What is wrong with the table, or empty: the taps, the number of rows, a number outside its bounds.
    std::string Fault() const;
    // The digest that the camera keeps of it.
    Digest ComputeDigest() const;
    // The largest difference between two gains of the same row and tap; tables of another shape are infinitely far.
    double LargestDifference(const CalibrationTable& other) const;
    Json ToJson() const;
};

// The table that a file name selects, as "20MHz" or "40MHz" in it. Throws Failure for any other name.
int SpeedOfFile(const std::filesystem::path& path);

struct CalibrationFile {
    CalibrationTable table;
    bool cache = false;  // it begins with a digest
    Digest digest{};
};

// Reads a master or a cache file. Throws Failure, with the line, when it is neither or Fault() finds something.
CalibrationFile ReadCalibrationFile(const std::filesystem::path& path);
// Writes a master file with as many digits as the numbers need. Throws Failure.
void WriteMasterFile(const std::filesystem::path& path, const CalibrationTable& table);

}  // namespace zelcam

#endif
