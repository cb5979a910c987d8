#include "sdk/InterfaceLibrary.h"

#include <algorithm>

#include "camera/ZelCameraFactory.h"
#include "sdk/CameraTables.h"
#include "sdk/Logger.h"
#include "sdk/PluginChoice.h"

namespace zel {

namespace {

constexpr const char* kFunction = "ZelCameraManager::GetNumberOfCameras";

// The only answer of get_num_cameras that tells of a failed library.
constexpr int kLibraryFailed = -1;

template <class Function>
void Bind(platform::LibraryHandle module, const char* name, Function& function) {
    function = platform::FindFunction<Function>(module, name);
}

void BindExports(BoundLibrary& bound) {
    LibraryRecord& record = bound.record;
    Bind(record.module, "get_num_cameras", bound.get_num_cameras);
    Bind(record.module, "create_camera_interface", record.create_camera_interface);
    Bind(record.module, "destroy_camera_interface", record.destroy_camera_interface);
    Bind(record.module, "get_camera_interface_type_str", bound.get_camera_interface_type_str);
    Bind(record.module, "get_camera_address_str", bound.get_camera_address_str);
    Bind(record.module, "get_camera_name", record.get_camera_name);
    Bind(record.module, "get_camera_serial_num_str", record.get_camera_serial_num_str);
    Bind(record.module, "get_camera_port_type", record.get_camera_port_type);
    Bind(record.module, "lib_unload", record.lib_unload);
    Bind(record.module, "set_camera_connection_event_callback", bound.set_camera_connection_event_callback);
}

// Why the gate of a library's events is shut.
constexpr unsigned kShuttingDown = 1;

// A library is not shut down while it reports an event, and reports none meanwhile: it may be waiting for that report,
// or the report for us. The next search does it. The library's transports may go with it, although they must not: their
// camera objects leave them alone until they show that they live.
void ShutDown(int library, LibUnloadFunction lib_unload) {
    CameraTables& tables = Tables();
    platform::OperationGate& events = tables.events[static_cast<std::size_t>(library)];
    if (!events.ShutWhenEmpty(kShuttingDown)) return;
    {
        const platform::ScopedLock guard(tables.lock);
        tables.cameras.ForEach([&](const RegisteredCamera& entry) {
            if (entry.library == library) zel_camera_control_suspend(entry.camera);
        });
    }
    ZEL_LOG(CameraManagerLogger().Get(), kLogTrace, kFunction, "num_cameras == 0: calling lib_unload() on \"%s\" \n",
            InterfaceLibraryName(library));
    lib_unload();
    events.Open(kShuttingDown);
}

}  // namespace

platform::LibraryHandle LoadByName(int library) {
    return Plugins().Lacks(library) ? nullptr : platform::LoadSharedLibrary(InterfaceLibraryName(library));
}

bool LoadInterfaceLibrary(int library, BoundLibrary& bound) {
    Logger& log = CameraManagerLogger().Get();
    LibraryRecord& record = bound.record;
    record.module = LoadByName(library);
    if (!record.module && Plugins().Lacks(library)) {
        ZEL_LOG(log, kLogTrace, kFunction, "the chosen set of plug-ins has no %s", InterfaceLibraryName(library));
        return false;
    }
    if (!record.module) {
        platform::DiscardLoadError();
        ZEL_LOG(log, kLogError, kFunction, "***ERROR***: zel_load_lib(%s) failed i:%d", InterfaceLibraryName(library),
                library);
        return false;
    }
    BindExports(bound);
    if (bound.get_num_cameras && record.create_camera_interface && record.destroy_camera_interface) return true;
    ZEL_LOG(log, kLogError, kFunction, "get_num_cameras:%s  create_camera_interface:%s  destroy_camera_interface:%s",
            PointerText(bound.get_num_cameras).text, PointerText(record.create_camera_interface).text,
            PointerText(record.destroy_camera_interface).text);
    platform::UnloadSharedLibrary(record.module);
    return false;
}

int CountCameras(int library, const BoundLibrary& bound) {
    Logger& log = CameraManagerLogger().Get();
    const int answer = bound.get_num_cameras();
    ZEL_LOG(log, kLogTrace, kFunction, "get_num_cameras() %s returned %d", InterfaceLibraryName(library), answer);
    // On purpose: a library that failed is left loaded and untouched.
    if (answer == kLibraryFailed) return kLibraryFailed;
    const int count = std::max(answer, 0);
    if (count > 0 || kInterfaceLibraries[library].plugged_in_later) return count;

    if (bound.record.lib_unload) ShutDown(library, bound.record.lib_unload);
    ZEL_LOG(log, kLogTrace, kFunction, "num_cameras == 0: calling FreeLibrary() on \"%s\" \n",
            InterfaceLibraryName(library));
    platform::UnloadSharedLibrary(bound.record.module);
    return kLibraryFailed;
}

void UnloadRecordedLibrary(const LibraryRecord& record) {
    record.lib_unload();
    platform::UnloadSharedLibrary(record.module);
}

}  // namespace zel
