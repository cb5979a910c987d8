// Construction of the camera object, and the operations that are too small for a chapter of their own.
#include "camera/ZelCameraControl.h"

#include <cstring>
#include <exception>

#include "camera/ErrorNames.h"
#include "camera/ZelCameraFactory.h"
#include "platform/Clock.h"

namespace zel {

ZelCameraControl::ZelCameraControl(ICameraInterface* camera, const char* instance_name)
    : ZelCameraControlImpl(instance_name, &m_TapBalance),
      m_Camera(camera),
      m_SyncTable(std::make_unique<SyncTable>(camera, instance_name, m_ExchangeLock)),
      m_TextProtocol(camera, instance_name, m_ExchangeLock),
      m_TapBalance(m_TextProtocol, instance_name) {
    LogAttributeTranslations("ZelCameraControl::ZelCameraControl");
}

bool ZelCameraControl::IsOpen(int* is_open) {
    if (!is_open) return false;
    *is_open = m_CameraOpened == 1 ? 1 : 0;
    return true;
}

int ZelCameraControl::GetDataTypeSize(int data_type) {
    switch (data_type) {
        case 0:
            return 0;
        case 1:
        case 9:
            return 1;
        case 2:
        case 6:
            return 2;
        case 4:
        case 5:
        case 8:
            return 8;
        default:
            return 4;
    }
}

bool ZelCameraControl::ResetCamera() {
    const Operation entry(*this);
    if (!entry) return false;
    if (!m_Camera) return false;
    m_SyncTable->Set(CAMERA_RESET, 1);
    platform::SleepMilliseconds(100);
    m_SyncTable->Set(H_BIN, 1);
    m_SyncTable->Set(V_BIN, 1);
    return true;
}

int ZelCameraControl::QueryTransportValue() {
    const Operation entry(*this);
    return entry && m_Camera ? m_Camera->GetStatusValue() : 0;
}

bool ZelCameraControl::SetTransportValue(int value) {
    const Operation entry(*this);
    return entry && m_Camera && m_Camera->SetStatusValue(value);
}

bool ZelCameraControl::SetExposureToDefault() {
    const Operation entry(*this);
    if (!entry) return false;
    if (!m_Camera) return false;
    SyncTableAttributes record{};
    if (m_SyncTable->GetAttribute(EXPOSURE_TIME, &record)) WriteExposure(record.default_value);
    return true;
}

const char* ZelCameraControl::GetLastErrorStr() { return ErrorName(LoadLastError()); }

int ZelCameraControl::GetLastError() { return LoadLastError(); }

bool ZelCameraControl::ClearLastError() {
    StoreError(0);
    return true;
}

int ZelCameraControl::StoreError(int code) {
    std::atomic_ref<int>(m_LastError).store(code);
    return code;
}

int ZelCameraControl::LoadLastError() { return std::atomic_ref<int>(m_LastError).load(); }

double ZelCameraControl::LinkFigure(double (ICameraInterface::*figure)()) {
    const Operation entry(*this);
    return entry && m_Camera ? (m_Camera->*figure)() : 0.0;
}

double ZelCameraControl::GetLinkThroughput() { return LinkFigure(&ICameraInterface::GetLinkThroughput); }
double ZelCameraControl::GetLinkFrameRate() { return LinkFigure(&ICameraInterface::GetLinkFrameRate); }
double ZelCameraControl::GetLinkLatency() { return LinkFigure(&ICameraInterface::GetLinkLatency); }
double ZelCameraControl::GetLinkUtilization() { return LinkFigure(&ICameraInterface::GetLinkUtilization); }

int ZelCameraControl::GetCameraInterfaceType() {
    const Visit entry(*this);
    // A transport that is not this object's any more, or may be gone, keeps the type that it had.
    if (m_Camera && TransportIsOurs()) m_InterfaceType = m_Camera->GetInterfaceType();
    const LinkKind& link = LinkKindOf(m_InterfaceType);
    if (!link.interface_type) {
        ZEL_LOG(m_Logger, kLogWarning, "ZelCameraControl::GetCameraInterfaceType", "Invalid interface type!");
    }
    return link.application_code;
}

int ZelCameraControl::GetScratchBufferCount() {
    const Operation entry(*this);
    return entry ? ScratchBufferCount() : 0;
}

bool ZelCameraControl::FreeScratchBuffers() {
    const Operation entry(*this);
    if (!entry) return false;
    ReleaseScratchBuffers();
    return true;
}

bool ZelCameraControl::IsMonochrome() { return std::strcmp(m_FilterType.Get().data(), "mono") == 0; }

bool ZelCameraControl::SetImageAveraging(int frame_count_max, int reset) {
    const Operation entry(*this);
    if (!entry) return false;
    if (frame_count_max < 0) return false;
    SetAveraging(frame_count_max, reset != 0);
    return true;
}

}  // namespace zel

ZelCamera* zel_camera_control_create(ICameraInterface* camera, const char* instance_name) {
    constexpr const char* kCreate = "zel_camera_control_create";
    zel::Logger& logger = zel::CameraControlLogger().Get();
    ZEL_LOG(logger, zel::kLogTrace, kCreate, "Creating a ZelCameraControl object!");
    if (!camera) {
        ZEL_LOG(logger, zel::kLogError, kCreate, "ICameraInterface is NULL!");
        return nullptr;
    }
    zel::ZelCameraControl* control = nullptr;
    try {
        control = new zel::ZelCameraControl(camera, instance_name ? instance_name : "");
    } catch (const std::exception&) {
        ZEL_LOG(logger, zel::kLogError, kCreate, "Failed to create ZelCameraControl!");
        camera->SetCameraCommon(nullptr);
        return nullptr;
    }
    camera->SetCameraCommon(control);
    return control;
}

void zel_camera_control_destroy(ZelCamera* camera) { ZelDelete(camera); }

bool zel_camera_control_inside(ZelCamera* camera) { return static_cast<zel::ZelCameraControl*>(camera)->Inside(); }
void zel_camera_control_begin_end(ZelCamera* camera) { static_cast<zel::ZelCameraControl*>(camera)->BeginEnd(); }
bool zel_camera_control_retire(ZelCamera* camera) { return static_cast<zel::ZelCameraControl*>(camera)->Retire(); }
void zel_camera_control_suspend(ZelCamera* camera) { static_cast<zel::ZelCameraControl*>(camera)->Suspend(); }
bool zel_camera_control_suspended(ZelCamera* camera) {
    return static_cast<zel::ZelCameraControl*>(camera)->Suspended();
}
void zel_camera_control_forget_transport(ZelCamera* camera) {
    static_cast<zel::ZelCameraControl*>(camera)->ForgetTransport();
}
void zel_camera_control_resume(ZelCamera* camera) { static_cast<zel::ZelCameraControl*>(camera)->Resume(); }
