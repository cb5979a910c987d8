// One camera from create_camera_interface to destroy_camera_interface, as the SDK drives it.
#ifndef ZELCAM_CAMERASESSION_H
#define ZELCAM_CAMERASESSION_H

#include <chrono>

#include "tools/zelcam/check/CheckedPlugin.h"
#include "tools/zelcam/check/HostCamera.h"
#include "tools/zelcam/check/WatchedTransport.h"

namespace zelcam::check {

// How long frames may take to come, and an operation of the camera to show. Cameras with long exposures are slow.
inline constexpr int kFrameTimeMs = 10000;
inline constexpr int kEventTimeMs = 10000;

// How long nothing must come for the camera to be taken for silent: two frames' time, within bounds.
inline constexpr std::chrono::microseconds kShortestSilence{200000};
inline constexpr std::chrono::microseconds kLongestSilence{2000000};

class CameraSession {
  public:
    // Makes the transport and gives it its camera object. Throws Broken when there is none.
    CameraSession(CheckedPlugin& plugin, int camera);
    // Whatever state it is in: stopped, disconnected, released, destroyed.
    ~CameraSession();
    CameraSession(const CameraSession&) = delete;
    CameraSession& operator=(const CameraSession&) = delete;

    // Each throws Broken when it does not work.
    void Connect();  // with handlers
    void Open();     // Connect, and the Stop behind it
    void Launch();
    void LaunchTriggered();
    void WaitForFrames(std::size_t frames);
    // Stops and answers what was seen since the launch.
    HostCamera::Seen StopAndLook();
    // Nothing of the host is called any more.
    void RequireSilence(const std::string& since);

    // The transport is somebody else's from here on.
    void Leave() { m_Left = true; }

    ICameraInterface& Raw() const { return m_Raw; }
    WatchedTransport transport;
    HostCamera host;

  private:
    CheckedPlugin& m_Plugin;
    ICameraInterface& m_Raw;
    std::chrono::microseconds m_Silence = kShortestSilence;
    bool m_Connected = false;
    bool m_Launched = false;
    bool m_Left = false;
};

// "1 frame", "2 frames"
std::string FramesText(std::size_t count);

}  // namespace zelcam::check

#endif
