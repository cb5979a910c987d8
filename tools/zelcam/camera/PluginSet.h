// zelcam --plugins: the set of plug-ins that this run's cameras come from.
#ifndef ZELCAM_PLUGINSET_H
#define ZELCAM_PLUGINSET_H

#include <string>

#include "tools/zelcam/text/Json.h"
#include "zel/CameraInfo.h"

namespace zelcam {

// As the user called it, and its folder; both empty without a choice, when the SDK takes what it finds.
struct PluginSet {
    std::string name;
    std::string folder;

    // "gige, /usr/lib/..."
    std::string Text() const { return name == folder ? folder : name + ", " + folder; }
};

const PluginSet& ChosenPlugins();
// Before the SDK is used in any way. Throws zel::Error.
void ChoosePlugins(const std::string& name);

// {"set": "gige", "folder": ...}; null without a choice.
Json ToJson(const PluginSet& plugins);

// Simulated cameras say so in their address.
bool IsSimulated(const zel::CameraInfo& camera);

}  // namespace zelcam

#endif
