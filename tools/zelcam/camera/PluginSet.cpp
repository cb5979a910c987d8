#include "tools/zelcam/camera/PluginSet.h"

#include <algorithm>

#include "zel/Plugins.h"

namespace zelcam {

namespace {

PluginSet& Chosen() {
    static PluginSet s_Chosen;
    return s_Chosen;
}

}  // namespace

const PluginSet& ChosenPlugins() { return Chosen(); }

void ChoosePlugins(const std::string& name) { Chosen() = {name, zel::use_plugins(name)}; }

Json ToJson(const PluginSet& plugins) {
    if (plugins.folder.empty()) return nullptr;
    return {{"set", plugins.name}, {"folder", plugins.folder}};
}

bool IsSimulated(const zel::CameraInfo& camera) {
    return std::ranges::find(camera.addresses, "simulated") != camera.addresses.end();
}

}  // namespace zelcam
