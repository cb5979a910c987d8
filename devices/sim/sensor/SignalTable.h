// What a light level becomes under one set of camera settings: mean signal and noise in counts.
#ifndef SIM_SIGNALTABLE_H
#define SIM_SIGNALTABLE_H

#include <vector>

#include "devices/sim/sensor/Sensor.h"

namespace zel::sim {

// Counts that one electron makes at a gain setting: conversion to millivolts, analog gain, a converter of 2000 mV.
double CountsPerElectron(const SensorModel& model, double gain);

// Electrons that dark current leaves in a pixel during the exposure.
double DarkElectrons(const SensorModel& model, const SensorSettings& settings);

class SignalTable {
  public:
    struct Signal {
        float mean = 0.0f;   // of the charge, black level not included
        float sigma = 0.0f;  // of the shot noise
    };

    // False without memory.
    bool Build(const SensorModel& model, const SensorSettings& settings) noexcept;

    const Signal* Signals() const { return m_Signals.data(); }  // one per light level
    float FullWell() const { return m_FullWell; }
    float ReadNoise() const { return m_ReadNoise; }
    float BlackLevel() const { return m_BlackLevel; }

  private:
    std::vector<Signal> m_Signals;
    float m_FullWell = 0.0f;
    float m_ReadNoise = 0.0f;
    float m_BlackLevel = 0.0f;
};

}  // namespace zel::sim

#endif
