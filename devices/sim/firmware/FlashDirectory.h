// The tables in the flash memory. Everything is little-endian.
//
//   Directory, at the beginning of page 0:
//      0  1   number of tables, 255: none
//      1  28  entry of the 20 MHz table
//     29  28  entry of the 40 MHz table
//
//   Entry:                                       Table:
//      0  2   number of rows                        row after row, each as consecutive 32-bit floats:
//      2  2   number of columns, 1 + taps           millivolts, gain of tap 1, gain of tap 2 ...
//      4  4   offset of the table in the memory
//      8  20  SHA-1 of the table, by columns
#ifndef SIM_FLASHDIRECTORY_H
#define SIM_FLASHDIRECTORY_H

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "calibration/Sha1.h"
#include "devices/sim/sensor/CalibrationData.h"

namespace zel::sim {

// Over the taps and the rows as 32-bit integers, then the columns: millivolts, tap 1, tap 2 ...
Sha1::Digest DigestOf(const CalibrationTable& table);

// The memory's content as the camera is delivered; empty without tables.
std::vector<std::uint8_t> FlashContent(const CalibrationData& data);

// Where in the memory the gain of tap 1 lies, when a row of one of the memory's tables begins at `position`.
std::optional<std::uint32_t> FirstGainOfRowAt(std::span<const std::uint8_t> memory, std::uint32_t position);

}  // namespace zel::sim

#endif
