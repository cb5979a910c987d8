// Cuts the region out of a frame and bins it. Both rewrite `pixels` and the geometry fields; answering false they leave
// the frame as it was.
#ifndef IMAGE_REGIONANDBINNING_H
#define IMAGE_REGIONANDBINNING_H

#include "image/FrameGeometry.h"
#include "image/ZelImageInternal.h"
#include "sdk/Logger.h"

namespace zel {

bool CropToRegion(ZelImageInternal* image, const FrameGeometry& geometry, Logger& logger);
bool BinFrame(ZelImageInternal* image, const FrameGeometry& geometry);

}  // namespace zel

#endif
