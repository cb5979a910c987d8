// An application that does what it is allowed to in any order, and knows what must come of it. With other threads at
// the same cameras (`alone` false) it expects nothing but that everything goes on.
#ifndef TESTS_SYSTEM_LIFETIMEDRIVER_H
#define TESTS_SYSTEM_LIFETIMEDRIVER_H

#include <map>
#include <random>
#include <shared_mutex>
#include <span>

#include "link/CameraInterfaceLibrary.h"
#include "tests/system/LifetimeCallbacks.h"
#include "tests/system/LifetimeModel.h"
#include "tests/system/SystemFixture.h"
#include "tests/system/Watchdog.h"

namespace zel::test {

class LifetimeDriver {
  public:
    LifetimeDriver(unsigned seed, bool alone, Watchdog& watchdog);
    ~LifetimeDriver() { zel_destroy_sdk(m_Sdk); }

    // One random action.
    void Step();
    // Every camera is opened, gives five frames and is closed, whatever was before. Expected with other threads, too.
    void CleanSession();
    void Destroy();
    void Create();
    void PrintCounts();

    // For other threads: the objects may be called while `calling` is held, the SDK while `using_sdk` is. They begin
    // nothing while `ending`, so that the driver gets its turn.
    std::array<std::atomic<ZelCamera*>, LifetimeModel::kCameras> objects{};
    std::atomic<ZelSDK*> sdk{nullptr};
    std::atomic<bool> ending{false};
    std::shared_mutex calling, using_sdk;

  private:
    struct Action {
        const char* name;
        unsigned weight;
        bool (LifetimeDriver::*possible)();
        void (LifetimeDriver::*run)();
    };
    static const Action kActions[];

    struct PlugIn {
        platform::LibraryHandle library;
        ZelSimControlFunction control;
        GetNumCamerasFunction count;
    };
    enum What { kSearch, kGet, kOpen, kClose, kStop, kStart, kClear, kReplace, kSdkClose, kDestroy, kWhats };

    unsigned Roll(unsigned sides) { return static_cast<unsigned>(m_Random() % sides); }
    ModelCamera& Camera() { return m_Model.cameras[static_cast<std::size_t>(m_At)]; }
    ZelCamera& Object() { return *Camera().object; }
    CallbackSet& Set() { return m_Sets[static_cast<std::size_t>(m_At)]; }
    // The plug-in's answer, and whether it is one.
    bool Control(const std::string& command, std::string* answer = nullptr);
    void Expect(bool holds, const std::string& what);
    bool WaitFor(const char* what, const std::function<bool()>& holds, bool must = false);

    int Search();
    void Searched(int found);
    void Handed(int camera, ZelCamera* object);
    void Met(int camera, ZelCamera* object);
    void Toggle();
    bool Launch(int frames);
    ZelImage* Take();
    void GiveBack();
    void Quiet();
    void Ending(bool destroys, const std::function<void()>& end);
    void Ended(bool destroyed);
    void CallInside(What what, CallbackKind kind);
    void CheckInside(What what, CallbackKind kind, bool overlapping);
    void Bring(CallbackKind kind);

    bool Always() { return true; }
    bool Plugged() { return Camera().plugged; }
    bool Unplugged() { return !Camera().plugged; }
    bool Known() { return Camera().object != nullptr; }
    bool Working() { return Known() && Camera().open && Camera().plugged && !Camera().unsure; }
    bool Holding() { return !Camera().held.empty(); }
    bool AnyRetired() { return !m_Model.retired.empty(); }
    // Plugging it in or out reaches the connect callback.
    bool Tellable() { return m_Model.Heard(Camera()) && !Camera().unsure && (Camera().plugged || !Camera().open); }
    bool Callable() { return Working() || Tellable(); }

    void DoSearch() { Searched(Search()); }
    void DoGetCameras();
    void DoOpen();
    void DoStart();
    void DoTake();
    void DoFree();
    void DoStop();
    void DoClose();
    void DoSetBuffers();
    void DoProbeRetired();
    void DoCountRecords();
    void DoReopen();
    void DoRecreate();
    void DoVanish();
    void DoInside();
    void DoCloseWithCallInside();

    const bool m_Alone;
    Watchdog& m_Watchdog;
    std::minstd_rand m_Random;
    std::array<PlugIn, LifetimeModel::kLibraries> m_PlugIns{};
    ZelSDK* m_Sdk = nullptr;
    LifetimeModel m_Model;
    LifetimeCallbacks m_Callbacks;
    std::array<CallbackSet, LifetimeModel::kCameras> m_Sets;
    CallbackSet m_Replacement, m_ConnectSet;
    int m_At = 0;  // the camera of this step
    std::map<std::string, int> m_Counts;

    // The planned call inside a callback: whether it may begin, and what it answered.
    std::atomic<bool> m_Go{true};
    int m_Answer = 0;
    int m_Number = 0;
    ZelCamera* m_Object = nullptr;
};

}  // namespace zel::test

#endif
