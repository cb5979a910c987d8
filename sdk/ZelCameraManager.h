// The camera manager: finds the cameras of all interface libraries, describes them, owns their camera objects and
// passes hot-plug events on. One per process, made by ZelSDK::Open() and destroyed by ZelSDK::Close().
//
//     ZelCameraManager.cpp          life cycle, lock, callback    ZelCameraManagerSearch.cpp   GetNumberOfCameras
//     ZelCameraManagerQueries.cpp   the per-camera answers        ZelCameraManagerEvents.cpp   hot-plug events
#ifndef SDK_ZELCAMERAMANAGER_H
#define SDK_ZELCAMERAMANAGER_H

#include <array>
#include <atomic>
#include <cstdint>

#include "include/ZelCallbacks.h"
#include "platform/Locks.h"

class ZelCamera;

namespace zel {

struct BoundLibrary;

class ZelCameraManager {
  public:
    // The one manager, made on the first call. Null when memory ran out.
    static ZelCameraManager* Create();
    // Deletes the manager of the SDK object and the manager's logger.
    static bool Destroy();
    // Registered with every interface library; `context` is the library's index. Runs on the library's thread.
    static void ZEL_CALL HandleCameraConnectionEvent(int event_id, int cam_index, int context);

    virtual bool Init();
    // Destroys every camera object and unloads the libraries that can shut themselves down.
    virtual bool Close();
    // Builds the camera list anew. The arguments are not read.
    virtual int GetNumberOfCameras(int, int, int);
    virtual ZelCamera* GetCamera(int camera_number);
    virtual const char* GetCameraInterfaceTypeStr(int camera_number);
    virtual const char* GetCameraAddressStr(int camera_number, int address_select);
    virtual const char* GetCameraName(int camera_number);
    virtual const char* GetCameraSerialNumStr(int camera_number);
    virtual void* GetReservedArea();
    virtual int SetCameraConnectCallback(ZelCameraConnectCallback callback, void* context);
    virtual ~ZelCameraManager() = default;

  private:
    static constexpr std::uint32_t kLockTimeoutMs = 5000;

    ZelCameraManager();
    bool Lock();
    void Unlock();
    void SearchLibrary(int library);
    bool AddCamera(int library, const BoundLibrary& bound, int cam_index);
    void CallApplication(int event_id, int index, bool in_tables);
    const char* PortType(int camera_number);

    [[maybe_unused]] unsigned m_Reserved = 0;
    std::uint32_t m_LockTimeout = kLockTimeoutMs;
    platform::TimedMutex m_Lock;
    // On purpose: once a lock or an unlock has failed this stays false, and no camera is found any more until the SDK
    // has been closed and opened again.
    std::atomic<bool> m_LockValid;
    std::array<unsigned char, 64> m_ReservedArea{};
    // Under the lock of the tables.
    ZelCameraConnectCallback m_CameraConnectCallback = nullptr;
    void* m_ConnectContext = nullptr;
};

// The SDK object's manager: set while the SDK is open.
extern std::atomic<ZelCameraManager*> _zel_camera_manager;

}  // namespace zel

#endif
