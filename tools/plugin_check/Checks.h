// The groups of checks, in the order in which they run.
#ifndef TOOLS_PLUGIN_CHECK_CHECKS_H
#define TOOLS_PLUGIN_CHECK_CHECKS_H

#include "tools/plugin_check/HostCamera.h"
#include "tools/plugin_check/PluginLibrary.h"
#include "tools/plugin_check/Report.h"

namespace zel::plugin_check {

// The library: exports, number of cameras, texts. Result: the number of cameras to check further.
int CheckLibrary(const PluginLibrary& library, Report& report);
// One camera's transport object: identity, connecting, exchanges, settings that only travel on the host's side.
void CheckLink(const PluginLibrary& library, ICameraInterface& transport, HostCamera& host, Report& report);
// Starting, frames, stopping.
void CheckAcquisition(ICameraInterface& transport, HostCamera& host, Report& report);

// Whether the transport and the library's exports outlast lib_unload. `count`: what get_num_cameras answered before.
void CheckLifetime(const PluginLibrary& library, int count, int camera, ICameraInterface& transport, Report& report);

}  // namespace zel::plugin_check

#endif
