/// @file
/// The whole C++ layer: cameras, frames and settings as C++20 objects over the SDK's interface.
///
///     #include "zel/Zel.h"
///
///     zel::Sdk sdk;
///     zel::Camera camera = sdk.open();
///     camera.set(zel::settings::exposure, 20ms);
///     for (zel::Frame& frame : zel::every_frame(camera, 10)) use(frame.pixels());
///
/// Header-only, C++20, standard library alone; link the SDK's library. What can't be had throws zel::Error, whose text
/// says what, why and what to do; waits answer the reason instead. Nothing throws into the library.
#ifndef ZEL_LAYER_ZEL_H
#define ZEL_LAYER_ZEL_H

#include "zel/Camera.h"
#include "zel/CameraInfo.h"
#include "zel/Color.h"
#include "zel/Error.h"
#include "zel/Frame.h"
#include "zel/FrameCounter.h"
#include "zel/FrameResult.h"
#include "zel/HotPlug.h"
#include "zel/NoFrame.h"
#include "zel/Parameter.h"
#include "zel/Plugins.h"
#include "zel/Region.h"
#include "zel/SaveImage.h"
#include "zel/Sdk.h"
#include "zel/Settings.h"
#include "zel/Stream.h"

/// @namespace zel
/// The C++ layer.

/// @namespace zel::settings
/// Parameters whose values have a type, for Camera::get() and Camera::set().

#endif
