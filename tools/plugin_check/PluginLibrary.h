// A camera interface library with its exports bound.
#ifndef TOOLS_PLUGIN_CHECK_PLUGINLIBRARY_H
#define TOOLS_PLUGIN_CHECK_PLUGINLIBRARY_H

#include "link/CameraInterfaceLibrary.h"
#include "link/ICameraInterface.h"
#include "platform/DynamicLibrary.h"

namespace zel::plugin_check {

class PluginLibrary {
  public:
    explicit PluginLibrary(const char* file) : m_Handle(platform::LoadSharedLibrary(file)) {
        Bind(get_num_cameras, "get_num_cameras");
        Bind(create_camera_interface, "create_camera_interface");
        Bind(destroy_camera_interface, "destroy_camera_interface");
        Bind(get_camera_interface_type_str, "get_camera_interface_type_str");
        Bind(get_version_str, "get_version_str");
        Bind(get_camera_name, "get_camera_name");
        Bind(get_camera_serial_num_str, "get_camera_serial_num_str");
        Bind(get_camera_port_type, "get_camera_port_type");
        Bind(get_camera_address_str, "get_camera_address_str");
        Bind(lib_unload, "lib_unload");
        Bind(set_camera_connection_event_callback, "set_camera_connection_event_callback");
    }
    ~PluginLibrary() { platform::UnloadSharedLibrary(m_Handle); }
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    bool Loaded() const { return m_Handle != nullptr; }
    bool Complete() const { return get_num_cameras && create_camera_interface && destroy_camera_interface; }
    template <class Function>
    void Bind(Function& function, const char* name) {
        function = platform::FindFunction<Function>(m_Handle, name);
    }

    GetNumCamerasFunction get_num_cameras;
    CreateCameraInterfaceFunction create_camera_interface;
    DestroyCameraInterfaceFunction destroy_camera_interface;
    GetLibraryTextFunction get_camera_interface_type_str;
    GetLibraryTextFunction get_version_str;
    GetCameraTextFunction get_camera_name;
    GetCameraTextFunction get_camera_serial_num_str;
    GetCameraTextFunction get_camera_port_type;
    GetCameraAddressFunction get_camera_address_str;
    LibUnloadFunction lib_unload;
    SetConnectionEventCallbackFunction set_camera_connection_event_callback;

  private:
    platform::LibraryHandle m_Handle;
};

}  // namespace zel::plugin_check

#endif
