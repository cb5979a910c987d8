#include "devices/sim/link/SimPlugin.h"

namespace zel::sim {

namespace {

constexpr PluginDescription kPlugin = {
    .port_type_text = "GigE",
    .address_formats = {"192.168.200.#", "02:5a:45:4c:00:0#", "simulated"},
    .interface_type = CAMERA_TYPE_PLEORA_EBUS,
};

class PleoraEbus : public SimPlugin {
  public:
    explicit PleoraEbus(kit::Cameras& cameras) : SimPlugin(cameras, kPlugin) {}
};

}  // namespace

}  // namespace zel::sim

ZEL_CAMERA_PLUGIN(zel::sim::PleoraEbus, "GigE", "pleora_ebus.dll - 1.0.0.0", CAMERA_TYPE_PLEORA_EBUS);
