// A transport that passes everything on to another one.
#ifndef ZELCAM_FORWARDINGTRANSPORT_H
#define ZELCAM_FORWARDINGTRANSPORT_H

#include "link/ICameraInterface.h"

namespace zelcam::check {

class ForwardingTransport : public ICameraInterface {
  public:
    explicit ForwardingTransport(ICameraInterface& next) : m_Next(next) {}

    void SetCameraCommon(IZelCameraCommon* camera) override { m_Next.SetCameraCommon(camera); }
    int Connect() override { return m_Next.Connect(); }
    int Disconnect() override { return m_Next.Disconnect(); }
    int SendData(int len, const unsigned char* data) override { return m_Next.SendData(len, data); }
    int RecvData(int len, unsigned char* buffer, int timeout_ms) override {
        return m_Next.RecvData(len, buffer, timeout_ms);
    }
    int Start() override { return m_Next.Start(); }
    int Stop() override { return m_Next.Stop(); }
    int GetInterfaceType() override { return m_Next.GetInterfaceType(); }
    int PrepareAcquisition(int* buffers) override { return m_Next.PrepareAcquisition(buffers); }
    void SetFrameCount(int frames) override { m_Next.SetFrameCount(frames); }
    bool SetImageHandler(ZelImageHandler handler, ZelCamera* camera) override {
        return m_Next.SetImageHandler(handler, camera);
    }
    bool SetEventHandler(ZelEventHandler handler, ZelCamera* camera) override {
        return m_Next.SetEventHandler(handler, camera);
    }
    bool EnableEvents(int value) override { return m_Next.EnableEvents(value); }
    int GetStatusValue() override { return m_Next.GetStatusValue(); }
    int GetDroppedFrames() override { return m_Next.GetDroppedFrames(); }
    int StartTrigger() override { return m_Next.StartTrigger(); }
    bool StopTrigger() override { return m_Next.StopTrigger(); }
    bool SetStatusValue(int value) override { return m_Next.SetStatusValue(value); }
    bool GetLedState(unsigned char* on) override { return m_Next.GetLedState(on); }
    bool SetLedState(bool on) override { return m_Next.SetLedState(on); }
    void SetCameraObject(ZelCamera* camera) override { m_Next.SetCameraObject(camera); }
    ZelCamera* GetCameraObject() override { return m_Next.GetCameraObject(); }
    double GetLinkThroughput() override { return m_Next.GetLinkThroughput(); }
    double GetLinkFrameRate() override { return m_Next.GetLinkFrameRate(); }
    double GetLinkLatency() override { return m_Next.GetLinkLatency(); }
    double GetLinkUtilization() override { return m_Next.GetLinkUtilization(); }

    ICameraInterface& Next() const { return m_Next; }

  private:
    ICameraInterface& m_Next;
};

}  // namespace zelcam::check

#endif
