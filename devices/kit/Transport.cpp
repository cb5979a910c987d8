#include "devices/kit/Transport.h"

#include <algorithm>
#include <exception>

#include "include/ZelParameters.h"

namespace zel::kit {

Transport::Transport(Camera& camera, int interface_type, double link_bytes_per_second)
    : m_Camera(camera), m_InterfaceType(interface_type), m_LinkBytesPerSecond(link_bytes_per_second) {}

Transport::~Transport() {
    JoinFrames();
    m_Calls.WaitForCalls();
}

// Handlers belong to the camera object: another one registers its own.
void Transport::SetCameraCommon(IZelCameraCommon* camera) {
    {
        const platform::ScopedLock lock(m_BoundLock);
        if (camera != m_Common) {
            m_ImageHandler = nullptr;
            m_EventHandler = nullptr;
            m_CameraObject = nullptr;
        }
        m_Common = camera;
    }
    if (!camera) m_Calls.WaitForCalls();
}

IZelCameraCommon* Transport::Common() {
    const platform::ScopedLock lock(m_BoundLock);
    return m_Common;
}

int Transport::Connect() {
    m_Camera.Passing(Camera::Operation::kConnect);
    if (!m_Camera.Plugged()) return ZEL_ERROR_CAMERA_COMM_FAILURE;
    IZelCameraCommon* const common = Common();
    if (!common) return ZEL_ERROR_NULL_POINTER_SUPPLIED;
    try {
        if (const int code = m_Camera.Connect()) return code;
    } catch (const std::exception&) {
        return ZEL_ERROR_CAMERA_COMM_FAILURE;
    }
    m_Connected = true;
    const int code = common->ConnectCommon();
    if (code != ZEL_NO_ERROR) {
        m_Connected = false;
        m_Camera.Disconnect();
    }
    return code;
}

int Transport::Disconnect() {
    m_Camera.Passing(Camera::Operation::kClose);
    const bool connected = m_Connected.exchange(false);
    JoinFrames();
    m_Calls.WaitForCalls();
    if (connected) m_Camera.Disconnect();
    return ZEL_NO_ERROR;
}

int Transport::SendData(int len, const unsigned char* data) {
    if (len <= 0 || !data) return 0;
    try {
        return m_Camera.Send({data, static_cast<std::size_t>(len)});
    } catch (const std::exception&) {
        return 0;
    }
}

int Transport::RecvData(int len, unsigned char* buffer, int timeout_ms) {
    if (len <= 0 || !buffer) return 0;
    try {
        return m_Camera.Receive({buffer, static_cast<std::size_t>(len)}, timeout_ms);
    } catch (const std::exception&) {
        return 0;
    }
}

int Transport::Start() { return Launch(false); }
int Transport::StartTrigger() { return Launch(true); }

// The frame thread prepares the run while the SDK prepares the camera, so that frames come at once when it is told to
// run.
int Transport::Launch(bool triggered) {
    if (OnFrameThread()) return ZEL_ERROR_UNSUPPORTED;
    JoinFrames();
    const unsigned stops = m_Stops;
    m_Camera.Passing(Camera::Operation::kStart);
    IZelCameraCommon* const common = Common();
    if (!common || !m_Connected || !m_Camera.Plugged()) return ZEL_ERROR_CAMERA_COMM_FAILURE;
    if (!LaunchThread()) return ZEL_ERROR_UNKNOWN;
    if (const int code = triggered ? common->StartTriggerCommon() : common->StartCommon()) {
        JoinFrames();
        return code;
    }
    if (m_Stops != stops || !m_Connected) {
        JoinFrames();
        return ZEL_ERROR_CAMERA_COMM_FAILURE;
    }
    m_Camera.Control().Release();
    return m_Camera.Control().AwaitReady() ? ZEL_NO_ERROR : ZEL_ERROR_CAMERA_COMM_FAILURE;
}

bool Transport::LaunchThread() {
    const platform::ScopedLock lock(m_ThreadLock);
    m_Dropped = 0;
    m_Camera.Control().Open();
    try {
        m_Frames = std::thread([this] { FrameLoop(); });
    } catch (const std::exception&) {
        return false;
    }
    return true;
}

// Asks the frame thread to end and waits for it, except on the frame thread itself.
// The wish to stop and the wait belong together under one lock: between them a launch on another thread would take the
// wish back, and the wait would have no end. The frame thread itself only wishes.
void Transport::JoinFrames() {
    const auto request = [this] {
        ++m_Stops;
        m_Camera.Control().Close();
        m_Camera.Device().Stop();
    };
    if (OnFrameThread()) return request();
    const platform::ScopedLock lock(m_ThreadLock);
    request();
    if (m_Frames.joinable()) m_Frames.join();
}

int Transport::Stop() {
    JoinFrames();
    m_Calls.WaitForCalls();
    m_Camera.Passing(Camera::Operation::kStop);
    IZelCameraCommon* const common = Common();
    if (!common || !m_Camera.Plugged()) return ZEL_ERROR_CAMERA_COMM_FAILURE;
    return common->StopCommon() == 0 ? ZEL_NO_ERROR : ZEL_ERROR_CAMERA_COMM_FAILURE;
}

bool Transport::StopTrigger() { return Stop() == ZEL_NO_ERROR; }

int Transport::GetInterfaceType() { return m_InterfaceType; }

int Transport::PrepareAcquisition(int*) { return m_Camera.Plugged() ? ZEL_NO_ERROR : ZEL_ERROR_CAMERA_COMM_FAILURE; }

void Transport::SetFrameCount(int frames) {
    try {
        m_Camera.SetFrameCount(frames);
    } catch (const std::exception&) {
        // The camera was being switched on, and could not.
    }
}

bool Transport::SetImageHandler(ZelImageHandler handler, ZelCamera* camera) {
    const platform::ScopedLock lock(m_BoundLock);
    m_ImageHandler = handler;
    m_ImageCamera = camera;
    return true;
}

bool Transport::SetEventHandler(ZelEventHandler handler, ZelCamera* camera) {
    const platform::ScopedLock lock(m_BoundLock);
    m_EventHandler = handler;
    m_EventCamera = camera;
    return true;
}

bool Transport::EnableEvents(int) { return true; }

int Transport::GetStatusValue() { return m_Camera.Control().FramesToCome(); }

// While frames flow this is the length of the running acquisition, counted from its start; else of those to come.
bool Transport::SetStatusValue(int value) {
    if (value < 0) return false;
    m_Camera.Control().Acquiring() ? m_Camera.SetRunLength(value) : SetFrameCount(value);
    return true;
}

int Transport::GetDroppedFrames() { return m_Dropped; }

bool Transport::GetLedState(unsigned char* on) {
    if (!on || !m_Camera.Plugged()) return false;
    const platform::ScopedLock lock(m_BoundLock);
    *on = m_Led ? 1 : 0;
    return true;
}

bool Transport::SetLedState(bool on) {
    if (!m_Camera.Plugged()) return false;
    const platform::ScopedLock lock(m_BoundLock);
    m_Led = on;
    return true;
}

void Transport::SetCameraObject(ZelCamera* camera) {
    const platform::ScopedLock lock(m_BoundLock);
    m_CameraObject = camera;
}

ZelCamera* Transport::GetCameraObject() {
    const platform::ScopedLock lock(m_BoundLock);
    return m_CameraObject;
}

double Transport::GetLinkThroughput() {
    const platform::ScopedLock lock(m_RateLock);
    return m_Rate.BytesPerSecond(RateMeter::Clock::now());
}

double Transport::GetLinkFrameRate() {
    const platform::ScopedLock lock(m_RateLock);
    return m_Rate.FramesPerSecond(RateMeter::Clock::now());
}

double Transport::GetLinkLatency() {
    const platform::ScopedLock lock(m_RateLock);
    return m_LatencySeconds;
}

double Transport::GetLinkUtilization() {
    return m_LinkBytesPerSecond > 0.0 ? std::min(GetLinkThroughput() / m_LinkBytesPerSecond, 1.0) : 0.0;
}

void Transport::ReportEvent(const ZelCameraEvent& event) {
    const GatedCall call(m_Calls);
    ZelEventHandler handler = nullptr;
    ZelCamera* camera = nullptr;
    {
        const platform::ScopedLock lock(m_BoundLock);
        handler = m_EventHandler;
        camera = m_EventCamera;
    }
    if (handler) handler(&event, camera);
}

}  // namespace zel::kit
