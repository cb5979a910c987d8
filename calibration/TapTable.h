// One calibration table of a camera: at a series of signal levels, the gain of each tap.
#ifndef CALIBRATION_TAPTABLE_H
#define CALIBRATION_TAPTABLE_H

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "calibration/Sha1.h"

namespace zel {

inline constexpr int kMostTaps = 4;
inline constexpr int kTapTables = 2;  // one for the 20 MHz readout, one for the 40 MHz readout
inline constexpr int TAP_BALANCE_SELECT_20MHZ = 0;
inline constexpr int TAP_BALANCE_SELECT_40MHZ = 1;
inline constexpr const char* kReadoutNames[kTapTables] = {"20MHz", "40MHz"};

// The table whose readout a file's name tells; -1 when it tells none. Folders in front of the name do not count.
int TableOfFileName(std::string_view path);

// One row. A two-tap table uses the first two gains.
struct TapRow {
    float millivolts = 0;
    std::array<float, kMostTaps> gains{};

    bool operator==(const TapRow&) const = default;
};

// Whether the values are ones that a calibration can have: gains from 0 to 2, a level from 0 to 5000 mV.
constexpr bool IsGoodGain(float gain) { return gain >= 0.0f && gain <= 2.0f; }
constexpr bool IsGoodLevel(float millivolts) { return millivolts >= 0.0f && millivolts <= 5000.0f; }
bool IsGoodRow(const TapRow& row, int taps);

class TapTable {
  public:
    static constexpr int kMostRows = 1000;

    // 1 to 1000 rows of 3 columns (two taps) or 5 columns (four taps).
    static bool IsValidShape(int rows, int columns);

    // A table of zeros; the shape is valid.
    TapTable(int rows, int taps);

    int Rows() const { return static_cast<int>(m_Millivolts.size()); }
    int Taps() const { return m_Taps; }
    int Columns() const { return m_Taps + 1; }

    TapRow Row(int row) const;
    void SetRow(int row, const TapRow& values);
    std::span<const float> Millivolts() const { return m_Millivolts; }
    std::span<const float> Gains(int tap) const { return m_Gains[static_cast<std::size_t>(tap)]; }

    // SHA-1 over the number of taps and the number of rows (32 bits each), the mV column and then each tap's column,
    // everything little-endian. The camera keeps the digest of the same bytes.
    Sha1::Digest Digest() const;

    // The table as it stands in flash: row after row, each value a little-endian 32-bit float.
    std::vector<std::uint8_t> FlashBytes() const;

  private:
    int m_Taps;
    std::vector<float> m_Millivolts;
    std::array<std::vector<float>, kMostTaps> m_Gains;
};

// One row in flash, mV first.
constexpr int RowBytes(int columns) { return 4 * columns; }
TapRow DecodeRow(std::span<const std::uint8_t> bytes);

}  // namespace zel

#endif
