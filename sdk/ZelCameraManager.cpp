// Life cycle of the manager, its lock and the application's callback.
#include "sdk/ZelCameraManager.h"

#include <exception>

#include "sdk/CameraTables.h"
#include "sdk/CameraTeardown.h"
#include "sdk/Logger.h"

namespace zel {

std::atomic<ZelCameraManager*> _zel_camera_manager{nullptr};

ZelCameraManager::ZelCameraManager() : m_LockValid(m_Lock.Valid()) {}

ZelCameraManager* ZelCameraManager::Create() try {
    Logger& log = CameraManagerLogger().Get();
    CameraTables& tables = Tables();
    ZEL_LOG(log, kLogTrace, "ZelCameraManager::Create", "Enter");
    ZelCameraManager* manager = nullptr;
    {
        const platform::ScopedLock guard(tables.lock);
        manager = tables.manager;
        if (!manager) tables.manager = manager = new ZelCameraManager;
    }
    ZEL_LOG(log, kLogTrace, "ZelCameraManager::Create", "Exit");
    return manager;
} catch (const std::exception&) {
    return nullptr;
}

bool ZelCameraManager::Destroy() {
    CameraTables& tables = Tables();
    ZelCameraManager* manager = nullptr;
    {
        const platform::ScopedLock guard(tables.lock);
        if (tables.manager.load() == _zel_camera_manager.load()) {
            manager = tables.manager;
            tables.manager = nullptr;
        }
    }
    delete manager;
    CameraManagerLogger().Destroy();
    return true;
}

bool ZelCameraManager::Init() {
    Tables().Init();
    return true;
}

bool ZelCameraManager::Close() {
    CameraTables& tables = Tables();
    DestroyCameras();
    for (std::size_t library = 0; library < kNumInterfaceLibraries; ++library) {
        LibraryRecord unloading;
        {
            const platform::ScopedLock guard(tables.lock);
            LibraryRecord& record = tables._icamera_libs[library];
            // On purpose: a library that can't shut itself down stays recorded and loaded.
            if (!record.lib_unload) continue;
            unloading = record;
            record = LibraryRecord{};
        }
        UnloadRecordedLibrary(unloading);
    }
    return true;
}

bool ZelCameraManager::Lock() {
    if (!m_Lock.Valid() || !m_LockValid) return false;
    if (m_Lock.Lock(m_LockTimeout)) return true;
    m_LockValid = false;
    return false;
}

void ZelCameraManager::Unlock() {
    // On purpose: also after a failed Lock(), whose failure this release can only confirm.
    if (!m_Lock.Unlock()) m_LockValid = false;
}

void* ZelCameraManager::GetReservedArea() { return m_ReservedArea.data(); }

int ZelCameraManager::SetCameraConnectCallback(ZelCameraConnectCallback callback, void* context) {
    ZEL_LOG(CameraManagerLogger().Get(), kLogTrace, "ZelCameraManager::SetCameraConnectCallback",
            "ZelCameraManager::SetCameraConnectCallback() cb:%s", PointerText(callback).text);
    const platform::ScopedLock guard(Tables().lock);
    m_CameraConnectCallback = callback;
    m_ConnectContext = context;
    return 1;
}

}  // namespace zel
