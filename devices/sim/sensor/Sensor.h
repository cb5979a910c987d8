// The simulated image sensor: turns a scene into frames of 16-bit samples, in physical units.
//
//     photons --quantum efficiency--> electrons --conversion gain--> millivolts --taps, analog gain, ADC--> counts
//
// Shot noise, dark current, read noise and the black level are those of the model's data.
#ifndef SIM_SENSOR_H
#define SIM_SENSOR_H

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "devices/sim/sensor/FrameSource.h"
#include "devices/sim/sensor/SceneMotion.h"

namespace zel::sim {

// What does not change while the camera exists.
struct SensorModel {
    unsigned width = 0;  // pixels
    unsigned height = 0;
    int bits = 14;               // of the ADC
    int cfa_phase = 0;           // 0 = monochrome; 1 to 4: color of the top-left pixel (1 red, 2 blue, 3 and 4 green)
    double full_well = 30000.0;  // electrons
    double conversion = 0.05;    // millivolts per electron
    double quantum_efficiency = 0.6;  // electrons per photon
    double read_noise = 6.0;          // electrons, root mean square
    double dark_current = 2.0;        // electrons per pixel and second at 25 degrees Celsius; doubles every 6 degrees
    double photon_flux = 1.0e6;       // photons per pixel and second from a scene value of 1.0
    std::uint64_t seed = 1;
    std::string scene = "builtin";  // or the path of a PNG or JPEG file
    SceneMotion motion{};           // in frames of the full model
    CalibrationData taps;           // how the taps differ; empty: they do not
};

class Sensor final : public FrameSource {
  public:
    explicit Sensor(const SensorModel& model);
    ~Sensor() override;
    Sensor(const Sensor&) = delete;
    Sensor& operator=(const Sensor&) = delete;

    const SensorModel& Model() const;
    unsigned Width() const override { return Model().width; }
    unsigned Height() const override { return Model().height; }

    // Renders frame number `frame` into `image`, width * height samples, row after row, the picture as it lies on the
    // sensor. The same model, settings and number give the same frame, in all products. Frames of one sensor are
    // rendered by one thread at a time. The scene is looked at before the first frame that shows it. A buffer of fewer
    // samples stays as it is; without memory for the scene a frame is black.
    void Render(const SensorSettings& settings, SensorFill fill, std::uint64_t frame, std::span<std::uint16_t> image);

    // The same a row at a time, in any order, for who has no use for the whole picture. Row answers row y of the frame
    // begun last; it lies in `room`, of a row's samples, or in a frame that is repeated. Of a frame without content a
    // row is black.
    void Begin(const SensorSettings& settings, SensorFill fill, std::uint64_t frame) override;
    std::span<const std::uint16_t> Row(unsigned y, std::span<std::uint16_t> room) override;

    // Does what would hold the first frame up: looks at the scene, which takes a while.
    void Prepare(const SensorSettings& settings, SensorFill fill) override;

  private:
    struct State;
    std::unique_ptr<State> m_State;
};

}  // namespace zel::sim

#endif
