// A transport whose longer operations are watched.
#ifndef ZELCAM_WATCHEDTRANSPORT_H
#define ZELCAM_WATCHEDTRANSPORT_H

#include "tools/zelcam/check/ForwardingTransport.h"
#include "tools/zelcam/check/OperationWatch.h"

namespace zelcam::check {

class WatchedTransport final : public ForwardingTransport {
  public:
    WatchedTransport(ICameraInterface& next, OperationWatch& watch) : ForwardingTransport(next), m_Watch(watch) {}

    void SetCameraCommon(IZelCameraCommon* camera) override {
        m_Watch.Run("SetCameraCommon", [&] { Next().SetCameraCommon(camera); });
    }
    int Connect() override {
        return m_Watch.Run("Connect", [&] { return Next().Connect(); });
    }
    int Disconnect() override {
        return m_Watch.Run("Disconnect", [&] { return Next().Disconnect(); });
    }
    int Start() override {
        return m_Watch.Run("Start", [&] { return Next().Start(); });
    }
    int Stop() override {
        return m_Watch.Run("Stop", [&] { return Next().Stop(); });
    }
    int StartTrigger() override {
        return m_Watch.Run("StartTrigger", [&] { return Next().StartTrigger(); });
    }
    bool StopTrigger() override {
        return m_Watch.Run("StopTrigger", [&] { return Next().StopTrigger(); });
    }

  private:
    OperationWatch& m_Watch;
};

}  // namespace zelcam::check

#endif
