// A plug-in made of simulated cameras: as many as the user asks for, and the script of what goes wrong with them.
#ifndef SIM_SIMPLUGIN_H
#define SIM_SIMPLUGIN_H

#include <memory>
#include <vector>

#include "devices/kit/Bus.h"
#include "devices/sim/link/FaultScript.h"
#include "devices/sim/link/SimCamera.h"

namespace zel::sim {

class SimPlugin : public kit::Plugin {
  public:
    SimPlugin(kit::Cameras& cameras, const PluginDescription& plugin);
    ~SimPlugin() override = default;

    bool Search() override { return !m_Broken; }

    // For the control interface. Null without such a camera.
    SimCamera* Camera(int camera) const;
    bool ChangePlug(int camera, bool plugged) { return m_Bus.ChangePlug(camera, plugged); }
    void ReportEvent(int camera, const ZelCameraEvent& event) { m_Bus.ReportEvent(camera, event); }

  private:
    kit::Bus& m_Bus;
    std::vector<SimCamera*> m_Cameras;
    bool m_Broken = false;  // the library is to look so
    std::unique_ptr<FaultScript> m_Script;
};

}  // namespace zel::sim

#endif
