// What the factory measured of a camera's taps. The sensor behaves so, and the flash memory is delivered with it.
#ifndef SIM_CALIBRATIONDATA_H
#define SIM_CALIBRATIONDATA_H

#include <array>
#include <cstddef>
#include <vector>

#include "devices/sim/sensor/CameraModel.h"

namespace zel::sim {

// One readout speed: the gain of each tap at a series of signal levels. A level is what the converter's range of
// 2000 mV corresponds to before the variable-gain amplifier.
struct CalibrationTable {
    std::vector<float> millivolts;          // ascending
    std::vector<std::vector<float>> gains;  // one column per tap

    std::size_t Rows() const { return millivolts.size(); }
    // On the straight line between two rows; beyond the table, its first or last row's.
    double Gain(std::size_t tap, double level) const;
};

struct CalibrationData {
    std::array<CalibrationTable, 2> tables;  // 20 MHz, 40 MHz; without rows for a camera of one tap

    bool Empty() const { return tables[0].Rows() == 0; }
};

// The same for each camera of this model and serial number. With model.even_taps every gain is 1.
CalibrationData FactoryCalibration(const CameraModel& model);

}  // namespace zel::sim

#endif
