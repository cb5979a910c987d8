#include "sdk/CameraTables.h"

#include "camera/ZelCameraFactory.h"

namespace zel {

// Never destroyed: an application may end without Close while a plug-in still reports events.
CameraTables& Tables() {
    static CameraTables& tables = *new CameraTables;
    return tables;
}

void CameraTables::Init() {
    const platform::ScopedLock guard(lock);
    _zel_camera_array.fill(nullptr);
    _icamera_libs.fill(LibraryRecord{});
    cameras.ForgetClosed();
}

void CameraTables::ClearForSearch() {
    const platform::ScopedLock guard(lock);
    number_of_cameras = 0;
    for (TextSlot& slot : names) slot.Clear();
    for (TextSlot& slot : _zel_camera_interface_type_str) slot.Clear();
    for (TextSlot& slot : serial_numbers) slot.Clear();
    for (TextSlot& slot : addresses) slot.Clear();
    camera_library_index.fill(0);
    _zel_camera_array.fill(nullptr);
}

LibraryRecord CameraTables::Library(int library) {
    const platform::ScopedLock guard(lock);
    return _icamera_libs[static_cast<std::size_t>(library)];
}

void CameraTables::StoreText(TextSlot& slot, const char* text) {
    const platform::ScopedLock guard(lock);
    slot.Store(text);
}

TextSlot CameraTables::CopyText(const TextSlot& slot) {
    const platform::ScopedLock guard(lock);
    return slot;
}

ICameraInterface* CameraTables::CreateInterface(CreateCameraInterfaceFunction create_camera_interface, int cam_index,
                                                TextSlot& slot, TextSlot& handed) {
    const TextSlot before = CopyText(slot);
    handed = before;
    ICameraInterface* camera_interface = create_camera_interface(cam_index, handed.Data());
    handed.Terminate();
    if (handed != before) {
        const platform::ScopedLock guard(lock);
        slot = handed;
    }
    return camera_interface;
}

ZelCamera* CameraTables::HandOutCamera(std::size_t number) {
    const platform::ScopedLock guard(lock);
    ZelCamera* const camera = _zel_camera_array[number];
    if (camera) cameras.HandOut(camera);
    return camera;
}

void CameraTables::ReplaceCamera(const ZelCamera* old, ZelCamera* camera) {
    for (ZelCamera*& place : _zel_camera_array) {
        if (old && place == old) place = camera;
    }
}

const std::vector<RegisteredCamera>& CameraTables::TakeCameras() {
    const platform::ScopedLock guard(lock);
    const std::vector<RegisteredCamera>& taken = cameras.CloseAll(_zel_camera_array.data(), kMaxCameras);
    _zel_camera_array.fill(nullptr);
    return taken;
}

bool CameraTables::CallerIsInside() {
    if (gate.Inside()) return true;
    const platform::ScopedLock guard(lock);
    bool inside = false;
    cameras.ForEach([&](const RegisteredCamera& entry) { inside = inside || zel_camera_control_inside(entry.camera); });
    return inside;
}

}  // namespace zel
