// Picture files for the sensor's tests, and sensors that look at them.
#ifndef TESTS_SENSOR_PICTUREFILE_H
#define TESTS_SENSOR_PICTUREFILE_H

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "devices/sim/sensor/Sensor.h"

namespace zel::sim::test {

using Color8 = std::array<std::uint8_t, 3>;
using ColorAt = std::function<Color8(int x, int y)>;
enum class FileKind { kPng, kJpeg };

std::vector<char> EncodePicture(FileKind kind, int width, int height, const ColorAt& color);

// A file in the temporary folder that ends with the object. `Path` is UTF-8.
class TemporaryFile {
  public:
    TemporaryFile(const std::string& name, const std::vector<char>& bytes);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& Path() const { return m_Path; }

  private:
    std::string m_Path;
};

// A small picture of one color; as a scene it lights every pixel alike.
class FlatPicture : public TemporaryFile {
  public:
    explicit FlatPicture(const Color8& color)
        : TemporaryFile("flat.png", EncodePicture(FileKind::kPng, 4, 4, [&](int, int) { return color; })) {}
};

inline SensorModel ModelOf(unsigned width, unsigned height, int phase = 0, const std::string& scene = "builtin") {
    SensorModel model;
    model.width = width;
    model.height = height;
    model.cfa_phase = phase;
    model.scene = scene;
    return model;
}

}  // namespace zel::sim::test

#endif
