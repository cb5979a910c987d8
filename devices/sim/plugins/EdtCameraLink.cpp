#include "devices/sim/link/SimPlugin.h"

namespace zel::sim {

namespace {

constexpr PluginDescription kPlugin = {
    .port_type_text = "Camera Link",
    .address_formats = {"unit #", "channel 0", "simulated"},
    .interface_type = CAMERA_TYPE_EDT_CAMERA_LINK,
};

class EdtCameraLink : public SimPlugin {
  public:
    explicit EdtCameraLink(kit::Cameras& cameras) : SimPlugin(cameras, kPlugin) {}
};

}  // namespace

}  // namespace zel::sim

ZEL_CAMERA_PLUGIN(zel::sim::EdtCameraLink, "Camera Link", "edt_camera_link.dll - 1.0.0.0", CAMERA_TYPE_EDT_CAMERA_LINK);
