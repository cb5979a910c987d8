// Frames made small enough for a screen.
#ifndef ZELCAM_FRAMEREDUCER_H
#define ZELCAM_FRAMEREDUCER_H

#include "tools/zelcam/view/Picture.h"

namespace zelcam {

// The part of a frame that a page looks at. Where the screen has fewer pixels than the part, each sample is the exact
// mean over its area, rounded to the nearest; where it has as many or more, the samples are the frame's. A request that
// asks for nothing of this frame gets all of it.
ReducedPicture Reduce(const Samples& frame, const ViewRequest& request);

}  // namespace zelcam

#endif
