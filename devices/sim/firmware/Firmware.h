// The camera's firmware: answers text commands and parameter-table requests from memory and decides when a frame is
// exposed. It knows nothing of links or threads: its owner serialises all calls.
#ifndef SIM_FIRMWARE_H
#define SIM_FIRMWARE_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "devices/sim/firmware/Cooler.h"
#include "devices/sim/firmware/FlashCommands.h"
#include "devices/sim/firmware/FrameTiming.h"
#include "devices/sim/firmware/Registers.h"
#include "devices/sim/sensor/Sensor.h"

namespace zel::sim {

enum class TriggerEdge { kActive, kRising, kFalling };  // kActive: the edge that the polarity asks for

struct FirmwareOptions {
    int calc_delay_ms = 20;
    double cooling_seconds = 20.0;
    FlashTimes flash_times{};
    int longest_run = 0;  // frames after which a run is over; 0: there is no end
};

class Firmware {
  public:
    using Clock = std::chrono::steady_clock;
    static constexpr int kMostPendingTriggers = 1000;

    Firmware(const CameraModel& model, const FirmwareOptions& options);

    // Appends to `answer` what the camera sends back for one datagram.
    void Handle(std::span<const std::uint8_t> datagram, std::vector<std::uint8_t>& answer);
    // As Handle, but a table request is refused with this exception code and a text command with an error.
    void Refuse(std::span<const std::uint8_t> datagram, int exception, std::vector<std::uint8_t>& answer) const;

    // How long the commands since the last call kept the camera busy.
    std::chrono::microseconds TakeBusyTime() { return std::exchange(m_Busy, {}); }

    // Power off and on: everything but the camera's name and its flash memory goes back to its default.
    void PowerCycle();

    // Frames. FrameDue is true while one is to be exposed: in free run always, else when a trigger waits. BeginFrame
    // takes it (and its trigger), FinishFrame counts it.
    bool Acquiring() const { return m_Mode != Mode::kIdle; }
    bool FreeRunning() const { return m_Mode == Mode::kFreeRun; }
    bool FrameDue() const { return FreeRunning() || (Acquiring() && m_PendingTriggers > 0); }
    void BeginFrame();
    void FinishFrame();
    void SetExposureState(int state) { m_Registers.Store(EXPOSURE_STATE, state); }
    // Counts up with every start of an acquisition, so that a frame of an earlier one can be told.
    unsigned Acquisition() const { return m_Acquisition; }

    // A pulse at the trigger input. True when it made a frame due.
    bool HardwareTrigger(TriggerEdge edge);

    // Frames of a sequence, 0 = until stopped.
    void SetSequence(int frames);        // of the acquisitions to come
    void SetSequenceOfThis(int frames);  // of the one that runs, counted from its start
    int FramesToCome() const { return m_FramesToCome; }

    SensorSettings Settings() const;
    FrameTiming Timing() const;
    // The readout channels since the last recalculation.
    int Taps() const { return m_Taps; }

    void SetCalcDelay(int milliseconds) { m_Options.calc_delay_ms = milliseconds; }
    void SetFlashTimes(const FlashTimes& times) { m_Flash.SetTimes(times); }
    // Whether a datagram begins to read a row of a calibration table, and what its first gain is told to be then.
    bool BeginsTableRow(std::span<const std::uint8_t> datagram) const;
    void SpoilTableRow(float gain) { m_Flash.SpoilNextRow(gain); }
    void SetCalcNeverEnds(bool never) { m_CalcNeverEnds = never; }
    std::string Name() const { return m_Registers.Text(CAMERA_NAME); }
    const CameraModel& Model() const { return m_Model; }

  private:
    enum class Mode { kIdle, kFreeRun, kTriggered };

    // Table requests.
    void HandleTable(std::span<const std::uint8_t> datagram, std::vector<std::uint8_t>& answer);
    int Request(int command, std::span<const std::uint8_t> arguments, std::vector<std::uint8_t>& data);
    void Refresh(int index);
    int Write(int index, std::span<const std::uint8_t> data);
    int CheckWrite(int index, std::span<const std::uint8_t> data) const;
    void Follow(int index, int value);
    void FollowSettings();
    bool CalcDone() const;
    void StartCalculation();

    // Text commands.
    std::string AnswerText(std::string_view command);
    std::string Description() const;
    bool TriggerCommand(std::string_view arguments);
    bool CameraCommand(std::string_view arguments);

    // Acquisition.
    int Limited(int frames) const;
    void Run();
    void Arm();
    void Halt();
    void Begin(Mode mode);
    void AddTrigger();
    bool HardwareTriggered() const { return m_Registers.Value(HW_TRIG_SOURCE) != 0 || m_TriggerCl || m_TriggerA; }

    CameraModel m_Model;
    FirmwareOptions m_Options;
    Registers m_Registers;
    Cooler m_Cooler;
    FlashCommands m_Flash;
    std::chrono::microseconds m_Busy{};
    Mode m_Mode = Mode::kIdle;
    unsigned m_Acquisition = 0;
    int m_PendingTriggers = 0;
    int m_SequenceOfThis = 0;
    int m_FramesToCome = 0;
    bool m_TriggerSoftware = false;  // the three switches of the "trig" commands
    bool m_TriggerCl = false;
    bool m_TriggerA = false;
    Clock::time_point m_CalcEnd{};
    bool m_CalcNeverEnds = false;
    bool m_NeedsCalc = false;
    int m_Taps = 1;
    int m_ClockMhz = 20;
};

// The text of a datagram that is a command, without its line end; the header is optional.
std::string_view CommandText(std::span<const std::uint8_t> datagram);
inline bool IsTableRequest(std::span<const std::uint8_t> datagram) { return !datagram.empty() && datagram[0] == 0; }

}  // namespace zel::sim

#endif
