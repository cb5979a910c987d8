// The transport of a camera that is made of a back end: carries datagrams to its conversation and frames, which its
// back end makes on a thread of the transport's, to the SDK.
//
// Threads. Frames and event 6 come from the frame thread, which lives from Start to Stop; events 8 and 9 from a thread
// of the library. Stop waits until the frame thread has ended and every call into the SDK has returned, except when it
// is called from inside such a call: then the frame thread ends after that call, and the next Stop, Start or Disconnect
// on another thread joins it. Start from inside an image or event callback of the frame thread answers
// ZEL_ERROR_UNSUPPORTED.
//
// Locks. m_BoundLock guards what the SDK registered, m_ThreadLock the frame thread's handle, m_RateLock the figures.
// None is held while the SDK is called.
#ifndef DEVICES_KIT_TRANSPORT_H
#define DEVICES_KIT_TRANSPORT_H

#include <atomic>
#include <thread>

#include "devices/kit/CallGate.h"
#include "devices/kit/Camera.h"
#include "devices/kit/RateMeter.h"
#include "link/ICameraInterface.h"
#include "link/IZelCameraCommon.h"
#include "platform/Mutex.h"

namespace zel::kit {

class Transport final : public ICameraInterface {
  public:
    // link_bytes_per_second: what GetLinkUtilization() puts the throughput beside; 0: not known.
    Transport(Camera& camera, int interface_type, double link_bytes_per_second);
    ~Transport();
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;

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
    class Sink;

    int Launch(bool triggered);
    bool LaunchThread();
    bool OnFrameThread() const { return m_FrameThreadId.load() == std::this_thread::get_id(); }
    void JoinFrames();
    IZelCameraCommon* Common();

    void FrameLoop();
    bool TryHandOver(const FrameFacts& facts, unsigned number, const FrameSink::Fill& fill, bool& filled);
    bool FillAndQueue(IZelCameraCommon& common, ZelImage& image, const FrameFacts& facts, unsigned number,
                      const FrameSink::Fill& fill);

    Camera& m_Camera;
    const int m_InterfaceType;
    const double m_LinkBytesPerSecond;
    std::atomic<bool> m_Connected{false};
    std::atomic<unsigned> m_Stops{0};  // a launch that finds another stop than its own behind it gives up
    std::atomic<int> m_Dropped{0};

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

    platform::Mutex m_RateLock;
    RateMeter m_Rate ZEL_GUARDED_BY(m_RateLock);
    double m_LatencySeconds ZEL_GUARDED_BY(m_RateLock) = 0.0;

    unsigned m_FrameNumber = 0;  // of the frame thread: the next one's
};

}  // namespace zel::kit

#endif
