#include "devices/sim/link/SimCameraTransport.h"

#include <algorithm>
#include <new>
#include <system_error>

#include "include/ZelParameters.h"

namespace zel::sim {

SimCameraTransport::SimCameraTransport(SimCamera& camera) : m_Camera(camera) {}

SimCameraTransport::~SimCameraTransport() {
    JoinFrames();
    m_Calls.WaitForCalls();
}

// Handlers belong to the camera object: another one registers its own.
void SimCameraTransport::SetCameraCommon(IZelCameraCommon* camera) {
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

int SimCameraTransport::Connect() {
    m_Camera.PassOccasion(FaultOccasion::kConnect);
    if (!m_Camera.Plugged()) return ZEL_ERROR_CAMERA_COMM_FAILURE;
    m_Camera.OpenLink();
    IZelCameraCommon* common = nullptr;
    {
        const platform::ScopedLock lock(m_BoundLock);
        common = m_Common;
    }
    if (!common) return ZEL_ERROR_NULL_POINTER_SUPPLIED;
    m_Connected = true;
    const int code = common->ConnectCommon();
    if (code != ZEL_NO_ERROR) m_Connected = false;
    return code;
}

int SimCameraTransport::Disconnect() {
    m_Camera.PassOccasion(FaultOccasion::kClose);
    m_Connected = false;
    JoinFrames();
    m_Calls.WaitForCalls();
    return ZEL_NO_ERROR;
}

int SimCameraTransport::SendData(int len, const unsigned char* data) {
    if (len <= 0 || !data) return 0;
    try {
        return m_Camera.Send({data, static_cast<std::size_t>(len)});
    } catch (const std::exception&) {
        return 0;
    }
}

int SimCameraTransport::RecvData(int len, unsigned char* buffer, int timeout_ms) {
    if (len <= 0 || !buffer) return 0;
    try {
        return m_Camera.Receive({buffer, static_cast<std::size_t>(len)}, timeout_ms);
    } catch (const std::exception&) {
        return 0;
    }
}

int SimCameraTransport::Start() { return Launch(false); }
int SimCameraTransport::StartTrigger() { return Launch(true); }

int SimCameraTransport::Launch(bool triggered) {
    if (OnFrameThread()) return ZEL_ERROR_UNSUPPORTED;
    JoinFrames();
    const unsigned stops = m_Stops;
    m_Camera.PassOccasion(FaultOccasion::kStart);
    IZelCameraCommon* common = nullptr;
    {
        const platform::ScopedLock lock(m_BoundLock);
        common = m_Common;
    }
    if (!common || !m_Connected || !m_Camera.Plugged()) return ZEL_ERROR_CAMERA_COMM_FAILURE;
    {
        const std::jthread preparing = PrepareMeanwhile();
        if (const int code = triggered ? common->StartTriggerCommon() : common->StartCommon()) return code;
    }
    const platform::ScopedLock lock(m_ThreadLock);
    if (m_Stops != stops || !m_Connected) return ZEL_ERROR_CAMERA_COMM_FAILURE;
    SensorSettings settings;
    {
        const platform::ScopedLock camera_lock(m_Camera.Lock());
        m_StopRequested = false;
        m_Dropped = 0;
        settings = m_Camera.FirmwareLocked().Settings();
    }
    try {
        m_Camera.Source().Prepare(settings, m_Camera.PluginSettings().fill);
        m_Frames = std::thread([this] { FrameLoop(); });
    } catch (const std::exception&) {
        return ZEL_ERROR_UNKNOWN;
    }
    return ZEL_NO_ERROR;
}

// The scene is looked at while the camera calculates, so that frames come at once when it is told to run.
std::jthread SimCameraTransport::PrepareMeanwhile() {
    SensorSettings settings;
    {
        const platform::ScopedLock lock(m_Camera.Lock());
        settings = m_Camera.FirmwareLocked().Settings();
    }
    try {
        FrameSource& source = m_Camera.Source();
        return std::jthread([&source, settings, fill = m_Camera.PluginSettings().fill] {
            try {
                source.Prepare(settings, fill);
            } catch (const std::exception&) {
                // It is tried once more before the first frame.
            }
        });
    } catch (const std::exception&) {
        return {};
    }
}

// Asks the frame thread to end and waits for it, except on the frame thread itself.
// The wish to stop and the wait belong together under one lock: between them a launch on another thread would take the
// wish back, and the wait would have no end. The frame thread itself only wishes.
void SimCameraTransport::JoinFrames() {
    const auto request = [this] {
        ++m_Stops;
        {
            const platform::ScopedLock lock(m_Camera.Lock());
            m_StopRequested = true;
        }
        m_Camera.Changed().notify_all();
    };
    if (OnFrameThread()) {
        request();
        return;
    }
    const platform::ScopedLock lock(m_ThreadLock);
    request();
    if (m_Frames.joinable()) m_Frames.join();
}

int SimCameraTransport::Stop() {
    JoinFrames();
    m_Calls.WaitForCalls();
    m_Camera.PassOccasion(FaultOccasion::kStop);
    IZelCameraCommon* common = nullptr;
    {
        const platform::ScopedLock lock(m_BoundLock);
        common = m_Common;
    }
    if (!common || !m_Camera.Plugged()) return ZEL_ERROR_CAMERA_COMM_FAILURE;
    return common->StopCommon() == 0 ? ZEL_NO_ERROR : ZEL_ERROR_CAMERA_COMM_FAILURE;
}

bool SimCameraTransport::StopTrigger() { return Stop() == ZEL_NO_ERROR; }

int SimCameraTransport::GetInterfaceType() { return m_Camera.Model().interface_type; }

int SimCameraTransport::PrepareAcquisition(int*) {
    return m_Camera.Plugged() ? ZEL_NO_ERROR : ZEL_ERROR_CAMERA_COMM_FAILURE;
}

void SimCameraTransport::SetFrameCount(int frames) {
    {
        const platform::ScopedLock lock(m_Camera.Lock());
        m_Camera.FirmwareLocked().SetSequence(frames);
    }
    m_Camera.Changed().notify_all();
}

bool SimCameraTransport::SetImageHandler(ZelImageHandler handler, ZelCamera* camera) {
    const platform::ScopedLock lock(m_BoundLock);
    m_ImageHandler = handler;
    m_ImageCamera = camera;
    return true;
}

bool SimCameraTransport::SetEventHandler(ZelEventHandler handler, ZelCamera* camera) {
    const platform::ScopedLock lock(m_BoundLock);
    m_EventHandler = handler;
    m_EventCamera = camera;
    return true;
}

bool SimCameraTransport::EnableEvents(int) { return true; }

int SimCameraTransport::GetStatusValue() {
    const platform::ScopedLock lock(m_Camera.Lock());
    return m_Camera.FirmwareLocked().FramesToCome();
}

// While frames flow this is the length of the running acquisition, counted from its start; else of those to come.
bool SimCameraTransport::SetStatusValue(int value) {
    if (value < 0) return false;
    {
        const platform::ScopedLock lock(m_Camera.Lock());
        Firmware& firmware = m_Camera.FirmwareLocked();
        firmware.Acquiring() ? firmware.SetSequenceOfThis(value) : firmware.SetSequence(value);
    }
    m_Camera.Changed().notify_all();
    return true;
}

int SimCameraTransport::GetDroppedFrames() {
    const platform::ScopedLock lock(m_Camera.Lock());
    return m_Dropped;
}

bool SimCameraTransport::GetLedState(unsigned char* on) {
    if (!on || !m_Camera.Plugged()) return false;
    const platform::ScopedLock lock(m_BoundLock);
    *on = m_Led ? 1 : 0;
    return true;
}

bool SimCameraTransport::SetLedState(bool on) {
    if (!m_Camera.Plugged()) return false;
    const platform::ScopedLock lock(m_BoundLock);
    m_Led = on;
    return true;
}

void SimCameraTransport::SetCameraObject(ZelCamera* camera) {
    const platform::ScopedLock lock(m_BoundLock);
    m_CameraObject = camera;
}

ZelCamera* SimCameraTransport::GetCameraObject() {
    const platform::ScopedLock lock(m_BoundLock);
    return m_CameraObject;
}

double SimCameraTransport::GetLinkThroughput() {
    const platform::ScopedLock lock(m_Camera.Lock());
    return m_Rate.BytesPerSecond(Clock::now());
}

double SimCameraTransport::GetLinkFrameRate() {
    const platform::ScopedLock lock(m_Camera.Lock());
    return m_Rate.FramesPerSecond(Clock::now());
}

double SimCameraTransport::GetLinkLatency() {
    const platform::ScopedLock lock(m_Camera.Lock());
    return m_LatencySeconds;
}

double SimCameraTransport::GetLinkUtilization() {
    return std::min(GetLinkThroughput() / m_Camera.Model().link_bytes_per_second, 1.0);
}

void SimCameraTransport::ReportEvent(const ZelCameraEvent& event) {
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

}  // namespace zel::sim
