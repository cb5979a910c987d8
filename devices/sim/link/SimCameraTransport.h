// The transport of a simulated camera: carries datagrams to its firmware and frames, rendered on a thread of its own,
// to the SDK.
//
// Threads. Frames and event 6 come from the frame thread, which lives from Start to Stop; events 8 and 9 from a thread
// of the plug-in. Stop waits until the frame thread has ended and every call into the SDK has returned, except when it
// is called from inside such a call: then the frame thread ends after that call, and the next Stop, Start or Disconnect
// on another thread joins it. Start from inside an image or event callback of the frame thread answers
// ZEL_ERROR_UNSUPPORTED.
//
// Locks. m_BoundLock guards what the SDK registered, m_ThreadLock the frame thread's handle, the camera's own lock
// firmware and counters. None is held while the SDK is called.
#ifndef SIM_SIMCAMERATRANSPORT_H
#define SIM_SIMCAMERATRANSPORT_H

#include <atomic>
#include <thread>

#include "devices/sim/link/CallGate.h"
#include "devices/sim/link/RateMeter.h"
#include "devices/sim/link/SimCamera.h"
#include "devices/sim/sensor/FrameReadout.h"
#include "link/ICameraInterface.h"
#include "link/IZelCameraCommon.h"
#include "platform/Mutex.h"

namespace zel::sim {

class SimCameraTransport final : public ICameraInterface {
  public:
    explicit SimCameraTransport(SimCamera& camera);
    ~SimCameraTransport();
    SimCameraTransport(const SimCameraTransport&) = delete;
    SimCameraTransport& operator=(const SimCameraTransport&) = delete;

    void SetCameraCommon(IZelCameraCommon* camera) override;
    int Connect() override;
    int Disconnect() override;
    int SendData(int len, const unsigned char* data) override;
    int RecvData(int len, unsigned char* buffer, int timeout_ms) override;
    int Start() override;
    int Stop() override;
    int GetInterfaceType() override;
    int PrepareAcquisition(int* num_image_buffers) override;
    void SetFrameCount(int frames) override;
    bool SetImageHandler(ZelImageHandler handler, ZelCamera* camera) override;
    bool SetEventHandler(ZelEventHandler handler, ZelCamera* camera) override;
    bool EnableEvents(int value) override;
    int GetStatusValue() override;
    int GetDroppedFrames() override;
    int StartTrigger() override;
    bool StopTrigger() override;
    bool SetStatusValue(int value) override;
    bool GetLedState(unsigned char* on) override;
    bool SetLedState(bool on) override;
    void SetCameraObject(ZelCamera* camera) override;
    ZelCamera* GetCameraObject() override;
    double GetLinkThroughput() override;
    double GetLinkFrameRate() override;
    double GetLinkLatency() override;
    double GetLinkUtilization() override;

    bool Connected() const { return m_Connected; }
    // Calls the event handler, if one is set, on the calling thread.
    void ReportEvent(const ZelCameraEvent& event);
    // Whether the calling thread is inside a call that this transport makes into the SDK.
    bool InsideCall() { return m_Calls.CurrentThreadInside(); }

  private:
    using Clock = std::chrono::steady_clock;

    // One frame on its way from the sensor to the application.
    struct FrameJob {
        SensorSettings settings;
        FrameTiming timing;
        int taps = 1;
        bool free_run = false;
        unsigned acquisition = 0;
        unsigned number = 0;       // since the start, 0 first
        std::int64_t next_us = 0;  // from this frame to the next one, free running
        Clock::time_point ready{};
    };
    enum class Outcome { kHandOver, kLost, kAborted };

    int Launch(bool triggered);
    std::jthread PrepareMeanwhile();
    bool OnFrameThread() const { return m_FrameThreadId.load() == std::this_thread::get_id(); }
    void JoinFrames();
    bool Forgotten(const FrameJob& job) const ZEL_REQUIRES(m_Camera.Lock());

    void FrameLoop();
    bool NextFrame(FrameJob& job);
    bool Fetch(FrameJob& job);
    Outcome Expose(FrameJob& job);
    bool WaitUntil(platform::ScopedLock<platform::Mutex>& lock, Clock::time_point time, const FrameJob& job)
        ZEL_REQUIRES(m_Camera.Lock());
    bool Stall(platform::ScopedLock<platform::Mutex>& lock, int milliseconds, const FrameJob& job)
        ZEL_REQUIRES(m_Camera.Lock());
    void HandOver(const FrameJob& job);
    bool TryHandOver(const FrameJob& job);
    bool WaitForBuffer(const FrameJob& job);
    bool FillAndQueue(IZelCameraCommon& common, ZelImage& image, const FrameJob& job);
    void Fill(ZelImage& image, const FrameJob& job);
    bool Packed(const FrameJob& job) const;
    void LoseOnLink();
    void DropWithoutBuffer(const FrameJob& job);
    Clock::duration Scaled(std::int64_t microseconds) const;

    SimCamera& m_Camera;
    std::atomic<bool> m_Connected{false};
    std::atomic<unsigned> m_Stops{0};  // a launch that finds another stop than its own behind it gives up

    platform::Mutex m_BoundLock;
    IZelCameraCommon* m_Common ZEL_GUARDED_BY(m_BoundLock) = nullptr;
    ZelImageHandler m_ImageHandler ZEL_GUARDED_BY(m_BoundLock) = nullptr;
    ZelCamera* m_ImageCamera ZEL_GUARDED_BY(m_BoundLock) = nullptr;
    ZelEventHandler m_EventHandler ZEL_GUARDED_BY(m_BoundLock) = nullptr;
    ZelCamera* m_EventCamera ZEL_GUARDED_BY(m_BoundLock) = nullptr;
    ZelCamera* m_CameraObject ZEL_GUARDED_BY(m_BoundLock) = nullptr;
    bool m_Led ZEL_GUARDED_BY(m_BoundLock) = true;
    CallGate m_Calls;

    platform::Mutex m_ThreadLock;
    std::thread m_Frames ZEL_GUARDED_BY(m_ThreadLock);
    std::atomic<std::thread::id> m_FrameThreadId{};

    bool m_StopRequested ZEL_GUARDED_BY(m_Camera.Lock()) = false;
    int m_Dropped ZEL_GUARDED_BY(m_Camera.Lock()) = 0;
    RateMeter m_Rate ZEL_GUARDED_BY(m_Camera.Lock());
    double m_LatencySeconds ZEL_GUARDED_BY(m_Camera.Lock()) = 0.0;

    // Of the frame thread.
    unsigned m_FrameNumber = 0;
    unsigned m_PacedAcquisition = 0;
    Clock::time_point m_NextReady{};
    Clock::duration m_FrameCost{};  // of the frame handed over last
    FrameReadout m_Readout;
};

}  // namespace zel::sim

#endif
