// How the simulated sensor sees color: the filter in front of each pixel and what it lets through.
#ifndef SIM_SPECTRUM_H
#define SIM_SPECTRUM_H

#include <array>

#include "devices/sim/scene/Scene.h"

namespace zel::sim {

// Row r, column c: how much scene light of color c (0 red, 1 green, 2 blue) a pixel behind filter r takes in, as a
// share of what a green pixel gets from white. Filters let some of their neighbour's light through, and green sees
// most, so a picture needs the matrix undone to look natural.
using SpectralMatrix = std::array<std::array<float, 3>, 3>;
const SpectralMatrix& SpectralResponse();

// The filter (0 red, 1 green, 2 blue) of the pixel (x, y) when the top-left pixel has the phase 1 to 4.
//
//    phase 1   R G     phase 2   B G     phase 3   G R     phase 4   G B
//              G B               G R               B G               R G
//
// Any other phase: 1, a pixel without a choice.
unsigned FilterColor(int phase, unsigned x, unsigned y);

// What the pixel (x, y) takes in from its point of the scene; a phase outside 1 to 4 is a monochrome sensor.
float PixelResponse(int phase, unsigned x, unsigned y, const Rgb& light);

}  // namespace zel::sim

#endif
