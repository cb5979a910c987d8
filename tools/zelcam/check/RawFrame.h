// One frame exactly as a link delivers it, before any of the SDK's processing, as a picture to look at.
#ifndef ZELCAM_RAWFRAME_H
#define ZELCAM_RAWFRAME_H

#include <string>

#include "tools/zelcam/check/PluginLibrary.h"
#include "tools/zelcam/text/Json.h"

namespace zelcam::check {

enum class RawFrameKind {
    kBytes,    // packed samples stay packed: every byte is a grey value
    kSamples,  // packed samples are unpacked; the order is the one in which the taps deliver them
};

// Takes a frame with the library's first camera, read out by `taps` taps (0: as the camera is set), and writes it as a
// PGM picture, counts as they are; answers what it is, as a line and in `result`. Throws Failure.
std::string SaveRawFrame(const PluginLibrary& library, RawFrameKind kind, int taps, const std::string& file_name,
                         Json& result);

}  // namespace zelcam::check

#endif
