// What the user sets through ZEL_SIM_... environment variables.
#ifndef SIM_SETTINGS_H
#define SIM_SETTINGS_H

#include <cstdint>
#include <string>

#include "devices/sim/sensor/Sensor.h"

namespace zel::sim {

struct Settings {
    int cameras = 0;      // -1: the library says that it failed
    unsigned width = 0;   // 0: the model's
    unsigned height = 0;  // 0: the model's
    double speed = 1.0;   // how much faster than a real camera; 0: as fast as the computer can
    std::uint64_t seed = 1;
    std::string scene = "builtin";
    SensorFill fill = SensorFill::kNoise;
    int cfa_phase = 0;        // 0: the model's
    std::string color_space;  // empty: the model's
    bool even_taps = false;   // the taps of a camera do not differ
    int calc_delay_ms = 20;   // how long a recalculation takes

    bool Paced() const { return speed > 0.0; }
};

// Reads the environment. cameras_variable: the name of the variable with this library's number of cameras. A value that
// makes no sense is reported on the standard error stream and replaced by the default.
Settings ReadSettings(const char* cameras_variable, int default_cameras);

}  // namespace zel::sim

#endif
