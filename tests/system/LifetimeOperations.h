// What an application does with the SDK and its cameras, one function each, and what must come of it by the model:
// After...() is what the operation answers, and leaves the model as the operation leaves the cameras.
#ifndef TESTS_SYSTEM_LIFETIMEOPERATIONS_H
#define TESTS_SYSTEM_LIFETIMEOPERATIONS_H

#include <random>
#include <set>
#include <thread>

#include "tests/system/LifetimeCallbacks.h"
#include "tests/system/LifetimeModel.h"
#include "tests/system/SystemFixture.h"

namespace zel::test {

class LifetimeOperations {
  public:
    using Note = std::function<void(const std::string&)>;

    // For other threads. Nothing is expected beside them.
    std::atomic<ZelCamera*> objects[LifetimeModel::kCameras] = {};
    std::atomic<ZelSDK*> sdk{nullptr};
    bool alone = true;
    CallbackSet& SetOf(std::size_t camera) { return m_Sets[camera]; }
    std::ptrdiff_t CameraOf(const CallbackSet& set) const { return &set - m_Sets; }  // or a number beyond all cameras
    LifetimeCallbacks& Callbacks() { return m_Callbacks; }

  protected:
    static constexpr std::size_t kMostHeld = 2;
    static constexpr int kCountless = 0;

    LifetimeOperations(unsigned seed, Note note) : m_Note(std::move(note)), m_Random(seed) {}
    virtual ~LifetimeOperations() { zel_destroy_sdk(m_Sdk); }
    virtual void Do(const char* operation) = 0;

    ModelCamera& Camera() { return m_Model.cameras[m_At]; }
    CallbackSet& Set() { return m_Sets[m_At]; }
    unsigned Roll(std::size_t sides) { return static_cast<unsigned>(m_Random() % sides); }
    void Expect(bool holds, const std::string& what) {
        if (alone && !holds) ADD_FAILURE() << what << ": camera " << m_At << ", inside of " << kPlaceNames[m_Place];
    }
    // Waits without an end for what must come (the test has one). With other threads at the camera not all of it must.
    bool WaitFor(const char* what, const std::function<bool()>& holds, bool must = false) {
        m_Note(std::string("  waits: ") + what);
        for (int i = 0; !holds(); ++i) {
            if (!alone && !must && i == 1000) return false;
            std::this_thread::yield();
        }
        return true;
    }
    bool Control(std::string command, std::string* answer = nullptr) {
        command.replace(command.find('#'), 1, std::to_string(Camera().index));
        return m_Libraries[Camera().library].Try(command, answer);
    }

    // ---- When it may be done ----
    bool Always() { return true; }
    bool Plugged() { return Camera().plugged; }
    bool Unplugged() { return !Camera().plugged; }
    bool Known() { return Camera().object != nullptr; }
    bool Working() { return Camera().Working(); }
    bool Holding() { return !Camera().held.empty(); }
    bool AnyRetired() { return !m_Model.retired.empty(); }
    // Plugging it in or out reaches the connect callback.
    bool Tellable() {
        return m_Model.heard[Camera().library] && !Camera().unsure && (Camera().plugged || !Camera().open);
    }
    bool Vanishable() { return Known() && Camera().plugged && Tellable(); }
    bool Callable() { return Working() || Tellable(); }

    // ---- The SDK ----
    int CloseSdk() { return m_Sdk->Close() && (m_Place == kOutside || !m_Sdk->Open()); }
    int DestroySdk() {
        zel_destroy_sdk(m_Sdk);
        m_Sdk = nullptr;
        return 1;
    }
    // Opens it again; all cameras are plugged in, none is known.
    int AfterEnd() {
        if (!m_Sdk) m_Sdk = zel_create_sdk();
        Expect(m_Sdk->GetNumberOfCameras() == 0, "a closed SDK finds cameras");
        EXPECT_TRUE(m_Sdk->Open());
        for (CallbackSet& set : m_Sets) {
            Expect(set.Inside(kAll) == 0, "a callback runs on after the end of the SDK");
            set.over = kAll;
        }
        for (m_At = 0; m_At < LifetimeModel::kCameras; ++m_At) {
            Control("fault # clear");
            Control("plug #");
        }
        m_At = 0;
        m_Model = {};
        sdk = m_Sdk;
        return LifetimeCallbacks::InstallConnect(&m_Sets[kConnectSet]);
    }
    int Search() {
        for (ModelCamera& camera : m_Model.cameras) {
            // A library that was shut down may have begun anew; it alone knows.
            if (camera.unsure) camera.plugged = m_Libraries[camera.library].Cameras() > 0;
        }
        return m_Sdk->GetNumberOfCameras();
    }
    int AfterSearch() { return m_Model.Search(); }
    int GetCameras() {
        for (int number = 0; number < LifetimeModel::kNumbers; ++number) m_Got[number] = m_Sdk->GetCamera(number);
        return 1;
    }
    int AfterGetCameras() {
        for (int number = 0; number < LifetimeModel::kNumbers; ++number) {
            const int camera = m_Model.table[number];
            if (camera >= 0) Met(camera, m_Got[number]);
            Expect(!m_Got[number] || camera != LifetimeModel::kNone, "an object that no search found");
            Expect(!m_Model.Retired(m_Got[number]), "an object that was replaced");
        }
        return 1;
    }
    // GetCamera gave this object for the camera.
    void Met(int at, ZelCamera* object) {
        ModelCamera& camera = m_Model.cameras[at];
        Expect(object, "the camera has no object");
        if (!object) return;
        Expect(!camera.object || camera.unsure || camera.object == object, "the camera has another object");
        if (object != camera.object) LifetimeCallbacks::Install(*object, &m_Sets[at]);
        m_Model.Met(at, object);
        objects[at] = object;
        if (!camera.unsure) return;
        object->Close();
        camera.unsure = false;
        camera.Closed();
    }

