// A camera interface library with its exports bound.
#ifndef ZELCAM_PLUGINLIBRARY_H
#define ZELCAM_PLUGINLIBRARY_H

#include <string>

#include "link/CameraInterfaceLibrary.h"
#include "link/ICameraInterface.h"
#include "platform/DynamicLibrary.h"
#include "platform/LibraryFiles.h"

namespace zelcam::check {

class PluginLibrary {
  public:
    // file: a name as the SDK has it ("zel_usb.dll"), looked for as the SDK does, or a path.
    explicit PluginLibrary(const std::string& file) : m_Handle(Load(file, m_Why)) {
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
    ~PluginLibrary() { zel::platform::UnloadSharedLibrary(m_Handle); }
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    bool Loaded() const { return m_Handle != nullptr; }
    // The system's reason when it could not be loaded.
    const std::string& Why() const { return m_Why; }
    std::string File() const { return zel::platform::FileOfLibrary(m_Handle); }
    bool Complete() const { return get_num_cameras && create_camera_interface && destroy_camera_interface; }
    template <class Function>
    void Bind(Function& function, const char* name) {
        function = zel::platform::FindFunction<Function>(m_Handle, name);
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
    static zel::platform::LibraryHandle Load(const std::string& file, std::string& why) {
        const bool path = file.find_first_of("/\\") != std::string::npos;
        const zel::platform::LibraryHandle found = path ? nullptr : zel::platform::LoadSharedLibrary(file.c_str());
        return found ? found : zel::platform::LoadLibraryFile(zel::platform::LibraryFileName(file), why);
    }

    std::string m_Why;
    zel::platform::LibraryHandle m_Handle;
};

}  // namespace zelcam::check

#endif
