// The cameras of a library, their transports, and hot-plugging. The exports are thin calls of these operations.
//
// Hot-plug events are reported on a thread of the bus, one after the other, while no lock is held.
#ifndef DEVICES_KIT_BUS_H
#define DEVICES_KIT_BUS_H

#include <array>
#include <atomic>
#include <deque>
#include <memory>
#include <set>
#include <string>
#include <thread>

#include "devices/kit/CallGate.h"
#include "devices/kit/Camera.h"
#include "devices/kit/Plugin.h"
#include "devices/kit/Transport.h"
#include "link/CameraInterfaceLibrary.h"
#include "platform/Mutex.h"

namespace zel::kit {

class Bus final : public Cameras {
  public:
    static constexpr int kMostCameras = 64;

    explicit Bus(int interface_type) : m_InterfaceType(interface_type) {}
    ~Bus();
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

    // Cameras
    int Add(std::unique_ptr<BackEnd> camera) override;
    void SetPlugged(int camera, bool plugged) override;
    bool Plugged(int camera) const override;
    int Count() const override { return m_Count; }

    // A camera with more to it than its back end.
    int AddCamera(std::unique_ptr<Camera> camera);
    // Null without such a camera.
    Camera* At(int camera) const;

    // An unplugged camera keeps its number, so this is the number of the last plugged camera plus one.
    int PluggedCount() const;
    // No events until a callback is set again. Transports live on until they are destroyed. True when nothing is left
    // that needs the bus.
    bool ShutDown();

    // The same transport until it is destroyed; null without such a camera or while it is unplugged.
    ICameraInterface* CreateTransport(int camera);
    void DestroyTransport(ICameraInterface* transport);
    // A text of a camera that stays where it is as long as the bus lives; "" without such a camera.
    template <class Choice>
    const char* Text(int camera, Choice choice) {
        Camera* const found = At(camera);
        return found ? Keep(camera, choice(found->Describe())) : "";
    }
    void SetConnectionCallback(ConnectionEventCallback callback, int context);

    // False when nothing changed. Waits until the events were reported, except inside a call into the SDK.
    bool ChangePlug(int camera, bool plugged);
    // A camera's own event, reported like a hot-plug event.
    void ReportEvent(int camera, const ZelCameraEvent& event);

  private:
    struct Slot {
        std::unique_ptr<Camera> camera;
        std::unique_ptr<Transport> transport;
        std::set<std::string> texts;  // every one it ever had, since they stay where they are
    };
    struct Report {
        int camera;
        bool hot_plug;
        bool plugged;
        ZelCameraEvent event;
    };

    Slot* Find(int camera);
    const char* Keep(int camera, const std::string& text);
    void Enqueue(const Report& report);
    void WaitForReports();
    void ReportLoop();
    void Deliver(const Report& report);

    const int m_InterfaceType;
    std::array<Slot, kMostCameras> m_Slots;
    std::atomic<int> m_Count{0};

    platform::Mutex m_Lock;
    platform::Condition m_ReportsDone;
    ConnectionEventCallback m_Callback ZEL_GUARDED_BY(m_Lock) = nullptr;
    int m_CallbackContext ZEL_GUARDED_BY(m_Lock) = 0;
    std::deque<Report> m_Reports ZEL_GUARDED_BY(m_Lock);
    bool m_Reporting ZEL_GUARDED_BY(m_Lock) = false;
    bool m_InEvent ZEL_GUARDED_BY(m_Lock) = false;  // somebody may be hearing of it
    std::thread m_Reporter ZEL_GUARDED_BY(m_Lock);
    CallGate m_ReportCalls;
};

}  // namespace zel::kit

#endif