    // ---- Plugging ----
    int Toggle() { return Control(Camera().plugged ? "unplug #" : "plug #"); }
    int AfterToggle() {
        const int expected = Camera().unsure ? m_Answer : 1;
        Expect(!Tellable() || m_Callbacks.connections == m_Connections + 1, "not one call of the connect callback");
        m_Model.Toggled(m_At);
        return expected;
    }
    // The camera goes as an operation begins.
    int Vanish() {
        static constexpr const char* kMoments[] = {"-start", "-stop", "-close", " after=5", "-frame", "-connect"};
        static constexpr const char* kOperations[] = {"start", "stop", "close", "start", "start", "open"};
        const unsigned moment = Camera().open ? Roll(5) : 5;
        GiveBack();
        m_Either = moment == 4;
        if (m_Either) Empty();
        Control(std::string("fault # unplug") + kMoments[moment]);
        m_Model.Toggled(m_At);
        Do(kOperations[moment]);
        WaitFor("the camera's disconnection", [&] { return m_Callbacks.connections > m_Connections; });
        return 1;
    }

    // ---- One camera ----
    int Open() { return m_Object->Open(); }
    int AfterOpen() {
        ModelCamera& camera = Camera();
        const bool unknown = m_Either || (camera.unsure && (camera.plugged || camera.open));
        const int expected = unknown ? m_Answer : camera.open || camera.plugged;
        camera.open |= m_Answer != 0;
        return expected;
    }
    // Sets the number of frames, 0 for no end, and starts.
    int Launch(ZelCamera& object, int frames) {
        Set().over &= ~kFrameEnds;
        object.SetParameterValue(ZEL_PARAM_FRAME_COUNT, frames);
        return object.Start();
    }
    int Start() {
        m_Frames = m_Place == kOutside ? static_cast<int>(Roll(2) * (1 + Roll(4))) : kCountless;
        if (m_Frames > 0 && Working()) Empty();
        if (m_Place == kOutside && Camera().allocated != Camera().buffers) GiveBack();
        return Launch(*m_Object, m_Frames);
    }
    int AfterStart() {
        ModelCamera& camera = Camera();
        const bool unknown = camera.unsure || (m_Either && m_Place == kOutside);
        camera.due = !m_Answer || !camera.plugged ? 0 : m_Frames > 0 ? m_Frames : ModelCamera::kEndless;
        if (m_Answer) camera.allocated = camera.buffers;
        return unknown ? m_Answer : Working() && m_Place > kScratchpad;
    }
    int Take() {
        ModelCamera& camera = Camera();
        if (camera.held.size() >= kMostHeld) GiveBack();
        auto& object = static_cast<ZelColorCamera&>(*m_Object);
        const unsigned way = Roll(camera.due == ModelCamera::kEndless ? 4 : 2);
        ZelImage* image = nullptr;
        WaitFor("a frame", [&] {
            image = way == 0   ? object.GetPendingImage()
                    : way == 1 ? object.GetPendingColorImage()
                    : way == 2 ? object.GetLastPendingImage()
                               : object.GetLastPendingColorImage();
            return image || camera.due == 0;
        });
        if (!image) return 1;
        if (camera.due != ModelCamera::kEndless) camera.due = std::max(camera.due - 1, 0);
        if (!alone) return object.FreeImage(image);
        Expect(std::count(camera.held.begin(), camera.held.end(), image) == 0, "a record is handed out twice");
        camera.held.push_back(image);
        return 1;
    }
    int Free() {
        ModelCamera& camera = Camera();
        ZelImage* const image = camera.held.back();
        camera.held.pop_back();
        LifetimeCallbacks::Read(*image);
        Expect(camera.object->FreeImage(image) || camera.unsure, "a record is not the application's");
        Expect(!camera.object->FreeImage(image) || camera.due > 0, "a record is the application's twice");
        return 1;
    }
    void GiveBack() {
        while (Holding()) Free();
    }
    // Stopped, and no frame pending.
    void Empty() {
        Do("stop");
        Camera().object->FreeAllPendingImages();
    }
    int Stop() { return Quiet(m_Object->Stop()); }
    int AfterStop() {
        if (m_Place == kOutside) Camera().due = 0;
        return m_Either || Camera().unsure || !Camera().open ? m_Answer : Camera().plugged;
    }
    int Close() { return Quiet(m_Object->Close()); }
    int AfterClose() {
        ModelCamera& camera = Camera();
        for (ZelImage* image : camera.held)
            Expect(!m_Object->FreeImage(image) || camera.unsure, "a record outlives its camera");
        camera.Closed();
        return camera.unsure ? m_Answer : 1;
    }
    // A stop or close has returned, outside of callbacks or in one of those that come with frames.
    int Quiet(int answer) {
        if (m_Place == kOutside) Expect(Set().Inside(kFrames) == 0, "a callback runs on after the end");
        if (alone && (m_Place <= kScratchpad || m_Place == kOutside)) Set().over |= kFrameEnds;
        return answer;
    }
    int SetBuffers() {
        Camera().buffers = 6 + static_cast<int>(Roll(3));
        return m_Object->SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, Camera().buffers);
    }
    // Every record of the pool can be had, and given back once.
    int CountRecords() {
        ModelCamera& camera = Camera();
        ZelCamera& object = *m_Object;
        GiveBack();
        Empty();
        Expect(Launch(object, kCountless), "it does not start to count");
        camera.allocated = camera.buffers;
        std::set<ZelImage*> records;
        ZelImage* image = nullptr;
        const auto next = [&] { return (image = object.GetPendingImage()) != nullptr; };
        while (static_cast<int>(records.size()) < camera.buffers && WaitFor("a record", next)) records.insert(image);
        Do("stop");
        Expect(!object.GetPendingImage(), "there are more records than were asked for");
        for (ZelImage* record : records)
            Expect(object.FreeImage(record) && !object.FreeImage(record), "a record is not given back once");
        return 1;
    }
    int ProbeRetired() {
        ZelCamera& object = *m_Model.retired[Roll(m_Model.retired.size())];
        return !object.Open() && !object.Start() && !object.GetPendingImage() && !IsOpen(object);
    }
    static bool IsOpen(ZelCamera& object) {
        int open = 0;
        object.IsOpen(&open);
        return open != 0;
    }
    // Switches this callback and those of its kind off, or to others.
    int SwitchCallbacks() {
        if (m_Place == kConnect) return LifetimeCallbacks::InstallConnect(nullptr);
        const int switched = LifetimeCallbacks::Install(*m_Object, Roll(2) == 0 ? nullptr : &m_Sets[kReplacement]);
        if (alone) Set().over |= m_Place == kText ? 0 : m_Place <= kScratchpad ? kFrames : kControls;
        return switched;
    }
    int AfterSwitchCallbacks() {
        return m_Place == kConnect ? LifetimeCallbacks::InstallConnect(&m_Sets[kConnectSet])
                                   : LifetimeCallbacks::Install(*m_Object, &Set());
    }

    static constexpr int kReplacement = LifetimeModel::kCameras, kConnectSet = kReplacement + 1;
    const Note m_Note;
    std::minstd_rand m_Random;
    SimulatedLibrary m_Libraries[LifetimeModel::kLibraries] = {
        SimulatedLibrary("edt_camera_link.dll"), SimulatedLibrary("pleora_ebus.dll"), SimulatedLibrary("zel_usb.dll")};
    ZelSDK* m_Sdk = nullptr;
    LifetimeModel m_Model;
    LifetimeCallbacks m_Callbacks;
    CallbackSet m_Sets[kConnectSet + 1] = {{m_Callbacks}, {m_Callbacks}, {m_Callbacks},
                                           {m_Callbacks}, {m_Callbacks}, {m_Callbacks}};
    int m_At = 0;           // the camera of this step
    int m_Connections = 0;  // connect callbacks before it
    bool m_Either = false;  // its answer may be the one or the other
    int m_Frames = 0;       // that were asked for

    // The last call: where it was made, with which object, and what it answered.
    Place m_Place = kOutside;
    ZelCamera* m_Object = nullptr;
    int m_Answer = 0;
    ZelCamera* m_Got[LifetimeModel::kNumbers] = {};
};

}  // namespace zel::test

#endif
