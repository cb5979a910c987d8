#include "devices/sim/link/SimPlugin.h"

#include <algorithm>

#include "devices/sim/link/Player.h"

namespace zel::sim {

namespace {

const SimLibrary& LibraryOf(int interface_type) {
    return *std::ranges::find(SimLibraries(), interface_type, &SimLibrary::interface_type);
}

}  // namespace

// Its cameras are more than their back ends, so they go to the bus itself.
SimPlugin::SimPlugin(kit::Cameras& cameras, const PluginDescription& plugin) : m_Bus(static_cast<kit::Bus&>(cameras)) {
    const int count = CamerasOf(LibraryOf(plugin.interface_type));
    m_Broken = count < 0;
    const Settings common = ReadSettings();
    for (int i = 0; i < count; ++i) {
        Settings settings = common;
        if (common.recording && !Plays(common.recording->facts, plugin.interface_type, i)) settings.recording.reset();
        LookAtRecording(settings, LookAtFrames);
        settings.seed += static_cast<std::uint64_t>(plugin.interface_type) * 1000 + static_cast<std::uint64_t>(i);
        auto camera = std::make_unique<SimCamera>(std::make_unique<SimDevice>(plugin, i, settings));
        m_Cameras.push_back(camera.get());
        m_Bus.AddCamera(std::move(camera));
    }
    if (!common.faults.empty()) m_Script = std::make_unique<FaultScript>(*this, common.faults, plugin.interface_type);
}

SimCamera* SimPlugin::Camera(int camera) const {
    return camera >= 0 && camera < static_cast<int>(m_Cameras.size()) ? m_Cameras[static_cast<std::size_t>(camera)]
                                                                      : nullptr;
}

}  // namespace zel::sim
