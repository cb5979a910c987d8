// What the element tells the pipeline's bus.
#ifndef BINDINGS_GSTREAMER_MESSAGES_H
#define BINDINGS_GSTREAMER_MESSAGES_H

#include <gst/gst.h>

#include "bindings/gstreamer/CameraSource.h"
#include "zel/Error.h"

namespace zel::gst {

// An error, which ends the pipeline, or a warning: the problem as text, reason and hint with it.
void PostError(GstElement* element, const Error& error);
void PostWarning(GstElement* element, const Error& error);

// Frames are missing before the one of this time.
void PostDrops(GstElement* element, std::uint64_t dropped, std::uint64_t frames, GstClockTime time,
               GstClockTime duration);

// The property `stats`.
GstStructure* StatsOf(const Counts& counts);

}  // namespace zel::gst

#endif
