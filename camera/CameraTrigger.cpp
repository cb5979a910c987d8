// Triggering: the text commands that set a camera's trigger up, per kind of link.
#include <cstring>

#include "camera/ZelCameraControl.h"
#include "platform/Clock.h"

namespace zel {

namespace {
constexpr const char* kStartTrigger = "ZelCameraControl::StartTriggerCommon";

constexpr int kCalculationDone = 2;
constexpr std::uint32_t kTriggerCalculationLimitMs = 5001;
constexpr int kPolarityActiveLow = 1;
constexpr int kCalculationAttempts = 4;
}  // namespace

// True writes the source that the application chose last (1 when it chose none), false writes 0.
void ZelCameraControl::EnableHWTrigger(bool on) {
    const int chosen = m_HWTriggerSource;
    m_SyncTable->Set(HW_TRIG_SOURCE, on ? (chosen != 0 ? chosen : 1) : 0);
}

void ZelCameraControl::CameraCommand(const char* text) { SendText(text); }

void ZelCameraControl::ArmBySoftware() {
    CameraCommand("cam.calc");
    CameraCommand("cam.sw trig on");
    CameraCommand("cam.arm");
}

int ZelCameraControl::StartTriggerCommon() {
    const Callee entry(*this);
    if (!entry) return 1;
    if (!m_Camera) return 1;
    platform::TimerResolution resolution;
    const LinkKind& link = Link();
    if (!AskForCalculation(link)) return 1;
    const std::uint32_t start = platform::MillisecondClock();
    int state = 0;
    do {
        m_SyncTable->Get(CALC_STATE, &state);
        platform::SleepMilliseconds(20);
        if (StartEnds() || platform::MillisecondClock() - start >= kTriggerCalculationLimitMs) return 1;
    } while (state != kCalculationDone);
    if (const int code = PrepareAcquisition()) return code;
    switch (link.trigger) {
        case TriggerDialogue::kEBus:
            return StartTriggerEBus();
        case TriggerDialogue::kCameraLink:
            return StartTriggerUsbOrCameraLink(false);
        case TriggerDialogue::kUsb:
            return StartTriggerUsbOrCameraLink(true);
        default:
            return 0;
    }
}

int ZelCameraControl::StartTriggerEBus() {
    ZEL_LOG(m_Logger, kLogTrace, kStartTrigger, "CAMERA_TYPE_PLEORA_EBUS\n");
    const bool old_firmware = static_cast<unsigned char>(m_FirmwareRevision.Get()[0]) < '2';
    const Text model = m_Model.Get();
    if (m_HWTriggerEnabled) {
        ZEL_LOG(m_Logger, kLogTrace, kStartTrigger, "m_HWTriggerEnabled is true\n");
        SendText("trig sw off\r\n");
        if (old_firmware || std::strncmp(model.data(), "E150", 4) == 0) {
            ZEL_LOG(m_Logger, kLogTrace, kStartTrigger, "turning on trig a");
        } else {
            ZEL_LOG(m_Logger, kLogTrace, kStartTrigger, "turning on trig cl");
            SendText("trig cl on\r\n");
        }
        SendText("trig a on\r\n");
        int polarity = 0;
        m_SyncTable->Get(HW_TRIG_POLARITY, &polarity);
        SendText(polarity != 0 ? "trig cl lo\r\n" : "trig cl hi\r\n");
        char reply[TextProtocol::kReplyCapacity] = {};
        SendText("arm\r\n", reply);
        ZEL_LOG(m_Logger, kLogTrace, kStartTrigger, "arm returned %s\n", reply);
        return 0;
    }
    ZEL_LOG(m_Logger, kLogTrace, kStartTrigger, "m_HWTriggerEnabled is false\n");
    if (old_firmware || model[0] == '1') {
        SendText("trig a off\r\n");
    } else {
        if (!m_SyncTable->Set(HW_TRIG_SOURCE, 0)) {
            ZEL_LOG(
                m_Logger, kLogError, kStartTrigger,
                "***ERROR***: PleoraEBusInterface::Start() - m_SyncTable.Set(HW_TRIG_SOURCE, HW_TRIG_OFF) failed\n");
        }
        SendText("trig cl off\r\n");
    }
    ZEL_LOG(m_Logger, kLogTrace, kStartTrigger, "m_HWTriggerEnabled is false\n");
    SendText("trig sw on\r\n");
    return 0;
}

int ZelCameraControl::StartTriggerUsbOrCameraLink(bool usb) {
    // On purpose: twice.
    ZEL_LOG(m_Logger, kLogTrace, kStartTrigger, "CAMERA_TYPE_USB or CAMERA_TYPE_EDT_CAMERA_LINK\n");
    ZEL_LOG(m_Logger, kLogTrace, kStartTrigger, "CAMERA_TYPE_USB or CAMERA_TYPE_EDT_CAMERA_LINK\n");
    if (m_HWTriggerEnabled) {
        return EnableTriggerUsbOrCameraLink(usb) ? 0 : 1;
    }
    if (!m_SyncTable->Set(HW_TRIG_SOURCE, 0)) {
        // On purpose: the line names HW_TRIG_CL although 0 is written.
        ZEL_LOG(m_Logger, kLogError, kStartTrigger, "***ERROR***: SyncTable.Set(HW_TRIG_SOURCE, HW_TRIG_CL) failed\n");
    }
    SendText("trig sw on\r\n");
    SendText("trig cl off\r\n");
    return 0;
}

bool ZelCameraControl::EnableTriggerUsbOrCameraLink(bool usb) {
    SetWithRetries(CALC_STATE, 1, kCalculationAttempts, kStartTrigger,
                   "***ERROR***: EDTCameraLinkInterface::Start() - m_SyncTable.Set(CALC_STATE, 1) failed - retry "
                   "attempt #%d  line:%d\n",
                   __LINE__);
    // On purpose: this wait has no limit, unlike the others. Who stops or closes the camera ends it.
    int state = 0;
    do {
        if (StartEnds()) return false;
        platform::SleepMilliseconds(100);
        if (!m_SyncTable->Get(CALC_STATE, &state)) {
            ZEL_LOG(m_Logger, kLogError, kStartTrigger,
                    "***ERROR***: EDTCameraLinkInterface::Start() - m_SyncTable.Get(CALC_STATE) failed - halting\n");
        }
        platform::SleepMilliseconds(20);
    } while (state != kCalculationDone);
    int mode = 0;
    if (!m_SyncTable->Get(OP_MODE, &mode)) {
        ZEL_LOG(m_Logger, kLogError, kStartTrigger, "***ERROR***: m_SyncTable.Get(OP_MODE) failed");
    }
    if (usb) SendText("trig sw off\r\n");
    SendText("trig cl on\r\n");
    if (usb) SendText("trig a on\r\n");
    int polarity = 0;
    m_SyncTable->Get(HW_TRIG_POLARITY, &polarity);
    const bool low = polarity == kPolarityActiveLow;
    SendText(low ? "trig cl low\r\n" : "trig cl hi\r\n");
    if (usb) SendText(low ? "trig a lo\r\n" : "trig a hi\r\n");
    return true;
}

bool ZelCameraControl::StartTriggerAcquisition() {
    if (!m_Camera) return false;
    const Turn turn(*this, ControlTurns::Wish::kStart);
    return turn.Taken() && StartTriggerNow();
}

// Whoever wants to stop or close meanwhile has the transport stopped as soon as this has ended.
bool ZelCameraControl::StartTriggerNow() {
    LeaveScratchpad();
    bool result = StoreError(m_Camera->StartTrigger()) == 0;
    if (!StartEnds()) result = ArmForTriggers(result);
    if (!StartEnds()) return result;
    if (result) StoreError(ZEL_ERROR_UNSUPPORTED);
    return false;
}

// started: whether the transport did. Result: whether the operation succeeds.
bool ZelCameraControl::ArmForTriggers(bool started) {
    if (Link().sets_trigger_state) {
        started = m_SyncTable->Set(TRIGGER_STATE, 1);
        if (!started) {
            // On purpose: a refused trigger state ends the operation with success.
            ZEL_LOG(m_Logger, kLogError, "ZelCameraControl::StartTriggerAcquisition",
                    "***ERROR***: PleoraEBusInterface::Start() - m_SyncTable.Set(TRIGGER_STATE, 0) failed\n");
            return true;
        }
    }
    ArmBySoftware();
    return started;
}

// With 1 the camera is armed anew, which stops nothing.
bool ZelCameraControl::StopTriggerAcquisition(int flag) {
    if (!m_Camera) return false;
    const bool rearm = flag == 1;
    const Turn turn(*this, rearm ? ControlTurns::Wish::kStart : ControlTurns::Wish::kStopTrigger);
    if (!turn.Taken()) return turn.Left();
    if (!rearm) return StopTriggerNow();
    CameraCommand("cam.stop");
    ArmBySoftware();
    return true;
}

bool ZelCameraControl::StopTriggerNow() {
    CameraCommand("cam.stop");
    LeaveScratchpad();
    if (!m_Camera->StopTrigger()) return false;
    m_Stopped = true;
    return true;
}

bool ZelCameraControl::SoftwareTrigger() {
    const Operation entry(*this);
    return entry && m_Camera && m_SyncTable->Set(SW_TRIG, 1);
}

}  // namespace zel
