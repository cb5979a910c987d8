// The settings a frame is taken with, read from the camera once at the start of an acquisition. Each record keeps those
// of its own frame.
#ifndef IMAGE_FRAMEGEOMETRY_H
#define IMAGE_FRAMEGEOMETRY_H

#include "include/ZelParameters.h"

namespace zel {

struct FrameGeometry {
    int interface_type = 0;  // the kind of link, one of CAMERA_TYPE_..., or another number without one
    unsigned width = 0;      // of the full frame that the camera sends
    unsigned height = 0;
    unsigned bit_depth = 0;
    unsigned bytes_per_pixel = 0;
    int taps = 1;         // sensor readout channels: 1, 2 or 4
    int readout_mhz = 0;  // tap readout mode: 20 or 40 allow tap balancing
    int cfa_phase = 0;    // color filter at the full frame's top-left pixel, 1 to 4; 0: none
    ZelRoiBin roi{};      // region and binning, done on the host
};

}  // namespace zel

#endif
