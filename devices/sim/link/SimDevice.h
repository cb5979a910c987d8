// The back end of a simulated camera: its firmware, and a sensor or a recording that frames are made of, at the pace of
// a real camera.
#ifndef SIM_SIMDEVICE_H
#define SIM_SIMDEVICE_H

#include <array>
#include <memory>
#include <string>

#include "devices/sim/firmware/Firmware.h"
#include "devices/sim/link/Faults.h"
#include "devices/sim/link/Settings.h"
#include "devices/sim/sensor/FrameReadout.h"
#include "devices/sim/sensor/FrameSource.h"

namespace zel::sim {

// What makes one plug-in differ from another.
struct PluginDescription {
    const char* port_type_text;
    const char* address_formats[3];  // "#" stands for the camera's number, from 1
    int interface_type;
};

class SimDevice final : public Firmware {
  public:
    SimDevice(const PluginDescription& plugin, int number, const Settings& settings);

    kit::Description Describe() const override;
    void Prepare() override;
    int LongestRun() const override;
    void Start(kit::FrameSink& sink, const kit::Run& run) override;

    Faults& Script() { return m_Faults; }

  private:
    // One frame on its way from the sensor to the host.
    struct FrameJob {
        Conditions conditions;
        unsigned number = 0;       // since the transport's start, 0 first
        std::int64_t next_us = 0;  // from this frame to the next one, free running
        Clock::time_point ready{};
    };

    FrameSource& Source();
    bool Fetch(FrameJob& job);
    bool Expose(kit::FrameSink& sink, const kit::Run& run, FrameJob& job, Clock::time_point& next_ready);
    bool Stall(kit::FrameSink& sink, int milliseconds);
    void HandOver(kit::FrameSink& sink, const FrameJob& job);
    void Fill(const FrameJob& job, std::span<std::uint8_t> memory);
    bool Packed(const FrameJob& job) const { return Model().packed && job.conditions.taps > 1; }
    Clock::duration Scaled(std::int64_t microseconds) const;

    const Settings m_Settings;
    const std::array<std::string, 3> m_Addresses;
    const char* const m_PortType;
    Faults m_Faults;

    // Of the frame thread.
    std::unique_ptr<FrameSource> m_Source;  // made at first use
    FrameReadout m_Readout;
    Clock::duration m_FrameCost{};  // of the frame handed over last
};

}  // namespace zel::sim

#endif
