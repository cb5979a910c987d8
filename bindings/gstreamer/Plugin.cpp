// The plug-in that GStreamer loads: libgstzel.so.
#include <gst/gst.h>

#include "bindings/gstreamer/ZelSrc.h"

#define PACKAGE "zel-sdk"

namespace {

gboolean Register(GstPlugin* plugin) {
    return gst_element_register(plugin, "zelsrc", GST_RANK_NONE, zel::gst::ZelSrcType());
}

}  // namespace

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, zel, "Scientific cameras", Register, ZEL_VERSION, "MIT/X11",
                  "ZEL Camera SDK", "https://zel-camera-sdk.invalid/")
