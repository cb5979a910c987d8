// What the user sets through ZEL_SIM_... environment variables.
#ifndef SIM_SETTINGS_H
#define SIM_SETTINGS_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "devices/sim/link/SimLibraries.h"
#include "devices/sim/sensor/RecordedFrames.h"
#include "devices/sim/sensor/Sensor.h"

namespace zel::sim {

struct Settings {
    unsigned width = 0;   // 0: the model's
    unsigned height = 0;  // 0: the model's
    double speed = 1.0;   // how much faster than a real camera; 0: as fast as the computer can
    std::uint64_t seed = 1;
    std::string scene = "builtin";
    std::shared_ptr<const Recording> recording;  // which the camera plays; null: it looks at the scene
    SensorFill fill = SensorFill::kNoise;
    int cfa_phase = 0;        // 0: the model's
    std::string color_space;  // empty: the model's
    bool even_taps = false;   // the taps of a camera do not differ
    SceneMotion motion{};
    std::string faults;      // for FaultScript
    int calc_delay_ms = 20;  // how long a recalculation takes

    bool Paced() const { return speed > 0.0; }
};

// Looks at the recording that is to be played. One that can't be costs a line, and there is none then.
void LookAtRecording(Settings& settings, void (*look)(Recording& recording));

// Reads the environment. A value that makes no sense is told and replaced by the default; so is a name that is none.
Settings ReadSettings();
// How many cameras a library has; -1: it says that it failed.
int CamerasOf(const SimLibrary& library);

// The names of all variables.
std::vector<std::string> SettingNames();

}  // namespace zel::sim

#endif
