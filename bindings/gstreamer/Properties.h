// The element's properties: what they are called, and how they become settings.
#ifndef BINDINGS_GSTREAMER_PROPERTIES_H
#define BINDINGS_GSTREAMER_PROPERTIES_H

#include <gst/gst.h>

#include "bindings/gstreamer/CameraSource.h"

namespace zel::gst {

enum Property : guint {
    kPropertyCamera = 1,
    kPropertyPlugins,
    kPropertyExposure,
    kPropertyGain,
    kPropertyMode,
    kPropertyTrigger,
    kPropertyRoi,
    kPropertyBinning,
    kPropertySettings,
    kPropertyBuffers,
    kPropertyCalibrated,
    kPropertyColor,
    kPropertyScale,
    kPropertyReconnect,
    kPropertyZeroCopy,
    kPropertyBits,
    kPropertyDropped,
    kPropertyStats,
};

void InstallProperties(GObjectClass* object_class);

// Into and out of the settings; false for a property that is none.
bool StoreProperty(Settings& settings, guint id, const GValue* value);
bool LoadProperty(const Settings& settings, guint id, GValue* value);

}  // namespace zel::gst

#endif
