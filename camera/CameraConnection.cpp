// From created to usable: connecting, reading the camera's identity, recognising its model; and disconnecting.
#include <cstring>

#include "camera/ZelCameraControl.h"

namespace zel {

namespace {
constexpr const char* kOpen = "ZelCameraControl::Open";
constexpr const char* kClose = "ZelCameraControl::Close";
constexpr const char* kConnect = "ZelCameraControl::ConnectCommon";
}  // namespace

bool ZelCameraControl::Open() {
    ZEL_LOG(m_Logger, kLogTrace, kOpen, "ZelCameraControl::Open() - ENTRY");
    if (!m_Camera) return false;
    const Turn turn(*this, ControlTurns::Wish::kStart);
    return turn.Taken() && OpenNow();
}

bool ZelCameraControl::OpenNow() {
    if (m_CameraOpened == 1) {
        ZEL_LOG(m_Logger, kLogTrace, kOpen, "ZelCameraControl::Open() - m_CameraOpened == 1");
        return true;
    }
    if (StoreError(m_Camera->Connect()) != 0) {
        ZEL_LOG(m_Logger, kLogError, kOpen, "ZelCameraControl::Open() - m_Camera->Connect() failed");
        return false;
    }
    if (m_Turns.Closing()) {  // whoever closes disconnects
        StoreError(ZEL_ERROR_CAMERA_COMM_FAILURE);
        return false;
    }
    LogAttributeTranslations(kOpen);
    if (StoreError(m_Camera->Stop()) != 0) {
        ZEL_LOG(m_Logger, kLogError, kOpen, "ZelCameraControl::Open() - m_Camera->Stop() failed");
        return false;
    }
    if (m_DisconnectOwed.exchange(false)) ReleaseImagePool();
    m_CameraOpened = 1;  // when somebody closes meanwhile, that comes next
    ZEL_LOG(m_Logger, kLogTrace, kOpen, "ZelCameraControl::Open() - EXIT");
    return true;
}

bool ZelCameraControl::Close() {
    ZEL_LOG(m_Logger, kLogTrace, kClose, "ZelCameraControl::Close() - ENTRY");
    if (!m_Camera) return false;
    const Turn turn(*this, ControlTurns::Wish::kClose);
    return turn.Taken() ? CloseNow(turn.Inside()) : turn.Left();
}

// With the turn in control. A thread inside a callback waits for nobody: operations of others that are still under way
// keep the frames alive that they work on.
bool ZelCameraControl::CloseNow(bool inside) {
    m_Gate.Shut(kClosing);
    m_Gate.Cancel();
    if (!inside) m_Gate.AwaitOthers();
    const Gate::Entry entry(m_Gate, Gate::Kind::kCloser);  // not meant by what was cancelled
    LeaveScratchpad();
    const bool reachable = TransportIsOurs();
    if (reachable && StoreError(m_Camera->Disconnect()) != 0) {
        ZEL_LOG(m_Logger, kLogError, kClose, "ZelCameraControl::Close() - m_Camera->Disconnect() failed");
        m_Gate.Open(kClosing);
        return false;
    }
    m_Stopped = true;
    // A transport that was not disconnected may be filling a record: all go at the next connection, when it has
    // stopped.
    m_DisconnectOwed = !reachable;
    reachable ? ReleaseImagePool() : m_ImageManager.FreeAllPendingImages();
    m_CameraOpened = 0;
    m_Gate.Open(kClosing);
    ZEL_LOG(m_Logger, kLogTrace, kClose, "ZelCameraControl::Close() - EXIT");
    return true;
}

// Fills a text from an entry; it stays empty when the entry can't be read, and the answer is false. A value entry gives
// its four bytes as they come over the wire.
bool ZelCameraControl::ReadText(int index, Text& text) {
    text.fill('\0');
    char entry[SyncTable::kBlockCapacity] = {};
    if (!m_SyncTable->Get(index, entry)) return false;
    std::memcpy(text.data(), entry, sizeof entry);
    return true;
}

int ZelCameraControl::ConnectCommon() {
    const Callee entry(*this);
    if (!entry) return ZEL_ERROR_CAMERA_COMM_FAILURE;
    if (!m_Camera) return ZEL_ERROR_NULL_POINTER_SUPPLIED;
    m_TapBalance.ForgetFlash();
    int bits_per_pixel = 0;
    if (m_SyncTable->Get(BITS_PER_PIXEL, &bits_per_pixel)) m_TapBalance.SetBitsPerPixel(bits_per_pixel);
    SyncTableAttributes binning{};
    m_SyncTable->GetAttribute(V_BIN, &binning);
    Text revision, model, filter;
    ReadText(SVN_REVISION, revision);
    m_FirmwareRevision.Set(revision);
    ReadText(HW_MODEL, model);
    m_Model.Set(model);
    if (!ReadText(CFA_TYPE, filter)) std::strcpy(filter.data(), "mono");
    m_FilterType.Set(filter);
    SetUpColor(bits_per_pixel);
    ZEL_LOG(m_Logger, kLogTrace, kConnect, "Checking for Interface type\n");
    if (Link().looks_model_up) RecogniseModel();
    // A camera that can't be calibrated is connected all the same.
    if (m_TapBalanceWanted) LoadCalibration();
    ZEL_LOG(m_Logger, kLogTrace, kConnect, "EXIT");
    return 0;
}

void ZelCameraControl::RecogniseModel() {
    const Text text = m_Model.Get();
    ZEL_LOG(m_Logger, kLogTrace, kConnect, "CameraModelStr:%s\n", text.data());
    const CameraModel* model = FindCameraModel(text.data());
    if (!model) {
        ZEL_LOG(m_Logger, kLogError, kConnect, "***ERROR****: uknown camera type\n");
        return;
    }
    ZEL_LOG(m_Logger, kLogTrace, kConnect, "%s", model->log_line);
    m_KnownModel = model;
}

}  // namespace zel
