// The camera that the viewer has open, with what the user chose for it: enough to bring it back to where it was after
// it was unplugged. One thread uses it.
#ifndef ZELCAM_OPENCAMERA_H
#define ZELCAM_OPENCAMERA_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/zelcam/view/FrameTaker.h"
#include "tools/zelcam/view/LiveFrame.h"
#include "zel/Sdk.h"

namespace zelcam {

class OpenCamera {
  public:
    OpenCamera(zel::Sdk& sdk, FrameTaker& taker, NewestFrame& newest, FrameLoans& loans);
    ~OpenCamera();
    OpenCamera(const OpenCamera&) = delete;
    OpenCamera& operator=(const OpenCamera&) = delete;

    // Called before frames of a new run can come.
    void OnRun(std::function<void()> handler) { m_OnRun = std::move(handler); }

    // Called when a run has ended, before the camera changes.
    void OnStop(std::function<void()> handler) { m_OnStop = std::move(handler); }

    // Closes the camera that is open, and opens another with nothing chosen yet. Throws zel::Error.
    void Open(int number, zel::CameraEventHandler on_event);
    // The same camera again, with everything that was chosen. Throws; then it may be closed.
    void OpenAgain(int number, bool calibrated);
    void Close();
    bool IsOpen() const { return m_Camera != nullptr; }
    // There must be one.
    zel::Camera& Camera() const { return *m_Camera; }
    // For whoever may need it a moment longer; it has to be let go before the camera is closed.
    const std::shared_ptr<zel::Camera>& Shared() const { return m_Camera; }

    // Whether frames are wanted from it.
    bool Runs() const { return m_Runs; }
    void Start();
    void Stop();
    // Makes a change that a camera takes over at its next start. Result: whether it was stopped for it and started
    // again.
    bool ChangeStopped(const std::function<void()>& change);

    // Writes everything that was chosen to a camera that woke up with other settings, and starts it if it ran. Result:
    // what it did not take.
    std::vector<std::string> Restore();

    // Writes a parameter and remembers it when it is taken.
    zel::SetResult Set(unsigned id, const std::string& value);
    // Remembers what somebody else wrote.
    void Remember(const zel::SetResult& result);
    void SetTrigger(zel::Trigger trigger);
    zel::Trigger Trigger() const { return m_Trigger; }
    void SetAveraging(int frames);
    int Averaging() const { return m_Averaging; }
    // Empty: grey pictures.
    void SetColor(std::optional<zel::ColorSpace> space);
    std::optional<zel::ColorSpace> Color() const { return m_Color; }
    // Result: whether the camera has what is needed for it.
    bool SetCalibration(bool on);
    bool IsCalibrated() const { return m_CalibrationOn; }
    bool HasCalibration() const { return m_HasCalibration; }
    // Looked for and not found: it is looked for when it is wanted for the first time.
    bool LacksCalibration() const { return m_CalibrationMissing; }

  private:
    void Forget(unsigned id);
    void Halt();
    void Connect(int number, bool calibrated);
    // Has nobody hold a frame any more, since a new pool takes their memory.
    void LetGoOfFrames();

    zel::Sdk& m_Sdk;
    FrameTaker& m_Taker;
    NewestFrame& m_Newest;
    FrameLoans& m_Loans;
    std::function<void()> m_OnRun;
    std::function<void()> m_OnStop;
    zel::CameraEventHandler m_OnEvent;
    std::shared_ptr<zel::Camera> m_Camera;
    bool m_Runs = false;
    bool m_Wanted = false;  // to run, also when a start failed since the camera was on its way out

    std::vector<std::pair<unsigned, std::string>> m_Chosen;  // parameters, in the order in which they were written last
    zel::Trigger m_Trigger = zel::Trigger::as_set;
    int m_Averaging = 0;
    std::optional<zel::ColorSpace> m_Color;
    bool m_CalibrationOn = false;
    bool m_HasCalibration = false;
    bool m_CalibrationMissing = false;
};

}  // namespace zelcam

#endif
