#include "sdk/Adoption.h"

#include "camera/ZelCameraFactory.h"
#include "link/ICameraInterface.h"
#include "sdk/CameraTables.h"

namespace zel {

namespace {

ZelCamera* CurrentOf(const ICameraInterface* camera_interface) {
    CameraTables& tables = Tables();
    const platform::ScopedLock guard(tables.lock);
    return tables.cameras.Current(camera_interface);
}

// Makes a camera object and enters it. False, with nothing left of the transport unless others share it, when there is
// no room in the register.
bool Make(const MadeTransport& transport, const char* text, ZelCamera*& camera) {
    camera = zel_camera_control_create(transport.camera_interface, text);
    if (!transport.camera_interface) return true;
    CameraTables& tables = Tables();
    bool shared = false;
    {
        const platform::ScopedLock guard(tables.lock);
        if (tables.cameras.Add(
                {camera, transport.camera_interface, transport.destroy_camera_interface, transport.library, false}))
            return true;
        shared = tables.cameras.Knows(transport.camera_interface);
    }
    zel_camera_control_destroy(camera);
    camera = nullptr;
    if (!shared) transport.destroy_camera_interface(transport.camera_interface);
    return false;
}

// An object that had this place stays in the register until the SDK is closed.
void Place(std::size_t number, ZelCamera* camera) {
    CameraTables& tables = Tables();
    const platform::ScopedLock guard(tables.lock);
    tables._zel_camera_array[number] = camera;
}

}  // namespace

bool AdoptFound(const MadeTransport& transport, const char* text, ZelCamera*& camera) {
    const platform::ScopedLock adopting(Tables().adopting);
    // What the transport names is not trusted: it may have outlived that object.
    const ZelCamera* const bound = transport.camera_interface->GetCameraObject();
    camera = CurrentOf(transport.camera_interface);
    if (camera) {
        zel_camera_control_resume(camera);
    } else if (!Make(transport, text, camera)) {
        return false;
    }
    if (bound != camera || !bound) transport.camera_interface->SetCameraObject(camera);
    Place(transport.number, camera);
    return true;
}

ZelCamera* AdoptConnected(const MadeTransport& transport, const char* text) {
    CameraTables& tables = Tables();
    const platform::ScopedLock adopting(tables.adopting);
    ZelCamera* const old = transport.camera_interface ? CurrentOf(transport.camera_interface) : nullptr;
    if (old && !zel_camera_control_retire(old)) {
        zel_camera_control_resume(old);
        Place(transport.number, old);
        return old;
    }
    if (old) {
        const platform::ScopedLock guard(tables.lock);
        tables.cameras.Retire(old);
    }
    ZelCamera* camera = nullptr;
    Make(transport, text, camera);
    Place(transport.number, camera);
    if (!old) return camera;
    {
        const platform::ScopedLock guard(tables.lock);
        tables.ReplaceCamera(old, camera);
        if (tables.cameras.HandedOut(old)) return camera;
        tables.cameras.Remove(old);
    }
    zel_camera_control_destroy(old);
    return camera;
}

}  // namespace zel
