// The color chart of the built-in scene: six columns, four rows of patches in a black frame.
#ifndef SIM_COLORCHART_H
#define SIM_COLORCHART_H

#include "devices/sim/scene/SceneCard.h"

namespace zel::sim {

// The chart's middle, in chart units.
constexpr double kColorChartX = 222.0;
constexpr double kColorChartY = 840.0;

class ColorChartCard : public SceneCard {
  public:
    ColorChartCard();
    Rgb At(double x, double y) const override;
};

// A patch's color and its square on the card.
struct ChartPatch {
    double left;
    double top;
    double size;
    Rgb color;
};

ChartPatch PatchOnCard(std::size_t index);

}  // namespace zel::sim

#endif
