#include "devices/sim/link/SimPlugin.h"

namespace zel::sim {

namespace {

constexpr PluginDescription kPlugin = {
    .port_type_text = "USB 3.0",
    .address_formats = {"bus 1", "device #", "simulated"},
    .interface_type = CAMERA_TYPE_USB,
};

class ZelUsb : public SimPlugin {
  public:
    explicit ZelUsb(kit::Cameras& cameras) : SimPlugin(cameras, kPlugin) {}
};

}  // namespace

}  // namespace zel::sim

ZEL_CAMERA_PLUGIN(zel::sim::ZelUsb, "USB", "zel_usb.dll - 1.0.0.0", CAMERA_TYPE_USB);
