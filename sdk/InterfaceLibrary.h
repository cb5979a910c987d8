// Loading the camera interface libraries (the plug-ins) and binding their exports.
#ifndef SDK_INTERFACELIBRARY_H
#define SDK_INTERFACELIBRARY_H

#include <algorithm>
#include <iterator>

#include "link/CameraInterfaceLibrary.h"
#include "platform/DynamicLibrary.h"

namespace zel {

// The libraries in load order, one row each; their places in it are what plug-ins and tables know them by.
struct InterfaceLibrary {
    const char* file_name;
    bool plugged_in_later = false;  // is recorded without a camera too, so that it can report one that comes later
    bool tells_ports = false;       // is asked for the port of any USB camera
};
inline constexpr InterfaceLibrary kInterfaceLibraries[] = {
    {.file_name = "edt_camera_link.dll"},
    {.file_name = "pleora_ebus.dll"},
    {.file_name = "zel_usb.dll", .plugged_in_later = true, .tells_ports = true},
};
inline constexpr int kNumInterfaceLibraries = static_cast<int>(std::size(kInterfaceLibraries));
inline constexpr int kPortLibrary = static_cast<int>(
    std::ranges::find(kInterfaceLibraries, true, &InterfaceLibrary::tells_ports) - std::begin(kInterfaceLibraries));
static_assert(kPortLibrary < kNumInterfaceLibraries);

inline const char* InterfaceLibraryName(int library) { return kInterfaceLibraries[library].file_name; }

// What is kept of a library between two camera searches. The last four entries may be null.
struct LibraryRecord {
    platform::LibraryHandle module = nullptr;
    CreateCameraInterfaceFunction create_camera_interface = nullptr;
    DestroyCameraInterfaceFunction destroy_camera_interface = nullptr;
    LibUnloadFunction lib_unload = nullptr;
    GetCameraTextFunction get_camera_port_type = nullptr;
    GetCameraTextFunction get_camera_name = nullptr;
    GetCameraTextFunction get_camera_serial_num_str = nullptr;
};

// A library as one camera search sees it: the record and the exports that only the search needs.
struct BoundLibrary {
    LibraryRecord record;
    GetNumCamerasFunction get_num_cameras = nullptr;
    GetLibraryTextFunction get_camera_interface_type_str = nullptr;
    GetCameraAddressFunction get_camera_address_str = nullptr;
    SetConnectionEventCallbackFunction set_camera_connection_event_callback = nullptr;
};

// One more load of a library by its name. Null when it can't be loaded, or the chosen set of plug-ins lacks it.
platform::LibraryHandle LoadByName(int library);

// Loads a library and binds its exports. False, with the library released again and the reason logged, when it can't be
// loaded or lacks a required export.
bool LoadInterfaceLibrary(int library, BoundLibrary& bound);

// Asks a library for its cameras and decides its fate. Result: the number of cameras of a library to record; negative
// for one that is not recorded: it failed (and stays loaded) or has no camera (and was released).
int CountCameras(int library, const BoundLibrary& bound);

// Shuts a recorded library down and unloads it; `record` must have lib_unload.
void UnloadRecordedLibrary(const LibraryRecord& record);

}  // namespace zel

#endif
