// A scene from a PNG or JPEG file.
#ifndef SIM_SCENEFILE_H
#define SIM_SCENEFILE_H

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "devices/sim/scene/Scene.h"

namespace zel::sim {

// The picture keeps its aspect: it fills the frame, and what stands out on two sides is cut off evenly. A picture
// larger than the frame is averaged over each pixel's area, a smaller one is interpolated. Throws std::bad_alloc only.
class SceneFile : public Scene {
  public:
    // Null with a short reason when the file can't be read or is no such picture.
    static std::unique_ptr<SceneFile> Load(const std::string& path, unsigned width, unsigned height,
                                           std::string& reason);

    void Row(unsigned y, std::span<Rgb> row) const override;

  private:
    // The share of the picture's samples first, first + 1, ... in one pixel of the frame.
    struct Taps {
        std::size_t first = 0;
        std::size_t begin = 0;  // range in the list of weights
        std::size_t end = 0;
    };
    struct Axis {
        std::vector<Taps> taps;  // one per pixel of the frame
        std::vector<float> weights;
    };

    static Axis MakeAxis(std::size_t frame, std::size_t picture, double step);
    std::span<const std::uint16_t> PictureRow(std::size_t y) const;

    std::vector<std::uint16_t> m_Samples;  // red, green, blue; encoded as in the file, 16 bits
    std::size_t m_Width = 0;
    std::size_t m_Height = 0;
    Axis m_Columns;
    Axis m_Rows;
};

}  // namespace zel::sim

#endif
