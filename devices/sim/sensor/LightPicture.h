// What the pixels of a sensor take in from the scene: one level per pixel, before exposure and noise.
#ifndef SIM_LIGHTPICTURE_H
#define SIM_LIGHTPICTURE_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zel::sim {

// Level of a pixel that takes in 1.0; levels end just below 2.0.
constexpr float kUnitLevel = 32768.0f;
constexpr std::size_t kNumLevels = 65536;

class LightPicture {
  public:
    // Looks at the scene through the color filters of the given phase. False without memory: the picture stays empty.
    bool Look(const std::string& scene, unsigned width, unsigned height, int phase) noexcept;

    std::span<const std::uint16_t> Levels() const { return m_Levels; }

  private:
    std::vector<std::uint16_t> m_Levels;  // row after row
};

}  // namespace zel::sim

#endif
