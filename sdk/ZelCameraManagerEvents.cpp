// Hot-plug events: a plug-in reports one on a thread of its own, the tables follow, the application is told. No lock is
// held while the application is called; the adoption lock while a transport gets its camera object.
#include <cstring>

#include "sdk/Adoption.h"
#include "sdk/Logger.h"
#include "sdk/ManagerUse.h"

namespace zel {

namespace {

constexpr const char* kFunction = "ZelCameraManager::HandleCameraConnectionEvent";
constexpr int kNoContext = -1;

// A connect event of a camera that has a place in the tables.
struct Connection {
    LibraryRecord library;
    const char* file_name;
    int cam_index;            // within the library
    int context;              // the library's index
    std::size_t index;        // camera number, 0 to 7
    TextSlot* name_at_count;  // name slot at the number of cameras
};

const char* TextOrEmpty(const char* text) { return text ? text : ""; }

// Stores one of the camera's texts when the library knows it; `text` is then the library's own.
void StoreEventText(GetCameraTextFunction function, const char* function_name, const Connection& connection,
                    TextSlot& slot, const char*& text) {
    Logger& log = CameraManagerLogger().Get();
    if (!function) {
        ZEL_LOG(log, kLogError, kFunction, "***ERROR***: %s - does not have a %s() func.)", connection.file_name,
                function_name);
        return;
    }
    text = TextOrEmpty(function(connection.cam_index));
    Tables().StoreText(slot, text);
    ZEL_LOG(log, kLogTrace, kFunction, "%s - %s(%d) returned %s ", connection.file_name, function_name,
            connection.cam_index, text);
}

// Stores the port type as the interface type. False for a port that is too slow for a camera object.
bool StorePortType(const Connection& connection) {
    if (!connection.library.get_camera_port_type) return true;
    Logger& log = CameraManagerLogger().Get();
    ZEL_LOG(log, kLogTrace, kFunction, "_icamera_libs[%d].get_camera_port_type(cam_index:%d)", connection.context,
            connection.cam_index);
    const char* port = TextOrEmpty(connection.library.get_camera_port_type(connection.cam_index));
    Tables().StoreText(Tables()._zel_camera_interface_type_str[connection.index], port);
    ZEL_LOG(log, kLogTrace, kFunction, "port_type_str:%s   copying into _zel_camera_interface_type_str[index:%d]", port,
            static_cast<int>(connection.index));
    return std::strstr(port, "USB 2.0") == nullptr;
}

// On purpose: the transport is handed the name slot at the number of cameras, not the camera's own.
ICameraInterface* CreateInterface(const Connection& connection) {
    Logger& log = CameraManagerLogger().Get();
    ZEL_LOG(log, kLogTrace, kFunction, "calling %s - create_camera_interface(cam_dll_index:%d)\n", connection.file_name,
            connection.cam_index);
    ICameraInterface* camera_interface = nullptr;
    if (connection.library.create_camera_interface) {
        CameraTables& tables = Tables();
        camera_interface = tables.CreateInterface(
            connection.library.create_camera_interface, connection.cam_index, *connection.name_at_count,
            tables.names_handed_by_events[static_cast<std::size_t>(connection.context)]);
    }
    if (!camera_interface) ZEL_LOG(log, kLogError, kFunction, "***ERROR***: failed to create camera interface\n");
    return camera_interface;
}

void CreateCamera(const Connection& connection, const char* text) {
    Logger& log = CameraManagerLogger().Get();
    ICameraInterface* camera_interface = CreateInterface(connection);
    ZEL_LOG(log, kLogTrace, kFunction, "calling zel_camera_control_create(camera:%s, str:%s)",
            PointerText(camera_interface).text, TextOrEmpty(text));
    ZelCamera* const camera = AdoptConnected(
        {camera_interface, connection.context, connection.library.destroy_camera_interface, connection.index}, text);
    ZEL_LOG(log, kLogTrace, kFunction,
            "returned from zel_camera_control_create(camera:%s, str:%s) _zel_camera_array[%d]:%s",
            PointerText(camera_interface).text, TextOrEmpty(text), static_cast<int>(connection.index),
            PointerText(camera).text);
}

void HandleConnect(const Connection& connection) {
    CameraTables& tables = Tables();
    const char* text = nullptr;
    StoreEventText(connection.library.get_camera_name, "get_camera_name", connection, tables.names[connection.index],
                   text);
    StoreEventText(connection.library.get_camera_serial_num_str, "get_camera_serial_num_str", connection,
                   tables.serial_numbers[connection.index], text);
    if (StorePortType(connection)) CreateCamera(connection, text);
}

// The camera number of an event, wrapping as 32-bit numbers do.
int CameraNumber(int offset, int cam_index) {
    return static_cast<int>(static_cast<unsigned>(offset) + static_cast<unsigned>(cam_index));
}

// Reads once, under the lock, what the tables say about an event of this library. `index` is the camera number, which
// may lie outside the tables.
Connection FindPlace(int cam_index, int context, int& index) {
    CameraTables& tables = Tables();
    const auto library = static_cast<std::size_t>(context);
    int offset = 0;
    Connection connection{};
    {
        const platform::ScopedLock guard(tables.lock);
        offset = tables._zel_camera_index_offset[library];
        index = CameraNumber(offset, cam_index);
        connection = {tables._icamera_libs[library],
                      InterfaceLibraryName(context),
                      cam_index,
                      context,
                      static_cast<std::size_t>(index),
                      &tables.names[static_cast<std::size_t>(tables.number_of_cameras)]};
    }
    ZEL_LOG(CameraManagerLogger().Get(), kLogTrace, kFunction, "_zel_camera_index_offset[offset:%d]:%d\n", context,
            offset);
    return connection;
}

}  // namespace

void ZEL_CALL ZelCameraManager::HandleCameraConnectionEvent(int event_id, int cam_index, int context) {
    Logger& log = CameraManagerLogger().Get();
    ZEL_LOG(log, kLogTrace, kFunction,
            "ZelCameraManager::HandleConnectionEvent(event_id:%d, offset:%d, cam_index:%d)\n", event_id, context,
            cam_index);
    const ManagerUse manager;
    if (!manager) return;
    if (context == kNoContext) {
        ZEL_LOG(log, kLogTrace, kFunction,
                "ZelCameraManagerConnectionEvent(event_id:%d, offset:%d) offset is -1 so we bail\n", event_id, context);
        return;
    }
    if (context < 0 || context >= kNumInterfaceLibraries) return;

    const platform::OperationGate::Entry event(Tables().events[static_cast<std::size_t>(context)]);
    if (!event) return;  // of a library that is being shut down
    int index = 0;
    const Connection connection = FindPlace(cam_index, context, index);
    const bool in_tables = index >= 0 && index < kMaxCameras;
    if (event_id == ICAMERA_INTERFACE_EVENT_ID_CONNECT) {
        ZEL_LOG(log, kLogTrace, kFunction, "---------ICAMERA_INTERFACE_EVENT_ID_CONNECT-------------");
        if (in_tables) HandleConnect(connection);
    } else if (event_id == ICAMERA_INTERFACE_EVENT_ID_DISCONNECT) {
        ZEL_LOG(log, kLogTrace, kFunction, "---------ICAMERA_INTERFACE_EVENT_ID_DISCONNECT-------------");
    }
    manager->CallApplication(event_id, index, in_tables);
}

void ZelCameraManager::CallApplication(int event_id, int index, bool in_tables) {
    Logger& log = CameraManagerLogger().Get();
    CameraTables& tables = Tables();
    ZelCameraConnectCallback callback = nullptr;
    void* context = nullptr;
    unsigned counter = 0;
    {
        const platform::ScopedLock guard(tables.lock);
        callback = m_CameraConnectCallback;
        context = m_ConnectContext;
        counter = tables.callback_counter;
    }
    ZEL_LOG(log, kLogTrace, kFunction, "ZelCameraManager::HandleCameraConnectionEvent() - event_id:%d index:%d ",
            event_id, index);
    ZEL_LOG(log, kLogTrace, kFunction,
            "ZelCameraManager::HandleCameraConnectionEvent() - _zelCameraManager->m_CameraConnectCallback:%s",
            PointerText(callback).text);
    if (!callback || tables.gate.IsShut(CameraTables::kClosing)) return;

    // A number outside the tables has empty texts.
    const auto number = static_cast<std::size_t>(index);
    const char* name = in_tables ? tables.names[number].Data() : "";
    const char* serial_number = in_tables ? tables.serial_numbers[number].Data() : "";
    const char* interface_type = in_tables ? tables._zel_camera_interface_type_str[number].Data() : "";
    ZEL_LOG(log, kLogTrace, kFunction,
            "ZelCameraManager::HandleCameraConnectionEvent() %u - CALLING _zelCameraManager->m_CameraConnectCallback()",
            counter);
    callback(event_id, index, name, serial_number, interface_type, context);
    ZEL_LOG(log, kLogTrace, kFunction,
            "ZelCameraManager::HandleCameraConnectionEvent() %u - RETURNED from "
            "_zelCameraManager->m_CameraConnectCallback()",
            counter);
    const platform::ScopedLock guard(tables.lock);
    ++tables.callback_counter;
}

}  // namespace zel
