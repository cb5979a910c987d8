#include "devices/sim/plugins/Plugin.h"

namespace zel::sim {

const PluginDescription kThisPlugin = {
    .file_name = "edt_camera_link.dll",
    .version_text = "edt_camera_link.dll - 1.0.0.0",
    .interface_type_text = "Camera Link",
    .port_type_text = "Camera Link",
    .address_formats = {"unit #", "channel 0", "simulated"},
    .interface_type = CAMERA_TYPE_EDT_CAMERA_LINK,
};

}  // namespace zel::sim
