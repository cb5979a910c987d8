#include "devices/sim/scene/Spectrum.h"

namespace zel::sim {
namespace {

constexpr SpectralMatrix kSpectralResponse{{
    {0.50f, 0.10f, 0.02f},
    {0.11f, 0.76f, 0.13f},
    {0.02f, 0.15f, 0.55f},
}};
// Of the one kind of pixel of a monochrome sensor; white gives 1.
constexpr std::array<float, 3> kMonochromeResponse{0.28f, 0.44f, 0.28f};

}  // namespace

const SpectralMatrix& SpectralResponse() { return kSpectralResponse; }

unsigned FilterColor(int phase, unsigned x, unsigned y) {
    // Colors of the 2 x 2 cell, row after row.
    static constexpr std::array<std::array<unsigned, 4>, 4> kCells{{
        {0, 1, 1, 2},
        {2, 1, 1, 0},
        {1, 0, 2, 1},
        {1, 2, 0, 1},
    }};
    if (phase < 1 || phase > 4) return 1;
    return kCells[static_cast<std::size_t>(phase - 1)][(y % 2) * 2 + x % 2];
}

float PixelResponse(int phase, unsigned x, unsigned y, const Rgb& light) {
    const auto& row = phase < 1 || phase > 4 ? kMonochromeResponse : kSpectralResponse[FilterColor(phase, x, y)];
    return row[0] * light.r + row[1] * light.g + row[2] * light.b;
}

}  // namespace zel::sim
