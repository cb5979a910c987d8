// What makes the registers of a simulated camera its own: the bounds that its sensor sets, values that follow from
// others, the time of a recalculation, cooling, and the flash memory behind the "tb" commands.
//
// The host's conversation is one call at a time; Now() and Name() may be asked on any thread.
#ifndef SIM_FIRMWARE_H
#define SIM_FIRMWARE_H

#include <atomic>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "devices/kit/BackEnd.h"
#include "devices/sim/firmware/Cooler.h"
#include "devices/sim/firmware/FlashCommands.h"
#include "devices/sim/firmware/FrameTiming.h"
#include "devices/sim/sensor/CameraModel.h"
#include "devices/sim/sensor/FrameSource.h"
#include "platform/Mutex.h"

namespace zel::sim {

struct FirmwareOptions {
    int calc_delay_ms = 20;
    double cooling_seconds = 20.0;
    FlashTimes flash_times{};
};

class Firmware : public kit::BackEnd {
  public:
    using Clock = std::chrono::steady_clock;

    Firmware(const CameraModel& model, const FirmwareOptions& options);

    void PowerOn(kit::ParameterTable& table) override;
    std::optional<kit::Attributes> AttributesOf(int index) override;
    int Read(int index, kit::Value& value) override;
    int Write(int index, kit::Value& value) override;
    std::optional<std::string> Text(std::string_view command) override;

    // How long the commands since the last call kept the camera busy.
    std::chrono::microseconds TakeBusyTime() { return std::exchange(m_Busy, {}); }

    // What a frame that begins now is taken with.
    struct Conditions {
        SensorSettings settings;
        FrameTiming timing;
        int taps = 1;  // since the last recalculation
    };
    Conditions Now() const;
    std::string Name() const;
    const CameraModel& Model() const { return m_Model; }

    void SetCalcDelay(int milliseconds) { m_Options.calc_delay_ms = milliseconds; }
    void SetFlashTimes(const FlashTimes& times) { m_Flash.SetTimes(times); }
    // Whether a command begins to read a row of a calibration table, and what its first gain is told to be then.
    bool BeginsTableRow(std::string_view command) const;
    void SpoilTableRow(float gain) { m_Flash.SpoilNextRow(gain); }
    void SetCalcNeverEnds(bool never) { m_CalcNeverEnds = never; }

  protected:
    void SetExposureState(int state) { m_ExposureState = state; }

  private:
    int Number(int index) const { return m_Table->Number(index); }
    void FollowSettings();
    bool CalcDone() const { return !m_CalcNeverEnds && Clock::now() >= m_CalcEnd; }
    void StartCalculation();
    void Publish();
    std::string Description() const;

    const CameraModel m_Model;
    FirmwareOptions m_Options;
    kit::ParameterTable* m_Table = nullptr;
    Cooler m_Cooler;
    FlashCommands m_Flash;
    std::chrono::microseconds m_Busy{};
    Clock::time_point m_CalcEnd{};
    bool m_CalcNeverEnds = false;
    bool m_Calculating = false;
    bool m_NeedsCalc = false;
    int m_Taps = 1;
    int m_ClockMhz = 20;
    std::atomic<int> m_ExposureState{0};

    mutable platform::Mutex m_Lock;
    Conditions m_Conditions ZEL_GUARDED_BY(m_Lock);  // but for the temperature
    Cooler m_CoolerNow ZEL_GUARDED_BY(m_Lock);
    std::string m_Name ZEL_GUARDED_BY(m_Lock);
};

}  // namespace zel::sim

#endif
