// Flat test cards of the built-in scene. Lengths are chart units: the chart as a whole is 1000 units wide and high.
#ifndef SIM_SCENECARD_H
#define SIM_SCENECARD_H

#include <memory>
#include <vector>

#include "devices/sim/scene/Scene.h"

namespace zel::sim {

// How bright the cards' paper and ink are.
constexpr float kPaper = 0.9f;
constexpr float kInk = 0.03f;

inline Rgb Gray(float value) { return {value, value, value}; }
inline Rgb Paint(bool ink) { return Gray(ink ? kInk : kPaper); }

class SceneCard {
  public:
    SceneCard(double width, double height) : m_Width(width), m_Height(height) {}
    virtual ~SceneCard() = default;

    double Width() const { return m_Width; }
    double Height() const { return m_Height; }

    // The color at a point of the card, from its top-left corner.
    virtual Rgb At(double x, double y) const = 0;

  private:
    double m_Width;
    double m_Height;
};

// Alternating rays from the middle: shows focus and its direction, and aliasing towards the middle.
class StarCard : public SceneCard {
  public:
    static constexpr double kRays = 36.0;  // pairs, ink first from the right downwards

    StarCard() : SceneCard(300.0, 300.0) {}
    Rgb At(double x, double y) const override;
};

// Squares of three sizes: shows distortion and seams.
class CheckerCard : public SceneCard {
  public:
    CheckerCard() : SceneCard(272.0, 216.0) {}
    Rgb At(double x, double y) const override;
};

// A dark square turned by 5 degrees: the edge response can be measured along its sides.
class EdgeCard : public SceneCard {
  public:
    EdgeCard() : SceneCard(230.0, 230.0) {}
    Rgb At(double x, double y) const override;
};

// A continuous ramp from black to full light over eleven even steps: shows clipping, noise and tap balance by level.
class StepCard : public SceneCard {
  public:
    StepCard() : SceneCard(241.0, 200.0) {}
    Rgb At(double x, double y) const override;
};

// A card and where its middle lies on the chart.
struct PlacedCard {
    std::unique_ptr<SceneCard> card;
    double x = 0.0;
    double y = 0.0;
};

std::vector<PlacedCard> MakeSceneCards();

}  // namespace zel::sim

#endif
