// The camera search: asks every interface library for its cameras and builds the tables from scratch.
#include <algorithm>
#include <cstdint>

#include "sdk/Adoption.h"
#include "sdk/CameraTables.h"
#include "sdk/Logger.h"
#include "sdk/VersionText.h"
#include "sdk/ZelCameraManager.h"

namespace zel {

namespace {

constexpr const char* kFunction = "ZelCameraManager::GetNumberOfCameras";

// As many as the table of indices, one byte each, can tell apart: a library that invents cameras which it then does not
// make keeps the search no longer than that.
constexpr int kMaxCamerasOfLibrary = 256;

const char* TextOrEmpty(const char* text) { return text ? text : ""; }

void StoreInterfaceType(const BoundLibrary& bound, int cam_index, TextSlot& slot) {
    Logger& log = CameraManagerLogger().Get();
    if (bound.get_camera_interface_type_str) {
        const char* type = TextOrEmpty(bound.get_camera_interface_type_str());
        ZEL_LOG(log, kLogTrace, kFunction, "get_camera_interface_type_str() returned:%s", type);
        Tables().StoreText(slot, type);
    } else {
        Tables().StoreText(slot, "unknown");
        ZEL_LOG(log, kLogTrace, kFunction, "get_camera_interface_type_str() is 0 - WTF?!!");
    }
    if (bound.record.get_camera_port_type) {
        const char* port = TextOrEmpty(bound.record.get_camera_port_type(cam_index));
        ZEL_LOG(log, kLogTrace, kFunction, "get_camera_port_type(%d) : %s", cam_index, port);
        Tables().StoreText(slot, port);
    }
}

// The addresses and the serial number.
void StoreDetails(const BoundLibrary& bound, int cam_index, std::size_t number) {
    CameraTables& tables = Tables();
    if (bound.get_camera_address_str) {
        for (int select = 0; select < kAddressesPerCamera; ++select) {
            TextSlot& slot = tables.addresses[number * kAddressesPerCamera + static_cast<std::size_t>(select)];
            tables.StoreText(slot, bound.get_camera_address_str(cam_index, select));
        }
    }
    if (bound.record.get_camera_serial_num_str) {
        const char* serial = TextOrEmpty(bound.record.get_camera_serial_num_str(cam_index));
        ZEL_LOG(CameraManagerLogger().Get(), kLogTrace, kFunction, "get_camera_serial_num_str(%d) : %s", cam_index,
                serial);
        tables.StoreText(tables.serial_numbers[number], serial);
    }
}

}  // namespace

int ZelCameraManager::GetNumberOfCameras(int, int, int) {
    CameraTables& tables = Tables();
    ZEL_LOG(CameraManagerLogger().Get(), kLogTrace, kFunction, "- enter -");
    int number = 0;
    if (Lock()) {
        tables.ClearForSearch();
        for (int library = 0; library < kNumInterfaceLibraries; ++library) {
            if (!tables.gate.IsShut(CameraTables::kClosing)) SearchLibrary(library);
        }
        {
            const platform::ScopedLock guard(tables.lock);
            number = tables.number_of_cameras;
        }
        if (number > 0) ComposeVersionText();
        ZEL_LOG(CameraManagerLogger().Get(), kLogTrace, kFunction,
                "ZelCameraManager::GetNumberOfCameras()  returning %d cameras\n", number);
    } else {
        ZEL_LOG(CameraManagerLogger().Get(), kLogError, kFunction, "***ERROR***: Lock() failed");
    }
    Unlock();
    return number;
}

void ZelCameraManager::SearchLibrary(int library) {
    CameraTables& tables = Tables();
    const auto index = static_cast<std::size_t>(library);
    {
        const platform::ScopedLock guard(tables.lock);
        tables._zel_camera_index_offset[index] = -1;
    }
    BoundLibrary bound;
    if (!LoadInterfaceLibrary(library, bound)) return;
    const int count = CountCameras(library, bound);
    if (count < 0) return;
    {
        const platform::ScopedLock guard(tables.lock);
        tables._zel_camera_index_offset[index] = tables.number_of_cameras;
        tables._icamera_libs[index] = bound.record;
    }
    ZEL_LOG(CameraManagerLogger().Get(), kLogTrace, kFunction,
            "ZelCameraManager::GetNumberOfCameras() [%s] - returned %d cameras\n", InterfaceLibraryName(library),
            count);
    for (int cam_index = 0; cam_index < std::min(count, kMaxCamerasOfLibrary); ++cam_index) {
        if (tables.gate.IsShut(CameraTables::kClosing) || !AddCamera(library, bound, cam_index)) break;
    }
    if (bound.set_camera_connection_event_callback)
        bound.set_camera_connection_event_callback(&HandleCameraConnectionEvent, library);
}

// Describes one camera and makes its camera object. False when there is no room for further cameras.
bool ZelCameraManager::AddCamera(int library, const BoundLibrary& bound, int cam_index) {
    CameraTables& tables = Tables();
    std::size_t number = 0;
    {
        const platform::ScopedLock guard(tables.lock);
        number = static_cast<std::size_t>(tables.number_of_cameras);
        tables.camera_library_index[number] = static_cast<std::uint8_t>(cam_index);
        if (number >= kMaxCameras) return false;
    }
    TextSlot& slot = tables.names[number];
    if (bound.record.get_camera_name) tables.StoreText(slot, bound.record.get_camera_name(cam_index));
    ICameraInterface* camera_interface = tables.CreateInterface(bound.record.create_camera_interface, cam_index, slot,
                                                                tables.names_handed_by_search[number]);
    if (!camera_interface) return true;
    const TextSlot name = tables.CopyText(slot);

    StoreInterfaceType(bound, cam_index, tables._zel_camera_interface_type_str[number]);
    ZelCamera* camera = nullptr;
    const MadeTransport made{camera_interface, library, bound.record.destroy_camera_interface, number};
    if (!AdoptFound(made, name.Data(), camera)) return true;
    Logger& log = CameraManagerLogger().Get();
    ZEL_LOG(log, kLogTrace, kFunction, "_zel_camera_array[%d] : %s", static_cast<int>(number),
            PointerText(camera).text);
    StoreDetails(bound, cam_index, number);
    ZEL_LOG(log, kLogTrace, kFunction, "%d: name:%s", static_cast<int>(number), name.Data());

    const platform::ScopedLock guard(tables.lock);
    tables.number_of_cameras = static_cast<int>(number) + 1;
    return true;
}

}  // namespace zel
