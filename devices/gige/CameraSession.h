// A camera that is open: the control of it, everything set that this plug-in relies on, its acquisitions.
#ifndef GIGE_CAMERASESSION_H
#define GIGE_CAMERASESSION_H

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "devices/gige/BlockIds.h"
#include "devices/gige/FrameStream.h"
#include "devices/gige/GenicamFeatures.h"
#include "devices/gige/LinkCounters.h"
#include "devices/gige/PixelFormats.h"
#include "devices/kit/BackEnd.h"
#include "platform/Mutex.h"

namespace zel::gige {

// What a hardware trigger listens to.
struct TriggerInput {
    int line = 0;  // 1: the first of TriggerLines()
    bool active_low = false;
};

// One thread runs Acquire(); the others may be called on any meanwhile. When the camera is gone the destructor, which
// says good-bye to it, takes seconds.
class CameraSession {
  public:
    // Takes control of the camera at this address, which becomes one of full, unbinned frames in the best format there
    // is. Throws Failure. `lost` is called, on some thread and perhaps more than once, when the camera is gone.
    CameraSession(const std::string& address, std::function<void()> lost);
    ~CameraSession();
    CameraSession(const CameraSession&) = delete;
    CameraSession& operator=(const CameraSession&) = delete;

    GenicamFeatures& Features() { return m_Features; }
    int Width() const { return m_Width; }
    int Height() const { return m_Height; }
    PixelFormat Format() const;
    std::vector<PixelFormat> Formats() const { return m_Formats; }
    // Not while an acquisition is on. Throws Failure.
    void SetFormat(const std::string& name);
    const std::vector<std::string>& TriggerLines() const { return m_Lines; }

    bool Gone() const { return m_Features.Silent(); }
    // Gives frames until the sink has ended. Throws Failure when it can't be begun.
    void Acquire(kit::FrameSink& sink, const kit::Run& run, TriggerInput input);
    void Wake();
    std::string LinkText();
    // What became of the frames of the last acquisition; empty when none was lost.
    std::string Losses() const;

  private:
    struct LossNotice;
    struct EndCamera {
        void operator()(ArvCamera* camera) const;
    };
    using CameraPtr = std::unique_ptr<ArvCamera, EndCamera>;

    static CameraPtr Open(const std::string& address, const std::string& port);
    ArvGvDevice* Device() const { return ARV_GV_DEVICE(arv_camera_get_device(m_Camera.get())); }
    void ListenForLoss(std::function<void()> lost);
    void StopListening();
    void SetDefaults();
    void TakeFullFrames();
    void ChooseFormat();
    bool TryFormat(const PixelFormat& format);
    void NegotiatePackets();
    void SetTrigger(const kit::Run& run, TriggerInput input);
    std::size_t FrameBytes() const;
    void BeginStream();
    void EndStream();
    void Pace();

    void Loop(kit::FrameSink& sink, bool by_software);
    bool FireTrigger(kit::FrameSink& sink);
    bool Take(const FrameStream::Arrival& arrival, kit::FrameSink& sink);
    std::uint64_t LinkCounters::*Judge(ArvBuffer* buffer);
    void Lose(kit::FrameSink& sink, std::uint64_t LinkCounters::*cause, unsigned frames);
    void Fill(ArvBuffer* buffer, std::span<std::uint8_t> memory) const;

    const std::string m_Address;
    const std::string m_Port;  // the address of this computer that the camera is reached through
    const CameraPtr m_Camera;
    GenicamFeatures m_Features;
    std::shared_ptr<LossNotice> m_Notice;

    int m_Width = 0;
    int m_Height = 0;
    std::vector<PixelFormat> m_Formats;
    std::vector<std::string> m_Lines;
    double m_LinkBitsPerSecond = 1e9;
    bool m_LinkSpeedTold = false;
    std::uint64_t m_ClockHz = 0;
    int m_PacketBytes = 0;
    std::atomic<int> m_PacedFor = 0;  // so many cameras on the link
    std::atomic<std::int64_t> m_DelayNs = -1;

    mutable platform::Mutex m_Lock;
    PixelFormat m_Format ZEL_GUARDED_BY(m_Lock);
    bool m_Acquiring ZEL_GUARDED_BY(m_Lock) = false;
    LinkCounters m_Counters ZEL_GUARDED_BY(m_Lock);
    std::string m_MemoryText ZEL_GUARDED_BY(m_Lock);
    std::string m_MemoryWarning ZEL_GUARDED_BY(m_Lock);
    std::shared_ptr<FrameStream> m_Stream ZEL_GUARDED_BY(m_Lock);

    // The acquisition's thread's own.
    FrameStream* m_Frames = nullptr;
    PixelFormat m_Run;
    std::uint32_t m_RunFormat = 0;
    BlockIds m_Ids;
    bool m_MayBreak = false;  // the next frame is the first of the run, and can be had again
};

}  // namespace zel::gige

#endif
