// Parameters whose values live in the host: in the camera object or the transport.
#include <algorithm>
#include <cstring>

#include "camera/RawValue.h"
#include "camera/ZelCameraControl.h"
#include "platform/Clock.h"

namespace zel {

namespace {
constexpr const char* kGet = "ZelCameraControl::GetParameter";
constexpr const char* kSet = "ZelCameraControl::SetParameter";

constexpr std::uint32_t kCalculationBudgetMs = 5000;
constexpr int kCalculationDone = 2;

}  // namespace

bool ParameterHandlers::ReadExposureUnit(ZelCameraControl& camera, unsigned, void* data) {
    return StoreInt(data, camera.m_ExposureUnit);
}

bool ParameterHandlers::WriteExposureUnit(ZelCameraControl& camera, const void* data) {
    if (!data) return false;
    const int unit = LoadInt(data);
    if (unit == 0 || unit == 1) camera.m_ExposureUnit = unit;
    return true;
}

bool ParameterHandlers::ReadHwTriggerActive(ZelCameraControl& camera, unsigned, void* data) {
    return StoreInt(data, camera.m_HWTriggerEnabled ? 1 : 0);
}

bool ParameterHandlers::WriteHwTriggerActive(ZelCameraControl& camera, const void* data) {
    const int value = LoadInt(data);
    ZEL_LOG(camera.m_Logger, kLogTrace, kSet, "%s", kLogSeparator);
    ZEL_LOG(camera.m_Logger, kLogTrace, kSet, "ZEL_PARAM_HW_TRIGGER_ACTIVE:%d", value);
    ZEL_LOG(camera.m_Logger, kLogTrace, kSet, "%s", kLogSeparator);
    camera.m_HWTriggerEnabled = value != 0;
    return true;
}

bool ParameterHandlers::ReadTapBalanceEnable(ZelCameraControl& camera, unsigned, void* data) {
    return StoreInt(data, camera.m_TapBalance.Enabled() ? 1 : 0);
}

// On purpose: true also when there is nothing to correct with; reading the parameter tells.
bool ParameterHandlers::WriteTapBalanceEnable(ZelCameraControl& camera, const void* data) {
    camera.m_TapBalance.Enable(LoadInt(data) != 0);
    return true;
}

bool ParameterHandlers::ReadDroppedFrames(ZelCameraControl& camera, unsigned, void* data) {
    if (camera.m_Camera) StoreInt(data, camera.m_Camera->GetDroppedFrames());
    return true;
}

bool ParameterHandlers::ReadNumImageBuffers(ZelCameraControl& camera, unsigned, void* data) {
    if (camera.m_Camera) StoreInt(data, camera.m_NumImageBuffers);
    return true;
}

bool ParameterHandlers::WriteNumImageBuffers(ZelCameraControl& camera, const void* data) {
    if (camera.m_Camera) camera.m_NumImageBuffers = LoadInt(data);
    return true;
}

template <int Index>
bool ParameterHandlers::ReadTextEntry(ZelCameraControl& camera, unsigned, void* data) {
    char text[SyncTable::kBlockCapacity] = {};
    if (!camera.m_Camera || !camera.m_SyncTable->Get(Index, text)) text[0] = '\0';
    text[sizeof text - 1] = '\0';
    std::memcpy(data, text, std::strlen(text) + 1);
    return true;
}
template bool ParameterHandlers::ReadTextEntry<CFA_TYPE>(ZelCameraControl&, unsigned, void*);
template bool ParameterHandlers::ReadTextEntry<IR_FILTER>(ZelCameraControl&, unsigned, void*);
template bool ParameterHandlers::ReadTextEntry<CCM_OUTPUT_COLOR_SPACE>(ZelCameraControl&, unsigned, void*);

bool ParameterHandlers::ReadColorFilterPhase(ZelCameraControl& camera, unsigned, void* data) {
    return StoreInt(data, camera.m_CfaPhase);
}

namespace {
// Nine doubles, row by row.
bool StoreMatrix(void* data, const ColorMatrix& matrix) {
    double values[9];
    std::copy(matrix.begin(), matrix.end(), values);
    std::memcpy(data, values, sizeof values);
    return true;
}
}  // namespace

bool ParameterHandlers::ReadCorrectionMatrix(ZelCameraControl& camera, unsigned, void* data) {
    return StoreMatrix(data, camera.MainPipeline().Staged().transform.camera_correction);
}

bool ParameterHandlers::ReadWhiteBalanceMatrix(ZelCameraControl& camera, unsigned, void* data) {
    return StoreMatrix(data, camera.MainPipeline().Staged().transform.white_balance);
}

bool ParameterHandlers::ReadLed(ZelCameraControl& camera, unsigned size, void* data) {
    unsigned char on = 0;
    if (!data || size < 4 || !camera.m_Camera || !camera.m_Camera->GetLedState(&on)) return false;
    return StoreInt(data, on ? 1 : 0);
}

bool ParameterHandlers::WriteLed(ZelCameraControl& camera, const void* data) {
    if (!camera.m_Camera || !data) return false;
    return camera.m_Camera->SetLedState(LoadInt(data) != 0);
}

bool ParameterHandlers::ReadUpdateParameters(ZelCameraControl& camera, unsigned, void*) {
    ZEL_LOG(camera.m_Logger, kLogError, kGet, "Failed to read write-only parameter ZEL_PARAM_UPDATE_PARAMETERS");
    return false;
}

bool ParameterHandlers::WriteUpdateParameters(ZelCameraControl& camera, const void*) {
    ZEL_LOG(camera.m_Logger, kLogTrace, kSet, "SetParameter with ID = ZEL_PARAM_UPDATE_PARAMETERS");
    return camera.UpdateParameters();
}

bool ZelCameraControl::UpdateParameters() {
    if (!m_Camera || !m_SyncTable->Set(CALC_STATE, 1)) return false;
    const std::uint32_t start = platform::MillisecondClock();
    int state = 0;
    while (true) {
        platform::SleepMilliseconds(100);
        m_SyncTable->Get(CALC_STATE, &state);
        if (platform::MillisecondClock() - start > kCalculationBudgetMs) break;
        platform::SleepMilliseconds(20);
        if (state == kCalculationDone) return true;
        if (m_Gate.Cancelled()) return false;
    }
    ZEL_LOG(m_Logger, kLogError, kSet, "***ERROR***: - CALC_STATE_DONE timed out, Start() failed\n");
    return false;
}

}  // namespace zel
