// What each plug-in says about itself; the exports are the same for all.
#ifndef SIM_PLUGINS_PLUGIN_H
#define SIM_PLUGINS_PLUGIN_H

#include "devices/sim/link/SimBus.h"

namespace zel::sim {

extern const PluginDescription kThisPlugin;

}  // namespace zel::sim

#endif
