#include "devices/sim/plugins/Plugin.h"

namespace zel::sim {

const PluginDescription kThisPlugin = {
    .file_name = "zel_usb.dll",
    .version_text = "zel_usb.dll - 1.0.0.0",
    .interface_type_text = "USB",
    .port_type_text = "USB 3.0",
    .address_formats = {"bus 1", "device #", "simulated"},
    .interface_type = CAMERA_TYPE_USB,
};

}  // namespace zel::sim
