// What the commands that take frames have in common: settings, start and stop, waiting.
#ifndef ZELCAM_ACQUISITION_H
#define ZELCAM_ACQUISITION_H

#include <atomic>
#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "tools/zelcam/camera/ColorArguments.h"
#include "tools/zelcam/frames/FrameProcessing.h"
#include "tools/zelcam/text/Interrupt.h"
#include "zel/Camera.h"

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
    ColorArguments color;
    double timeout_s = 0.0;  // 0: chosen from exposure and frame time

    // Exposure, gain, buffers, any parameter, time-out.
    void Declare(CLI::App& command);
    // What is done with the frames: region, binning, average, color.
    void DeclareProcessing(CLI::App& command);
    // Writes them all, each read back. Throws Failure at the first one that the camera does not take.
    std::vector<zel::SetResult> Apply(const zel::Camera& camera) const;
};

// An acquisition that runs while this object lives. The user's wish to end it ends its waits.
class Acquisition {
  public:
    // Throws Failure when the camera does not start.
    Acquisition(zel::Camera& camera, const AcquisitionSettings& settings, zel::Trigger trigger = zel::Trigger::as_set,
                zel::Order order = zel::Order::every);
    ~Acquisition() { m_Camera.stop(); }
    Acquisition(const Acquisition&) = delete;
    Acquisition& operator=(const Acquisition&) = delete;

    // The next frame. Empty only when the user wants to end, or End() was called; throws Failure when none came.
    zel::Frame Next();
    // Ends the wait that another thread is in, and all that follow.
    void End();
    // Image buffers of the pool.
    std::size_t Buffers() const { return m_Buffers; }
    // Stops the camera before this object dies. Frames that are held stay good.
    void Stop() { m_Camera.stop(); }

  private:
    zel::Camera& m_Camera;
    zel::Order m_Order;
    FrameProcessing m_Processing;
    bool m_SizeChecked = false;
    std::atomic<bool> m_Ended = false;
    std::size_t m_Buffers;
    std::chrono::milliseconds m_Timeout{};
    OnInterrupt m_OnInterrupt;
};

}  // namespace zelcam

#endif
