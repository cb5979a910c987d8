// Starting and stopping: a conversation in which the application starts the camera object, the camera object the
// transport, and the transport calls StartCommon or StartTriggerCommon, where the camera recalculates its settings.
#include "camera/ZelCameraControl.h"
#include "platform/Clock.h"

namespace zel {

namespace {
constexpr const char* kStart = "ZelCameraControl::Start";
constexpr const char* kStop = "ZelCameraControl::Stop";
constexpr const char* kStartCommon = "ZelCameraControl::StartCommon";

constexpr int kCameraStopped = 0;
constexpr int kCameraRunning = 2;
constexpr int kCalculationDone = 2;
constexpr std::uint32_t kCalculationBudgetMs = 5000;

// The largest frame the pool's 32-bit arithmetic is trusted with.
constexpr unsigned kLargestSide = 32768;
constexpr std::uint64_t kLargestFrameBytes = 1u << 30;
}  // namespace

bool ZelCameraControl::Start() {
    if (!m_Camera) return false;
    const Turn turn(*this, ControlTurns::Wish::kStart);
    return turn.Taken() && StartNow();
}

// Whoever wants to stop or close meanwhile has the transport stopped as soon as this has ended.
bool ZelCameraControl::StartNow() {
    LeaveScratchpad();
    if (StoreError(m_Camera->Start()) != 0) return false;
    SetWithRetries(CAMERA_STATE, kCameraRunning, Link().run_attempts, kStart,
                   "***ERROR***: ZelCameraControl::Start() - m_SyncTable.Set(CAMERA_STATE, 2) failed - retry "
                   "attempt #%d\n",
                   0);
    if (!StartEnds()) return true;
    StoreError(ZEL_ERROR_UNSUPPORTED);
    return false;
}

bool ZelCameraControl::Start(int frame_count) { return Start() && SetTransportValue(frame_count); }

// Attempts are 100 ms apart. retry_line is logged before each further one with its number, and the source line when
// there is one.
void ZelCameraControl::SetWithRetries(int index, int value, int attempts, const char* function_name,
                                      const char* retry_line, int source_line) {
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        if (attempt > 1) {
            if (StartEnds()) return;
            platform::SleepMilliseconds(100);
            ZEL_LOG(m_Logger, kLogError, function_name, retry_line, attempt, source_line);
        }
        if (m_SyncTable->Set(index, value)) return;
    }
}

bool ZelCameraControl::Stop() {
    if (!m_Camera) return false;
    const Turn turn(*this, ControlTurns::Wish::kStop);
    return turn.Taken() ? StopNow() : turn.Left();
}

bool ZelCameraControl::StopNow() {
    ZEL_LOG(m_Logger, kLogTrace, kStop, "ZelCameraControl::Stop() calling m_Camera->Stop()");
    LeaveScratchpad();
    if (StoreError(m_Camera->Stop()) != 0) return false;
    m_Stopped = true;
    return true;
}

int ZelCameraControl::StopCommon() {
    const Callee entry(*this);
    if (!entry) return 1;
    if (!m_Camera) return 1;
    if (m_SyncTable->Set(CAMERA_STATE, kCameraStopped)) return 0;
    return m_SyncTable->Set(CAMERA_STATE, kCameraStopped) ? 0 : 1;
}

bool ZelCameraControl::AskForCalculation(const LinkKind& link) {
    if (link.resets_calculation && !m_SyncTable->Set(CALC_STATE, 0)) return false;
    return m_SyncTable->Set(CALC_STATE, 1);
}

bool ZelCameraControl::WaitForCalculation() {
    const std::uint32_t start = platform::MillisecondClock();
    int state = 0;
    do {
        platform::SleepMilliseconds(100);
        m_SyncTable->Get(CALC_STATE, &state);
        if (platform::MillisecondClock() - start > kCalculationBudgetMs) return false;
        platform::SleepMilliseconds(20);
        if (StartEnds()) return false;
    } while (state != kCalculationDone);
    return true;
}

