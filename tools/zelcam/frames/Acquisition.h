// What the commands that take frames have in common: settings, start and stop, waiting.
#ifndef ZELCAM_ACQUISITION_H
#define ZELCAM_ACQUISITION_H

#include <chrono>
#include <string>
#include <vector>

#include "tools/zelcam/camera/CameraParameters.h"
#include "tools/zelcam/camera/ColorSetup.h"
#include "tools/zelcam/camera/Session.h"
#include "tools/zelcam/frames/FrameProcessing.h"
#include "tools/zelcam/frames/FrameWaiter.h"

namespace CLI {
class App;
}

namespace zelcam {

// The settings that a user gives with a command that takes frames.
struct AcquisitionSettings {
    std::string exposure_us;
    std::string gain;
    std::string buffers;
    std::vector<std::string> assignments;  // NAME=VALUE
    FrameProcessing processing;
    ColorOptions color;
    double timeout_s = 0.0;  // 0: chosen from exposure and frame time

    // Exposure, gain, buffers, any parameter, time-out.
    void Declare(CLI::App& command);
    // What is done with the frames: region, binning, average, color.
    void DeclareProcessing(CLI::App& command);
    // Writes them all, each read back. Throws Failure at the first one that the camera does not take.
    std::vector<WriteOutcome> Apply(ZelCamera* camera) const;
};

enum class StartMode { kFree, kTriggered };

// An acquisition that runs while this object lives. Its frames are its own: those that an earlier run left waiting go
// back to the pool.
class Acquisition {
  public:
    // Throws Failure when the camera does not start.
    Acquisition(OpenCamera& camera, FrameMode frames, StartMode start, const AcquisitionSettings& settings);
    ~Acquisition();
    Acquisition(const Acquisition&) = delete;
    Acquisition& operator=(const Acquisition&) = delete;

    // The next frame. Empty only when the user wants to end; throws Failure when none came.
    Frame Next();
    // Frames that the transport lost since the start.
    std::uint64_t LinkDrops() const;
    FrameWaiter& Waiter() { return m_Waiter; }
    void Stop();

  private:
    [[noreturn]] void FailToStart() const;
    [[noreturn]] void FailWithoutFrame() const;
    Frame WaitForFrame();
    bool CameraStopped() const;

    OpenCamera& m_Camera;
    StartMode m_Start;
    FrameWaiter m_Waiter;
    FrameProcessing m_Processing;
    bool m_SizeChecked = false;
    std::chrono::milliseconds m_Timeout{};
    long long m_ExposureUs = 0;
    long long m_Sequence = 0;  // frames after which the camera stops by itself; 0: it does not
    bool m_Running = false;
};

}  // namespace zelcam

#endif
