#include "devices/sim/scene/SceneCard.h"

#include <array>
#include <cmath>

#include "devices/sim/scene/ColorChart.h"
#include "devices/sim/scene/PlainMath.h"
#include "devices/sim/scene/WedgeCard.h"

namespace zel::sim {

Rgb StarCard::At(double x, double y) const {
    constexpr double kTurn = 6.283185307179586;
    const double dx = x - Width() / 2;
    const double dy = y - Height() / 2;
    const double radius = std::sqrt(dx * dx + dy * dy);
    if (radius > 140.0) return Paint(radius > 143.0 && radius < 145.0);
    if (radius < 3.0) return Paint(true);
    const int ray = static_cast<int>((PlainAtan2(dy, dx) / kTurn + 1.0) * kRays * 2.0);
    return Paint(ray % 2 == 0);
}

Rgb CheckerCard::At(double x, double y) const {
    struct Column {
        double left;
        double right;
        double square;
    };
    static constexpr std::array<Column, 3> kColumns{{{8.0, 56.0, 8.0}, {66.0, 206.0, 20.0}, {216.0, 264.0, 4.0}}};
    constexpr double kTop = 8.0;
    if (y < kTop || y >= Height() - kTop) return Paint(false);
    for (const Column& column : kColumns) {
        if (x < column.left || x >= column.right) continue;
        return Paint(
            (static_cast<int>((x - column.left) / column.square) + static_cast<int>((y - kTop) / column.square)) % 2 ==
            0);
    }
    return Paint(false);
}

Rgb EdgeCard::At(double x, double y) const {
    constexpr double kCosine = 0.99619469809174555;
    constexpr double kSine = 0.08715574274765817;
    constexpr double kHalfSide = 75.0;
    const double dx = x - Width() / 2;
    const double dy = y - Height() / 2;
    const double u = dx * kCosine + dy * kSine;
    const double v = dy * kCosine - dx * kSine;
    const bool inside = std::fabs(u) < kHalfSide && std::fabs(v) < kHalfSide;
    return Gray(inside ? 0.1f : 0.7f);
}

Rgb StepCard::At(double x, double y) const {
    constexpr double kMargin = 10.5;
    constexpr double kSteps = 11.0;
    const double u = (x - kMargin) / (Width() - 2.0 * kMargin);
    if (u < 0.0 || u >= 1.0 || y < kMargin || y >= Height() - kMargin) return Gray(0.18f);
    if (y < Height() / 2) return Gray(static_cast<float>(u));
    return Gray(static_cast<float>(static_cast<int>(u * kSteps)) / 10.0f);
}

std::vector<PlacedCard> MakeSceneCards() {
    std::vector<PlacedCard> cards;
    const auto place = [&cards](std::unique_ptr<SceneCard> card, double x, double y) {
        cards.push_back({std::move(card), x, y});
    };
    place(std::make_unique<WedgeCard>(false), 190.0, 185.0);
    place(std::make_unique<EdgeCard>(), 825.0, 185.0);
    place(std::make_unique<WedgeCard>(true), 190.0, 500.0);
    place(std::make_unique<StarCard>(), 500.0, 500.0);
    place(std::make_unique<StepCard>(), 825.0, 500.0);
    place(std::make_unique<ColorChartCard>(), kColorChartX, kColorChartY);
    place(std::make_unique<CheckerCard>(), 805.0, 840.0);
    return cards;
}

}  // namespace zel::sim
