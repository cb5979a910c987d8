// The cameras behind the viewer: which there are, the one that is open, and what the pages want of it. Everything that
// talks to a camera happens on one thread, in the order in which it was asked for.
#ifndef ZELCAM_CAMERAHUB_H
#define ZELCAM_CAMERAHUB_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tools/zelcam/frames/Acquisition.h"
#include "tools/zelcam/view/CameraCondition.h"
#include "tools/zelcam/view/JobQueue.h"
#include "tools/zelcam/view/OpenCamera.h"
#include "tools/zelcam/view/ParameterList.h"
#include "tools/zelcam/view/ViewRecording.h"
#include "tools/zelcam/view/ViewServer.h"
#include "zel/Sdk.h"

namespace zelcam {

struct HubOptions {
    std::string camera;            // number or serial number; empty: the first one there is
    AcquisitionSettings settings;  // of the first camera that is opened
    std::string folder = ".";      // for pictures and recordings
};

class CameraHub {
  public:
    // All of them must outlive this object.
    CameraHub(const HubOptions& options, PageOutlet& pages, FrameTaker& taker, NewestFrame& newest, FrameLoans& loans);
    ~CameraHub();
    CameraHub(const CameraHub&) = delete;
    CameraHub& operator=(const CameraHub&) = delete;

    // Called before the frames of a run can come; set before Begin().
    void OnRun(std::function<void()> handler) { m_Camera.OnRun(std::move(handler)); }
    // Opens a camera and starts it, when there is one. Throws when it does not take the settings of the command line.
    void Begin();

    // Closes the camera; nobody is told anything afterwards. The same as the end of this object.
    void End();

    // A page has come: tells it everything.
    void Welcome(int client);
    // A request of a page, which is answered.
    void Request(int client, Json message);

    CameraCondition Condition() const;
    // A page wanted the viewer to end.
    bool QuitWanted() const { return m_Quit; }

  private:
    // What is said about a request that was carried out.
    struct Answer {
        std::string message;
        Json result;
    };
    using Handler = Answer (CameraHub::*)(const Json& message);
    struct Row;

    // CameraHub.cpp
    void Work();
    void Idle();
    void Poll();
    void TellLosses(const CameraCondition& condition);
    void Search();
    void Plugged(const zel::HotPlugEvent& event);
    bool IsWanted(const zel::CameraInfo& camera) const;
    void CameraChanged(const zel::CameraEvent& event);
    void LinkBack();
    void OpenNumber(int number);
    void FirstSettings();
    void Announce(const char* level, const std::string& text);
    void AnnounceCamera();
    void AnnounceCameras();
    Json CamerasMessage() const;
    Json CameraMessage();
    void AnnounceParameter(unsigned id);
    // Result: what became of the recording; empty when none ran.
    std::string EndRecording(const std::string& reason);

    // CameraRequests.cpp
    Answer Carry(const Json& message);
    zel::Camera& Needed() const;
    Answer Open(const Json& message);
    Answer Start(const Json& message);
    Answer Stop(const Json& message);
    Answer SoftwareTrigger(const Json& message);
    Answer TriggerMode(const Json& message);
    Answer Set(const Json& message);
    Answer Region(const Json& message);
    Answer Binning(const Json& message);
    Answer Averaging(const Json& message);
    Answer Calibration(const Json& message);
    Answer Color(const Json& message);
    Answer ExposeAutomatically(const Json& message);
    Answer Snapshot(const Json& message);
    Answer Record(const Json& message);
    Answer Quit(const Json& message);
    // Null when none came in time, or somebody asks for something else.
    LiveFramePointer WaitForFrame(std::uint64_t sequence) const;
    void RequireNoRecording() const;
    bool ChangeStopped(const std::function<void()>& change);
    Answer RegionAnswer(const zel::SetResult& result, bool restarted);

    HubOptions m_Options;
    PageOutlet& m_Pages;
    FrameTaker& m_Taker;
    NewestFrame& m_Newest;
    std::atomic<bool> m_Quit = false;
    JobQueue m_Jobs;

    mutable std::mutex m_ConditionMutex;
    CameraCondition m_Condition;

    // Of the working thread, once it runs.
    struct KnownCamera {
        zel::CameraInfo info;
        bool present = true;
    };
    std::vector<KnownCamera> m_Cameras;
    bool m_SettingsDue = true;
    std::string m_WantedSerial;  // of the camera that is open, or was when it was unplugged
    ParameterList m_Parameters;
    ViewRecording m_Recording;
    std::uint64_t m_ToldLost = 0;
    std::chrono::steady_clock::time_point m_NextPoll{};
    std::chrono::steady_clock::time_point m_NextSearch{};

    // The SDK's threads post jobs: it and the camera end before the queue.
    zel::Sdk m_Sdk;
    OpenCamera m_Camera;
    std::atomic<bool> m_Ending = false;
    std::thread m_Thread;
};

}  // namespace zelcam

#endif
