#include "tools/zelcam/check/CameraSession.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/zelcam/text/TextTools.h"

namespace zelcam::check {

namespace {

ICameraInterface& Made(ICameraInterface* transport) {
    Require(transport != nullptr, "create_camera_interface answered null");
    return *transport;
}

}  // namespace

std::string FramesText(std::size_t count) { return Counted(count, "frame"); }

CameraSession::CameraSession(CheckedPlugin& plugin, int camera)
    : transport(Made(plugin.Create(camera)), plugin.Watch()),
      host(transport),
      m_Plugin(plugin),
      m_Raw(transport.Next()) {
    transport.SetCameraCommon(&host);
}

CameraSession::~CameraSession() {
    if (m_Left) return;
    if (m_Launched) transport.Stop();
    if (m_Connected) transport.Disconnect();
    transport.SetImageHandler(nullptr, nullptr);
    transport.SetEventHandler(nullptr, nullptr);
    transport.SetCameraCommon(nullptr);
    m_Plugin.Destroy(&m_Raw);
}

void CameraSession::Connect() {
    host.RegisterHandlers();
    const int code = transport.Connect();
    Require(code == 0, fmt::format("Connect answered code {}", code));
    m_Connected = true;
}

void CameraSession::Open() {
    Connect();
    const int stop = transport.Stop();
    Require(stop == 0, fmt::format("Stop behind Connect answered code {}", stop));
    int frame_us = 0;
    if (host.Get(FRAME_TIME, frame_us) && frame_us > 0) {
        m_Silence = std::clamp(2 * std::chrono::microseconds(frame_us), kShortestSilence, kLongestSilence);
    }
}

void CameraSession::Launch() {
    host.Forget();
    m_Launched = true;
    const int code = transport.Start();
    Require(code == 0, fmt::format("Start answered code {}", code));
    const int state = host.Set(CAMERA_STATE, 2);
    Require(state == 0, fmt::format("the camera refused to run with exception {}", state));
}

void CameraSession::LaunchTriggered() {
    host.Forget();
    m_Launched = true;
    const int code = transport.StartTrigger();
    Require(code == 0, fmt::format("StartTrigger answered code {}", code));
    std::string reply;
    for (const char* command : {"cam.calc", "cam.sw trig on", "cam.arm"}) host.Text(command, reply);
}

void CameraSession::WaitForFrames(std::size_t frames) {
    if (host.WaitForFrames(frames, kFrameTimeMs)) return;
    throw Broken(fmt::format("{} of {} came within {} s", host.Snapshot().image_numbers.size(), FramesText(frames),
                             kFrameTimeMs / 1000));
}

HostCamera::Seen CameraSession::StopAndLook() {
    const int code = transport.Stop();
    HostCamera::Seen seen = host.Snapshot();
    Require(code == 0, fmt::format("Stop answered code {}", code));
    return seen;
}

void CameraSession::RequireSilence(const std::string& since) {
    const int before = host.Calls();
    // In slices: where a late call has to wait for a processor, this thread has to, too.
    constexpr int kSlices = 20;
    for (int i = 0; i < kSlices; ++i) std::this_thread::sleep_for(m_Silence / kSlices);
    const int calls = host.Calls() - before;
    Require(calls == 0,
            fmt::format("{} of the camera object {}", Counted(static_cast<unsigned>(calls), "call"), since));
}

}  // namespace zelcam::check
