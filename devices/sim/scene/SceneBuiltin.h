// The built-in scene: test cards lying on a field of glowing spots, with rulers along two edges.
#ifndef SIM_SCENEBUILTIN_H
#define SIM_SCENEBUILTIN_H

#include <vector>

#include "devices/sim/scene/ChartPlacement.h"
#include "devices/sim/scene/SceneCard.h"
#include "devices/sim/scene/SceneRuler.h"
#include "devices/sim/scene/SceneSpots.h"

namespace zel::sim {

class SceneBuiltin : public Scene {
  public:
    SceneBuiltin(unsigned width, unsigned height);

    void Row(unsigned y, std::span<Rgb> row) const override;

  private:
    // A card's place in the frame, in pixels.
    struct Placed {
        const SceneCard* card = nullptr;
        double left = 0.0;
        double top = 0.0;
        double right = 0.0;
        double bottom = 0.0;
    };

    Rgb CardPixel(const Placed& placed, double x, double y, const Rgb& behind) const;

    ChartPlacement m_Placement;
    SceneSpots m_Spots;
    SceneRuler m_Ruler;
    std::vector<PlacedCard> m_Cards;
    std::vector<Placed> m_Placed;
};

}  // namespace zel::sim

#endif
