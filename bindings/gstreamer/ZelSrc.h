// The element zelsrc: a live source of a camera's frames.
#ifndef BINDINGS_GSTREAMER_ZELSRC_H
#define BINDINGS_GSTREAMER_ZELSRC_H

#include <gst/gst.h>

namespace zel::gst {

GType ZelSrcType();

}  // namespace zel::gst

#endif
