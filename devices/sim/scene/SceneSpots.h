// The field of the built-in scene: faint uneven background light and glowing spots of several dyes, as a fluorescence
// microscope shows them.
#ifndef SIM_SCENESPOTS_H
#define SIM_SCENESPOTS_H

#include <vector>

#include "devices/sim/scene/Scene.h"

namespace zel::sim {

class SceneSpots {
  public:
    SceneSpots(unsigned width, unsigned height);

    // Writes row y of the field.
    void Row(unsigned y, std::span<Rgb> row) const;

  private:
    // A round spot whose brightness falls off as a gaussian.
    struct Spot {
        double y = 0.0;
        double sigma = 1.0;
        Rgb color;
        unsigned left = 0;           // first column it reaches
        std::vector<float> profile;  // along the row, from there on
    };

    void AddSpot(double x, double y, double sigma, float peak, const Rgb& dye);
    void Background(unsigned y, std::span<Rgb> row) const;

    unsigned m_Width;
    unsigned m_Height;
    std::vector<Spot> m_Spots;
};

}  // namespace zel::sim

#endif
