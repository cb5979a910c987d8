// One simulated camera at the end of a link: firmware, sensor, the link's faults, and whether it is plugged in. It
// lives as long as the plug-in; transports come and go.
//
// One lock guards everything but the sensor. It is never held while the SDK is called.
#ifndef SIM_SIMCAMERA_H
#define SIM_SIMCAMERA_H

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "devices/sim/firmware/Firmware.h"
#include "devices/sim/link/Faults.h"
#include "devices/sim/link/ReplyStream.h"
#include "devices/sim/link/Settings.h"
#include "devices/sim/sensor/FrameSource.h"
#include "platform/Mutex.h"

namespace zel::sim {

// Frames of the camera since it was made, by what became of them.
struct FrameCounts {
    std::uint64_t delivered = 0;
    std::uint64_t lost_on_link = 0;
    std::uint64_t no_buffer = 0;
};

class SimCamera {
  public:
    static constexpr std::size_t kLongestLog = 10000;

    SimCamera(const CameraModel& model, const Settings& settings);

    const CameraModel& Model() const { return m_Model; }
    const Settings& PluginSettings() const { return m_Settings; }

    // The host's side of the link.
    int Send(std::span<const std::uint8_t> datagram);
    int Receive(std::span<std::uint8_t> into, int timeout_ms);
    // A fresh link: nothing is left to be received.
    void OpenLink();

    bool Plugged() const;
    // False when nothing changed. Plugging in powers the camera up.
    bool SetPlugged(bool plugged);
    // Called without a lock when a fault unplugged the camera.
    void SetVanished(std::function<void()> vanished) { m_Vanished = std::move(vanished); }
    // An operation of the transport has come: unplugs the camera when a fault says so.
    void PassOccasion(FaultOccasion occasion);
    // Unplugs the camera and tells so, as a fault does.
    void VanishNow();

    // Script and inspection.
    void AddFault(const Fault& fault);
    void ClearFaults();
    void SetCalcDelay(int milliseconds);
    void SetFlashTimes(const FlashTimes& times);
    void SetCalcNeverEnds(bool never);
    bool HardwareTrigger(TriggerEdge edge);
    std::string Log(std::size_t last) const;  // one line per exchange, the newest `last` of them
    void ClearLog();
    std::uint64_t Exchanges() const;
    FrameCounts Frames() const;
    std::string Name() const;

    // For the transport's frame thread, which waits for changes and works on the firmware under this lock.
    platform::Mutex& Lock() const ZEL_RETURNS_LOCK(m_Lock) { return m_Lock; }
    platform::Condition& Changed() { return m_Changed; }
    bool PluggedLocked() const ZEL_REQUIRES(m_Lock) { return m_Plugged; }
    Firmware& FirmwareLocked() ZEL_REQUIRES(m_Lock) { return m_Firmware; }
    Faults& FaultsLocked() ZEL_REQUIRES(m_Lock) { return m_Faults; }
    FrameCounts& FramesLocked() ZEL_REQUIRES(m_Lock) { return m_Frames; }
    unsigned FaultClearsLocked() const ZEL_REQUIRES(m_Lock) { return m_FaultClears; }
    // What frames are made of. Made at first use: at a start, or on the thread that sends them.
    FrameSource& Source();

  private:
    void Record(std::span<const std::uint8_t> datagram) ZEL_REQUIRES(m_Lock);
    std::optional<Fault> FaultOf(std::span<const std::uint8_t> datagram) ZEL_REQUIRES(m_Lock);
    int Answer(std::span<const std::uint8_t> datagram, const std::optional<Fault>& fault) ZEL_REQUIRES(m_Lock);
    bool UnplugLocked() ZEL_REQUIRES(m_Lock);

    const CameraModel m_Model;
    const Settings m_Settings;
    mutable platform::Mutex m_Lock;
    platform::Condition m_Changed;
    Firmware m_Firmware ZEL_GUARDED_BY(m_Lock);
    Faults m_Faults ZEL_GUARDED_BY(m_Lock);
    ReplyStream m_Replies ZEL_GUARDED_BY(m_Lock);
    bool m_Plugged ZEL_GUARDED_BY(m_Lock) = true;
    unsigned m_FaultClears ZEL_GUARDED_BY(m_Lock) = 0;
    std::deque<std::string> m_Log ZEL_GUARDED_BY(m_Lock);
    std::uint64_t m_Exchanges ZEL_GUARDED_BY(m_Lock) = 0;
    FrameCounts m_Frames ZEL_GUARDED_BY(m_Lock);
    std::function<void()> m_Vanished;
    std::unique_ptr<FrameSource> m_Source;
};

}  // namespace zel::sim

#endif
