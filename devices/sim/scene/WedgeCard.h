// The resolution card of the built-in scene.
#ifndef SIM_WEDGECARD_H
#define SIM_WEDGECARD_H

#include "devices/sim/scene/SceneCard.h"

namespace zel::sim {

// Two wedges of converging lines, beside each a scale in hundreds of lines per 1000 chart units (the frame's shorter
// side, in an ordinary frame). The point where the lines melt is the resolution.
class WedgeCard : public SceneCard {
  public:
    // Lines that run downwards, or (`across`) to the right.
    explicit WedgeCard(bool across) : SceneCard(across ? 240.0 : 250.0, across ? 250.0 : 240.0), m_Across(across) {}
    Rgb At(double x, double y) const override;

  private:
    bool m_Across;
};

}  // namespace zel::sim

#endif
