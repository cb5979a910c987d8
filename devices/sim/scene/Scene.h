// What the simulated sensor looks at: a picture in linear light, red, green and blue, values of about 0 (dark) to 1
// (white), at the sensor's resolution.
#ifndef SIM_SCENE_H
#define SIM_SCENE_H

#include <array>
#include <memory>
#include <span>
#include <string>

namespace zel::sim {

struct Rgb {
    float r = 0.0f;
    float g = 0.0f;
    float b = 0.0f;
};

class Scene {
  public:
    virtual ~Scene() = default;

    // Writes row y, width pixels from left to right. Rows may be asked for in any order.
    virtual void Row(unsigned y, std::span<Rgb> row) const = 0;
};

// The scene called "builtin" (an empty name means the same), or the PNG or JPEG file of that name (UTF-8), scaled to
// fill the frame. A file that can't be read costs a line on stderr and gives the built-in scene. Null without memory.
std::unique_ptr<Scene> MakeScene(const std::string& name, unsigned width, unsigned height) noexcept;

// One patch of the color chart in the built-in scene: a part of the frame that shows one color only.
struct ScenePatch {
    unsigned left = 0;  // first pixel inside
    unsigned top = 0;
    unsigned width = 0;  // 0 in a frame too small to resolve the chart
    unsigned height = 0;
    Rgb color;  // linear light
};

// The 24 patches of the color chart, row by row from the top left, where they lie in a frame of the given size. The
// last six are neutral, from white to black.
constexpr std::size_t kNumColorPatches = 24;
std::array<ScenePatch, kNumColorPatches> ColorChartPatches(unsigned width, unsigned height);

}  // namespace zel::sim

#endif
