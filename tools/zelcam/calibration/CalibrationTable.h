// One tap calibration table on the tool's side: its numbers, its files and its digest.
//
//   Master file:                        Cache file:
//     ROWS TAPS                           20 numbers, the digest of the table
//     MILLIVOLTS GAIN GAIN GAIN GAIN      then as a master file
//     ...
//
// Rows always have five numbers; those of a camera with two taps end in two zeros.
#ifndef ZELCAM_CALIBRATIONTABLE_H
#define ZELCAM_CALIBRATIONTABLE_H

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tools/zelcam/text/Json.h"

namespace zelcam {

// The two readout speeds, by the number that selects their table.
inline constexpr const char* kSpeedNames[] = {"20MHz", "40MHz"};
inline constexpr int kSpeeds = 2;

using Digest = std::array<std::uint8_t, 20>;
std::string HexText(const Digest& digest);

struct CalibrationRow {
    float millivolts = 0.0f;
    std::array<float, 4> gains{};

    bool operator==(const CalibrationRow&) const = default;
};

struct CalibrationTable {
    int taps = 0;
    std::vector<CalibrationRow> rows;

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

// Writes a text file whole or throws Failure.
void WriteTextFile(const std::filesystem::path& path, const std::string& text);

}  // namespace zelcam

#endif