int ZelCameraControl::StartCommon() {
    const Callee entry(*this);
    if (!entry) return 1;
    if (!m_Camera) return 1;
    platform::TimerResolution resolution;
    const LinkKind& link = Link();
    if (!AskForCalculation(link)) return 1;
    if (!WaitForCalculation()) return 1;
    if (const int code = PrepareAcquisition()) return code;

    if (link.trigger == TriggerDialogue::kNone) return 0;
    const bool hardware = m_HWTriggerEnabled;
    ZEL_LOG(m_Logger, kLogTrace, kStartCommon, "%s - Calling EnableHWTrigger(%s)", link.log_name,
            hardware ? "true" : "false");
    EnableHWTrigger(hardware);
    if (hardware && link.trigger == TriggerDialogue::kEBus) SendText("arm\r\n");
    return 0;
}

// The transport's set-up and the three of the post-processing; the first code other than 0 ends the start.
int ZelCameraControl::PrepareAcquisition() {
    m_Stopped = false;
    m_BuffersOfAcquisition = m_NumImageBuffers;
    if (const int code = StoreError(m_Camera->PrepareAcquisition(&m_BuffersOfAcquisition))) return code;
    if (const int code = StoreError(ReadGeometry())) return code;
    const bool color = m_HasColorFilter && (ColorExpected() || CopyCallbacks().image);
    if (const int code = StoreError(UpdateImagePool(m_BuffersOfAcquisition, color))) return code;
    return StoreError(UpdateImageAvgBuffer());
}

// Size, region, binning, taps and clock as the camera reports them now. They hold for the whole acquisition, so that a
// frame costs no exchange with the camera.
int ZelCameraControl::ReadGeometry() {
    FrameGeometry geometry;
    const LinkKind& link = Link();
    geometry.packed = link.packed;
    geometry.cuts_region = link.cuts_region;
    geometry.region_is_size = link.region_is_size;
    geometry.keeps_full_size = link.keeps_full_size;
    const struct {
        int index;
        unsigned* value;
    } entries[] = {
        {H_SIZE, &geometry.width},
        {V_SIZE, &geometry.height},
        {BITS_PER_PIXEL, &geometry.bit_depth},
        {BYTES_PER_PIXEL, &geometry.bytes_per_pixel},
        {H_ROI_ORIGIN, &geometry.roi.XOrigin},
        {V_ROI_ORIGIN, &geometry.roi.YOrigin},
        {H_ROI_PIXELS, &geometry.roi.XPixels},
        {V_ROI_PIXELS, &geometry.roi.YPixels},
        {H_BIN, &geometry.roi.XBin},
        {V_BIN, &geometry.roi.YBin},
    };
    for (const auto& entry : entries) {
        int value = 0;
        if (!m_SyncTable->Get(entry.index, &value)) return ZEL_ERROR_CAMERA_COMM_FAILURE;
        *entry.value = static_cast<unsigned>(value);
    }
    int exposure_time_us = 0;
    if (!ReadExposure(exposure_time_us)) return ZEL_ERROR_CAMERA_COMM_FAILURE;
    if (!m_SyncTable->Get(SENSOR_TAPS_VAL, &geometry.taps)) return ZEL_ERROR_CAMERA_COMM_FAILURE;
    if (!m_SyncTable->Get(CLOCK_SPEED_VAL, &geometry.readout_mhz)) return ZEL_ERROR_CAMERA_COMM_FAILURE;

    geometry.cfa_phase = m_CfaPhase;

    const bool sane = geometry.width >= 1 && geometry.width <= kLargestSide && geometry.height >= 1 &&
                      geometry.height <= kLargestSide && geometry.bit_depth >= 1 && geometry.bit_depth <= 16 &&
                      geometry.bytes_per_pixel >= 1 && geometry.bytes_per_pixel <= sizeof(std::uint16_t) &&
                      std::uint64_t{geometry.width} * geometry.height * geometry.bytes_per_pixel <= kLargestFrameBytes;
    if (!sane) return ZEL_ERROR_CAMERA_INVALID_DATA;
    SetGeometry(geometry);
    return 0;
}

}  // namespace zel
