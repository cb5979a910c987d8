// A frame as a buffer of the format that was negotiated.
#ifndef BINDINGS_GSTREAMER_FRAMEBUFFER_H
#define BINDINGS_GSTREAMER_FRAMEBUFFER_H

#include <gst/base/gstbasesrc.h>
#include <gst/video/video.h>

#include "zel/Frame.h"

namespace zel::gst {

// Whether the frame's own memory can be the buffer: samples and rows lie as the format has them.
bool LiesAs(const GstVideoInfo& format, const Frame& frame);

// The frame's memory; the frame goes back to its camera with the buffer's last holder. scale: grey samples fill all 16
// bits, in place.
GstBuffer* Lend(Frame frame, bool scale);

// Fills a buffer of this format, whatever its strides. False when it can't be mapped.
bool Copy(const Frame& frame, bool scale, const GstVideoInfo& format, GstBuffer* buffer);

}  // namespace zel::gst

#endif
