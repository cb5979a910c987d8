// The settings a frame is taken with, read from the camera once at the start of an acquisition. Each record keeps those
// of its own frame.
#ifndef IMAGE_FRAMEGEOMETRY_H
#define IMAGE_FRAMEGEOMETRY_H

#include "include/ZelParameters.h"

namespace zel {

struct FrameGeometry {
    // What the link makes of frames and regions.
    bool packed = true;            // those of several taps come with 12-bit samples, two in three bytes
    bool cuts_region = false;      // the host cuts the region out...
    bool region_is_size = false;   // ...by its size; else by its far corner
    bool keeps_full_size = false;  // num_pixels and size_in_bytes stay those of the full frame

    unsigned width = 0;  // of the full frame that the camera sends
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
