// What the exports of a library call.
#include "devices/kit/Library.h"

#include <exception>

#include "devices/kit/NeverDestroyed.h"
#include "platform/DynamicLibrary.h"
#include "platform/Mutex.h"

namespace zel::kit {

namespace {

platform::Mutex s_Lock;

// Shared with whoever is inside an export. Never destroyed: a process may end without lib_unload.
std::shared_ptr<Library>& TheLibrary() ZEL_REQUIRES(s_Lock) {
    static NeverDestroyed<std::shared_ptr<Library>> s_Library;
    return s_Library.Get();
}

}  // namespace

std::shared_ptr<Library> CurrentLibrary() {
    const platform::ScopedLock lock(s_Lock);
    std::shared_ptr<Library>& library = TheLibrary();
    try {
        if (!library) library = std::make_shared<Library>(kLibraryFacts);
    } catch (const std::exception&) {
        // It is tried again at the next question.
    }
    return library;
}

namespace detail {

int GetNumCameras() {
    platform::KeepThisLibraryLoaded();
    return OnLibrary(-1, [](Library& library) { return library.plugin->Search() ? library.bus.PluggedCount() : -1; });
}

ICameraInterface* CreateCameraInterface(int camera) {
    return OnLibrary<ICameraInterface*>(nullptr, [=](Library& library) { return library.bus.CreateTransport(camera); });
}

void DestroyCameraInterface(ICameraInterface* transport) {
    OnLibrary(0, [=](Library& library) {
        library.bus.DestroyTransport(transport);
        return 0;
    });
}

const char* GetCameraAddress(int camera, int select) {
    if (select < 0 || select > 2) return "";
    return OnLibrary("", [=](Library& library) {
        return library.bus.Text(camera, [=](const Description& description) {
            return description.addresses[static_cast<std::size_t>(select)];
        });
    });
}

const char* GetCameraName(int camera) {
    return OnLibrary("", [=](Library& library) {
        return library.bus.Text(camera, [](const Description& description) { return description.name; });
    });
}

const char* GetCameraSerialNumber(int camera) {
    return OnLibrary("", [=](Library& library) {
        return library.bus.Text(camera, [](const Description& description) { return description.serial; });
    });
}

const char* GetCameraPortType(int camera) {
    return OnLibrary("", [=](Library& library) {
        return library.bus.Text(camera, [](const Description& description) { return description.port_type; });
    });
}

void SetConnectionEventCallback(ConnectionEventCallback callback, int context) {
    OnLibrary(0, [=](Library& library) {
        library.bus.SetConnectionCallback(callback, context);
        return 0;
    });
}

void UnloadLibrary() {
    std::shared_ptr<Library> ended;  // destroyed after the lock is given back
    const platform::ScopedLock lock(s_Lock);
    std::shared_ptr<Library>& library = TheLibrary();
    if (library && library->bus.ShutDown()) ended.swap(library);
}

}  // namespace detail

}  // namespace zel::kit
