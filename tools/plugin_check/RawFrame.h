// One frame exactly as a link delivers it, before any of the SDK's processing, as a picture to look at.
#ifndef TOOLS_PLUGIN_CHECK_RAWFRAME_H
#define TOOLS_PLUGIN_CHECK_RAWFRAME_H

#include "tools/plugin_check/PluginLibrary.h"

namespace zel::plugin_check {

enum class RawFrameKind {
    kBytes,    // packed samples stay packed: every byte is a grey value
    kSamples,  // packed samples are unpacked; the order is the one in which the taps deliver them
};

// Takes a frame with the library's first camera, read out by `taps` taps (0: as the camera is set), and writes it as a
// PGM picture, counts as they are; tells of it, as JSON or a line. False after a message on the standard error stream.
bool SaveRawFrame(const PluginLibrary& library, RawFrameKind kind, int taps, const char* file_name, bool json);

}  // namespace zel::plugin_check

#endif
