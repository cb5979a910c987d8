// Rulers along the top and the left edge of the built-in scene, in pixels of the frame.
#ifndef SIM_SCENERULER_H
#define SIM_SCENERULER_H

#include "devices/sim/scene/Scene.h"

namespace zel::sim {

class SceneRuler {
  public:
    SceneRuler(unsigned width, unsigned height);

    // Draws over row y.
    void Row(unsigned y, std::span<Rgb> row) const;

  private:
    bool Marked(unsigned along, unsigned across, bool vertical) const;

    unsigned m_Dot = 0;   // pixels of a dot of the digits; 0: the frame is too small for rulers
    unsigned m_Band = 0;  // pixels from the edge that belong to a ruler
    unsigned m_LeftBand = 0;
};

}  // namespace zel::sim

#endif
