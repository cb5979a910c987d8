#include "devices/sim/scene/SceneBuiltin.h"

#include <algorithm>

namespace zel::sim {
namespace {

constexpr int kSubPixels = 4;  // points looked at per pixel, in each direction

}  // namespace

SceneBuiltin::SceneBuiltin(unsigned width, unsigned height)
    : m_Placement(width, height), m_Spots(width, height), m_Ruler(width, height), m_Cards(MakeSceneCards()) {
    for (const PlacedCard& placed : m_Cards) {
        const double x = m_Placement.PixelX(placed.x);
        const double y = m_Placement.PixelY(placed.y);
        const double half_width = placed.card->Width() / 2 * m_Placement.Scale();
        const double half_height = placed.card->Height() / 2 * m_Placement.Scale();
        m_Placed.push_back({placed.card.get(), x - half_width, y - half_height, x + half_width, y + half_height});
    }
}

// The mean of points spread evenly over the pixel; points beside the card see what lies behind it.
Rgb SceneBuiltin::CardPixel(const Placed& placed, double x, double y, const Rgb& behind) const {
    const double step = 1.0 / (kSubPixels * m_Placement.Scale());  // in chart units
    const double left = (x - placed.left) / m_Placement.Scale() + step / 2;
    const double top = (y - placed.top) / m_Placement.Scale() + step / 2;
    const double width = placed.card->Width();
    const double height = placed.card->Height();
    Rgb sum;
    for (int j = 0; j < kSubPixels; ++j) {
        for (int i = 0; i < kSubPixels; ++i) {
            const double u = left + i * step;
            const double v = top + j * step;
            const bool on = u >= 0.0 && u < width && v >= 0.0 && v < height;
            const Rgb color = on ? placed.card->At(u, v) : behind;
            sum = {sum.r + color.r, sum.g + color.g, sum.b + color.b};
        }
    }
    constexpr float kShare = 1.0f / (kSubPixels * kSubPixels);
    return {sum.r * kShare, sum.g * kShare, sum.b * kShare};
}

void SceneBuiltin::Row(unsigned y, std::span<Rgb> row) const {
    m_Spots.Row(y, row);
    for (const Placed& placed : m_Placed) {
        if (placed.bottom <= y || placed.top >= y + 1.0) continue;
        const auto first = static_cast<std::size_t>(std::max(placed.left, 0.0));
        for (std::size_t x = first; x < row.size() && static_cast<double>(x) < placed.right; ++x) {
            row[x] = CardPixel(placed, static_cast<double>(x), y, row[x]);
        }
    }
    m_Ruler.Row(y, row);
}

}  // namespace zel::sim
