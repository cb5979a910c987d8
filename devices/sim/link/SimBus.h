// What a plug-in made of simulated cameras consists of: the cameras, their transports, and hot-plugging. The exports of
// a plug-in are thin calls of these operations.
//
// Hot-plug events are reported on a thread of the bus, one after the other, while no lock is held.
#ifndef SIM_SIMBUS_H
#define SIM_SIMBUS_H

#include <array>
#include <deque>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "devices/sim/link/FaultScript.h"
#include "devices/sim/link/SimCameraTransport.h"
#include "link/CameraInterfaceLibrary.h"
#include "platform/Mutex.h"

namespace zel::sim {

// What makes one plug-in differ from another.
struct PluginDescription {
    const char* file_name;
    const char* version_text;
    const char* interface_type_text;
    const char* port_type_text;
    const char* address_formats[3];  // "#" stands for the camera's number, from 1
    int interface_type;
};

class SimBus {
  public:
    explicit SimBus(const PluginDescription& plugin);
    ~SimBus();
    SimBus(const SimBus&) = delete;
    SimBus& operator=(const SimBus&) = delete;

    // -1: the library is to look broken. An unplugged camera keeps its number, so this is the number of the last
    // plugged camera plus one.
    int CameraCount();
    // The library is shut down: no events until a callback is set again. Transports live on until they are destroyed.
    // True when nothing is left that needs the bus.
    bool ShutDown();

    // The same transport until it is destroyed; null without such a camera or while it is unplugged.
    ICameraInterface* CreateTransport(int camera);
    void DestroyTransport(ICameraInterface* transport);
    // Texts of a camera; "" without such a camera. They stay where they are as long as the bus lives.
    const char* NameText(int camera);
    const char* SerialText(int camera);
    const char* AddressText(int camera, int select);
    void SetConnectionCallback(ConnectionEventCallback callback, int context);

    // For the control interface. Null without such a camera.
    SimCamera* Camera(int camera);
    // False when nothing changed. Waits until the events were reported, except inside a call into the SDK.
    bool ChangePlug(int camera, bool plugged);
    // A camera's own event, reported like a hot-plug event.
    void ReportEvent(int camera, const ZelCameraEvent& event);

  private:
    struct Slot {
        std::unique_ptr<SimCamera> camera;
        std::unique_ptr<SimCameraTransport> transport;
        std::set<std::string> names;  // every one it ever had, since texts stay where they are
        std::array<std::array<char, 64>, 3> addresses{};
    };
    struct Report {
        int camera;
        bool hot_plug;
        bool plugged;
        ZelCameraEvent event;
    };

    Slot* Find(int camera);
    void Enqueue(const Report& report);
    void WaitForReports();
    void ReportLoop();
    void Deliver(const Report& report);

    const int m_Cameras;        // -1: the library is to look broken
    std::vector<Slot> m_Slots;  // never changes its size

    platform::Mutex m_Lock;
    platform::Condition m_ReportsDone;
    ConnectionEventCallback m_Callback ZEL_GUARDED_BY(m_Lock) = nullptr;
    int m_CallbackContext ZEL_GUARDED_BY(m_Lock) = 0;
    std::deque<Report> m_Reports ZEL_GUARDED_BY(m_Lock);
    bool m_Reporting ZEL_GUARDED_BY(m_Lock) = false;
    std::thread m_Reporter ZEL_GUARDED_BY(m_Lock);
    CallGate m_ReportCalls;
    std::unique_ptr<FaultScript> m_Script;
};

}  // namespace zel::sim

#endif
