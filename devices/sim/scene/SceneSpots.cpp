#include "devices/sim/scene/SceneSpots.h"

#include <algorithm>
#include <cmath>

#include "devices/sim/scene/ChartPlacement.h"
#include "devices/sim/scene/Noise.h"
#include "devices/sim/scene/PlainMath.h"

namespace zel::sim {
namespace {

constexpr double kReach = 4.0;  // in sigmas; the spot ends there at a three-thousandth of its peak
constexpr double kMostSpots = 3000.0;

// The glow of the dyes.
constexpr std::array<Rgb, 5> kDyes{
    {{0.12f, 1.0f, 0.25f}, {1.0f, 0.35f, 0.08f}, {0.15f, 0.35f, 1.0f}, {1.0f, 0.85f, 0.25f}, {0.9f, 0.15f, 0.55f}}};

// Kinds of spots by size: many small beads, some cells, a few wide hazes.
struct Kind {
    double share;  // of all spots
    double sigma;  // smallest, in chart units
    double sigma_range;
    double peak;  // smallest
    double peak_range;
};
constexpr std::array<Kind, 3> kKinds{
    {{0.72, 1.2, 2.0, 0.08, 0.85}, {0.22, 4.0, 6.0, 0.06, 0.45}, {0.06, 18.0, 25.0, 0.02, 0.10}}};

const Kind& PickKind(double share) {
    if (share < kKinds[0].share) return kKinds[0];
    return share < kKinds[0].share + kKinds[1].share ? kKinds[1] : kKinds[2];
}

double Bell(double distance, double sigma) { return PlainExp(-0.5 * (distance / sigma) * (distance / sigma)); }

}  // namespace

SceneSpots::SceneSpots(unsigned width, unsigned height) : m_Width(width), m_Height(height) {
    const double scale = ChartPlacement(width, height).Scale();
    const double area = static_cast<double>(width) * height / (scale * scale);  // square units
    const auto count = static_cast<std::size_t>(std::clamp(area * 700e-6, 1.0, kMostSpots));
    m_Spots.reserve(count);
    RandomNumbers numbers(0xF1E1D);
    for (std::size_t i = 0; i < count; ++i) {
        const Kind& kind = PickKind(numbers.NextFraction());
        const double x = numbers.NextFraction() * width;
        const double y = numbers.NextFraction() * height;
        const double sigma = (kind.sigma + kind.sigma_range * numbers.NextFraction()) * scale;
        const double level = numbers.NextFraction();
        const auto peak = static_cast<float>(kind.peak + kind.peak_range * level * level);
        AddSpot(x, y, std::max(sigma, 0.6), peak, kDyes[numbers.NextBelow(kDyes.size())]);
    }
}

void SceneSpots::AddSpot(double x, double y, double sigma, float peak, const Rgb& dye) {
    Spot spot;
    spot.y = y;
    spot.sigma = sigma;
    spot.color = {peak * dye.r, peak * dye.g, peak * dye.b};
    spot.left = static_cast<unsigned>(std::max(x - kReach * sigma, 0.0));
    const double end = std::min(x + kReach * sigma, static_cast<double>(m_Width));
    for (double column = spot.left; column < end; column += 1.0) {
        spot.profile.push_back(static_cast<float>(Bell(column + 0.5 - x, sigma)));
    }
    m_Spots.push_back(std::move(spot));
}

// Brighter a little off the middle, falling off smoothly to the corners.
void SceneSpots::Background(unsigned y, std::span<Rgb> row) const {
    const double v = (y + 0.5) / m_Height - 0.42;
    for (std::size_t x = 0; x < row.size(); ++x) {
        const double u = (static_cast<double>(x) + 0.5) / m_Width - 0.46;
        const double level = 1.0 / (1.0 + 2.2 * (u * u + v * v));
        row[x] = {static_cast<float>(0.050 * level), static_cast<float>(0.070 * level),
                  static_cast<float>(0.085 * level)};
    }
}

void SceneSpots::Row(unsigned y, std::span<Rgb> row) const {
    row = row.first(std::min<std::size_t>(row.size(), m_Width));
    Background(y, row);
    for (const Spot& spot : m_Spots) {
        const double distance = y + 0.5 - spot.y;
        if (std::fabs(distance) > kReach * spot.sigma) continue;
        const auto bell = static_cast<float>(Bell(distance, spot.sigma));
        const Rgb color{bell * spot.color.r, bell * spot.color.g, bell * spot.color.b};
        const std::size_t end = std::min(spot.left + spot.profile.size(), row.size());
        for (std::size_t x = spot.left; x < end; ++x) {
            const float share = spot.profile[x - spot.left];
            row[x].r += share * color.r;
            row[x].g += share * color.g;
            row[x].b += share * color.b;
        }
    }
}

}  // namespace zel::sim
