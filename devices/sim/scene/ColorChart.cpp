#include "devices/sim/scene/ColorChart.h"

#include <algorithm>
#include <cmath>

#include "devices/sim/scene/ChartPlacement.h"

namespace zel::sim {
namespace {

constexpr std::size_t kPerRow = 6;
constexpr double kPitch = 52.0;
constexpr double kGap = 6.0;

// Linear light. Muted natural tones, mixed tones, the six pure hues, then neutral steps from white to black.
constexpr std::array<Rgb, kNumColorPatches> kColors{{
    {0.170f, 0.085f, 0.055f}, {0.540f, 0.300f, 0.215f}, {0.110f, 0.195f, 0.340f},  // bark, skin, sky
    {0.095f, 0.150f, 0.050f}, {0.230f, 0.215f, 0.440f}, {0.130f, 0.510f, 0.400f},  // leaf, lavender, sea
    {0.680f, 0.200f, 0.025f}, {0.065f, 0.105f, 0.390f}, {0.540f, 0.085f, 0.120f},  // orange, cobalt, coral
    {0.105f, 0.045f, 0.145f}, {0.340f, 0.500f, 0.045f}, {0.750f, 0.360f, 0.025f},  // plum, lime, amber
    {0.025f, 0.045f, 0.300f}, {0.060f, 0.300f, 0.065f}, {0.430f, 0.030f, 0.040f},  // blue, green, red
    {0.800f, 0.570f, 0.015f}, {0.490f, 0.090f, 0.300f}, {0.015f, 0.240f, 0.360f},  // yellow, magenta, cyan
    {0.880f, 0.880f, 0.880f}, {0.580f, 0.580f, 0.580f}, {0.360f, 0.360f, 0.360f},
    {0.190f, 0.190f, 0.190f}, {0.090f, 0.090f, 0.090f}, {0.032f, 0.032f, 0.032f},
}};

}  // namespace

ChartPatch PatchOnCard(std::size_t index) {
    return {kGap + static_cast<double>(index % kPerRow) * kPitch, kGap + static_cast<double>(index / kPerRow) * kPitch,
            kPitch - kGap, kColors[index]};
}

ColorChartCard::ColorChartCard() : SceneCard(kGap + 6.0 * kPitch, kGap + 4.0 * kPitch) {}

Rgb ColorChartCard::At(double x, double y) const {
    const double u = x - kGap;
    const double v = y - kGap;
    if (u < 0.0 || v < 0.0 || x >= Width() || y >= Height()) return Gray(0.02f);
    const auto column = static_cast<std::size_t>(u / kPitch);
    const auto row = static_cast<std::size_t>(v / kPitch);
    const double size = kPitch - kGap;
    if (u - static_cast<double>(column) * kPitch >= size || v - static_cast<double>(row) * kPitch >= size) {
        return Gray(0.02f);
    }
    return kColors[std::min(row * kPerRow + column, kNumColorPatches - 1)];
}

std::array<ScenePatch, kNumColorPatches> ColorChartPatches(unsigned width, unsigned height) {
    const ColorChartCard card;
    const ChartPlacement placement(width, height);
    const double left = placement.PixelX(kColorChartX) - card.Width() / 2 * placement.Scale();
    const double top = placement.PixelY(kColorChartY) - card.Height() / 2 * placement.Scale();
    // First and one-past-last pixel that lie wholly between two places of the frame.
    const auto inside = [](double from, double to, unsigned limit, unsigned& first, unsigned& count) {
        const double a = std::clamp(std::ceil(from), 0.0, static_cast<double>(limit));
        const double b = std::clamp(std::floor(to), a, static_cast<double>(limit));
        first = static_cast<unsigned>(a);
        count = static_cast<unsigned>(b - a);
    };
    std::array<ScenePatch, kNumColorPatches> patches;
    for (std::size_t i = 0; i < patches.size(); ++i) {
        const ChartPatch source = PatchOnCard(i);
        ScenePatch& patch = patches[i];
        patch.color = source.color;
        const double x = left + source.left * placement.Scale();
        const double y = top + source.top * placement.Scale();
        const double size = source.size * placement.Scale();
        inside(x, x + size, width, patch.left, patch.width);
        inside(y, y + size, height, patch.top, patch.height);
        if (patch.width == 0 || patch.height == 0) patch.width = patch.height = 0;
    }
    return patches;
}

}  // namespace zel::sim
