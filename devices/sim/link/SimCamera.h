// One simulated camera at the end of a link: its device, and the faults of the link.
#ifndef SIM_SIMCAMERA_H
#define SIM_SIMCAMERA_H

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "devices/kit/Camera.h"
#include "devices/sim/link/SimDevice.h"

namespace zel::sim {

enum class TriggerEdge { kActive, kRising, kFalling };  // kActive: the edge that the polarity asks for

class SimCamera final : public kit::Camera {
  public:
    static constexpr std::size_t kLongestLog = 10000;

    explicit SimCamera(std::unique_ptr<SimDevice> device);

    // An operation of the transport has come: unplugs the camera when a fault says so.
    void Passing(Operation operation) override;

    // Script and inspection.
    void AddFault(const Fault& fault) { m_Device.Script().Add(fault); }
    void ClearFaults();
    void SetCalcDelay(int milliseconds);
    void SetFlashTimes(const FlashTimes& times);
    void SetCalcNeverEnds(bool never);
    // A pulse at the trigger input. True when it made a frame due.
    bool HardwareTrigger(TriggerEdge edge);
    std::string Log(std::size_t last);  // one line per exchange, the newest `last` of them
    void ClearLog();
    std::uint64_t Exchanges();

  protected:
    Answer Exchange(std::span<const std::uint8_t> datagram) override ZEL_REQUIRES(m_TalkLock);

  private:
    std::optional<Fault> FaultOf(std::span<const std::uint8_t> datagram) ZEL_REQUIRES(m_TalkLock);

    SimDevice& m_Device;
    std::deque<std::string> m_Log ZEL_GUARDED_BY(m_TalkLock);
    std::uint64_t m_Exchanges ZEL_GUARDED_BY(m_TalkLock) = 0;
};

}  // namespace zel::sim

#endif
