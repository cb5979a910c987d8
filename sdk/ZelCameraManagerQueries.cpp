// What the manager answers about one camera, from the tables of the last search.
#include "sdk/CameraTables.h"
#include "sdk/Logger.h"
#include "sdk/ZelCameraManager.h"

namespace zel {

namespace {

bool IsCameraNumber(int camera_number) { return camera_number >= 0 && camera_number < kMaxCameras; }

// The text of a slot, or null when it is empty.
const char* Answer(const TextSlot& slot, const char* function_name, const char* label) {
    const TextSlot text = Tables().CopyText(slot);
    if (text.Empty()) return nullptr;
    ZEL_LOG(CameraManagerLogger().Get(), kLogTrace, function_name, "%s:%s", label, text.Data());
    return slot.Data();
}

}  // namespace

ZelCamera* ZelCameraManager::GetCamera(int camera_number) {
    Logger& log = CameraManagerLogger().Get();
    ZEL_LOG(log, kLogTrace, "ZelCameraManager::GetCamera", "Enter : camera_number:%d [0-%d]", camera_number,
            kMaxCameras);
    if (!IsCameraNumber(camera_number)) return nullptr;
    ZelCamera* const camera = Tables().HandOutCamera(static_cast<std::size_t>(camera_number));
    ZEL_LOG(log, kLogTrace, "ZelCameraManager::GetCamera", "Exit - camera: %s", PointerText(camera).text);
    return camera;
}

const char* ZelCameraManager::GetCameraInterfaceTypeStr(int camera_number) {
    if (!IsCameraNumber(camera_number)) return nullptr;
    return Answer(Tables()._zel_camera_interface_type_str[static_cast<std::size_t>(camera_number)],
                  "ZelCameraManager::GetCameraInterfaceTypeStr", "Camera Interface Type");
}

const char* ZelCameraManager::GetCameraName(int camera_number) {
    if (!IsCameraNumber(camera_number)) return nullptr;
    return Answer(Tables().names[static_cast<std::size_t>(camera_number)], "ZelCameraManager::GetCameraName",
                  "Camera Name");
}

const char* ZelCameraManager::GetCameraSerialNumStr(int camera_number) {
    ZEL_LOG(CameraManagerLogger().Get(), kLogTrace, "ZelCameraManager::GetCameraSerialNumStr",
            "GetCameraSerialNumStr(camera_number:%d)", camera_number);
    if (!IsCameraNumber(camera_number)) return nullptr;
    return Answer(Tables().serial_numbers[static_cast<std::size_t>(camera_number)],
                  "ZelCameraManager::GetCameraSerialNumStr", "Camera Serial Number");
}

const char* ZelCameraManager::GetCameraAddressStr(int camera_number, int address_select) {
    if (!IsCameraNumber(camera_number) || address_select < 0 || address_select > kMaxAddressSelect) return nullptr;
    if (address_select == kPortTypeSelect) return PortType(camera_number);
    // On purpose: selection 4 reads past the camera's own three addresses, the next camera's second one.
    const int slot = kAddressesPerCamera * camera_number + address_select;
    return Answer(Tables().addresses[static_cast<std::size_t>(slot)], "ZelCameraManager::GetCameraAddressStr",
                  "Camera Address");
}

const char* ZelCameraManager::PortType(int camera_number) {
    Logger& log = CameraManagerLogger().Get();
    const auto number = static_cast<std::size_t>(camera_number);
    CameraTables& tables = Tables();
    GetCameraTextFunction get_camera_port_type = nullptr;
    int cam_index = 0;
    {
        const platform::ScopedLock guard(tables.lock);
        if (!tables._zel_camera_interface_type_str[number].Contains("USB")) return nullptr;
        get_camera_port_type = tables._icamera_libs[kPortLibrary].get_camera_port_type;
        cam_index = tables.camera_library_index[number];
    }
    if (!get_camera_port_type) {
        ZEL_LOG(log, kLogTrace, "ZelCameraManager::GetCameraAddressStr",
                "***ERROR***: icamera_libs[offset:%d] didnt have 'get_port_type'\n", kPortLibrary);
        return nullptr;
    }
    ZEL_LOG(log, kLogTrace, "ZelCameraManager::GetCameraAddressStr",
            "_icamera_libs[%d].get_camera_port_type(cam_index:%d)", kPortLibrary, cam_index);
    return get_camera_port_type(cam_index);
}

}  // namespace zel
