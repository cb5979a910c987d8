// A transport that stands before a simulated camera's, and does to the traffic what was planned.
#ifndef TESTS_CAMPAIGN_FAULTYTRANSPORT_H
#define TESTS_CAMPAIGN_FAULTYTRANSPORT_H

#include <cstdint>
#include <cstring>
#include <deque>
#include <vector>

#include "link/IZelCameraCommon.h"
#include "platform/Mutex.h"
#include "tests/campaign/FaultyLink.h"
#include "tests/campaign/Side.h"
#include "tools/zelcam/check/ForwardingTransport.h"

namespace zel::campaign {

// The camera object as the plug-in sees it.
class SdkSide final : public IZelCameraCommon {
  public:
    IZelCameraCommon* next = nullptr;

    int ConnectCommon() override { return In(&IZelCameraCommon::ConnectCommon); }
    int StopCommon() override { return In(&IZelCameraCommon::StopCommon); }
    int StartCommon() override { return In(&IZelCameraCommon::StartCommon); }
    int StartTriggerCommon() override { return In(&IZelCameraCommon::StartTriggerCommon); }
    int TextCommandCommon(const char* text, bool reply) override {
        return In(&IZelCameraCommon::TextCommandCommon, text, reply);
    }
    bool GetCameraParameter(int index, int* value) override {
        return In(&IZelCameraCommon::GetCameraParameter, index, value);
    }
    int* GetLastErrorPtr() override { return In(&IZelCameraCommon::GetLastErrorPtr); }
    bool SyncTapBalanceGain() override { return In(&IZelCameraCommon::SyncTapBalanceGain); }
    ZelImage* GetFreeImage() override { return In(&IZelCameraCommon::GetFreeImage); }
    ZelImage* GetPendingImage() override { return In(&IZelCameraCommon::GetPendingImage); }
    bool SetPendingImage(ZelImage* image) override { return In(&IZelCameraCommon::SetPendingImage, image); }
    bool ReleaseImage(ZelImage* image) override { return In(&IZelCameraCommon::ReleaseImage, image); }
    void FillImageInfo(ZelImage* image) override { In(&IZelCameraCommon::FillImageInfo, image); }
    void FreeAllInUseImages() override { In(&IZelCameraCommon::FreeAllInUseImages); }

  private:
    // No exception may come out.
    template <class Result, class... Parameters>
    Result In(Result (IZelCameraCommon::*call)(Parameters...), Parameters... parameters) noexcept {
        const Crossing crossing(Side::kSdk);
        return (next->*call)(parameters...);
    }
};

class FaultyTransport final : public zelcam::check::ForwardingTransport {
  public:
    FaultyTransport(ICameraInterface& next, FaultyLink& link) : ForwardingTransport(next), m_Link(link) {}

    void SetCameraCommon(IZelCameraCommon* camera) override;
    int Connect() override;
    int Disconnect() override { return Do("close", &ICameraInterface::Disconnect); }
    int SendData(int len, const unsigned char* data) override;
    int RecvData(int len, unsigned char* buffer, int timeout_ms) override;
    int Start() override { return Do("start", &ICameraInterface::Start); }
    int Stop() override { return Do("stop", &ICameraInterface::Stop); }
    int StartTrigger() override { return Do("start", &ICameraInterface::StartTrigger); }
    bool StopTrigger() override { return Do("stop", &ICameraInterface::StopTrigger); }
    int PrepareAcquisition(int* buffers) override { return Do("", &ICameraInterface::PrepareAcquisition, buffers); }
    void SetFrameCount(int frames) override { Do("", &ICameraInterface::SetFrameCount, frames); }
    bool SetImageHandler(ZelImageHandler handler, ZelCamera* camera) override;
    bool SetEventHandler(ZelEventHandler handler, ZelCamera* camera) override;
    bool EnableEvents(int value) override { return Do("", &ICameraInterface::EnableEvents, value); }
    bool SetStatusValue(int value) override { return Do("", &ICameraInterface::SetStatusValue, value); }
    bool GetLedState(unsigned char* on) override { return Do("", &ICameraInterface::GetLedState, on); }
    bool SetLedState(bool on) override { return Do("", &ICameraInterface::SetLedState, on); }

  private:
    // What an operation answers when it has failed: a code, or false.
    static int Failed(int) { return 9; }
    static bool Failed(bool) { return false; }

    template <class Result, class... Parameters>
    Result Do(const char* operation, Result (ICameraInterface::*call)(Parameters...), Parameters... parameters) {
        const Crossing crossing(Side::kAround);
        const FaultKind* const fault = m_Link.Next(Occasion::kOperation);
        if (fault && fault->effect == Effect::kUnplug) m_Link.Unplug(operation, fault->amount);
        if constexpr (std::is_void_v<Result>) {
            if (!fault || fault->effect != Effect::kRefuse) (Next().*call)(parameters...);
        } else {
            // One that fails to disconnect is still connected.
            const bool closes = std::strcmp(operation, "close") == 0;
            const bool refused =
                fault && (fault->effect == Effect::kRefuse || (closes && fault->effect == Effect::kFail));
            if (refused || m_Link.dead) return Failed(Result());
            const Result result = (Next().*call)(parameters...);
            return fault && fault->effect == Effect::kFail ? Failed(Result()) : result;
        }
    }
    int TakeReply(const FaultKind* fault, int length, const unsigned char* data) ZEL_REQUIRES(m_Lock);
    void Spoil(const FaultKind& fault, std::vector<unsigned char>& reply) ZEL_REQUIRES(m_Lock);

    static void ZEL_CALL OnImage(ZelImage* image, ZelCamera* camera) noexcept;
    static void ZEL_CALL OnEvent(const ZelCameraEvent* event, ZelCamera* camera) noexcept;
    static inline std::atomic<ZelImageHandler> s_ImageHandler{nullptr};
    static inline std::atomic<ZelEventHandler> s_EventHandler{nullptr};

    FaultyLink& m_Link;
    SdkSide m_Sdk;
    platform::Mutex m_Lock;
    std::deque<unsigned char> m_Stream ZEL_GUARDED_BY(m_Lock);  // from the camera, not yet read
    int m_FalseCount ZEL_GUARDED_BY(m_Lock) = 0;
    bool m_OneByte ZEL_GUARDED_BY(m_Lock) = false;
    bool m_Late ZEL_GUARDED_BY(m_Lock) = false;
    std::uint32_t m_Ready ZEL_GUARDED_BY(m_Lock) = 0;
};

}  // namespace zel::campaign

#endif
