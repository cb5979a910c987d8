#include "devices/sim/plugins/Plugin.h"

namespace zel::sim {

const PluginDescription kThisPlugin = {
    .file_name = "pleora_ebus.dll",
    .version_text = "pleora_ebus.dll - 1.0.0.0",
    .interface_type_text = "GigE",
    .port_type_text = "GigE",
    .address_formats = {"192.168.200.#", "02:5a:45:4c:00:0#", "simulated"},
    .interface_type = CAMERA_TYPE_PLEORA_EBUS,
};

}  // namespace zel::sim
