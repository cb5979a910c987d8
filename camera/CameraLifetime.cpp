// What keeps the camera object alive while somebody is inside of it, and how it comes to its end.
#include "camera/ZelCameraControl.h"

namespace zel {

ZelCameraControl::Operation::Operation(ZelCameraControl& camera) : Entry(camera.m_Gate) {
    if (!*this) camera.StoreError(ZEL_ERROR_CAMERA_COMM_FAILURE);
}

// Whoever closes is let in, and what is under way comes to an end: a connection, and whoever waits for a reply.
ZelCameraControl::Turn::Turn(ZelCameraControl& camera, ControlTurns::Wish wish)
    : m_Camera(camera),
      m_Inside(camera.Inside()),
      m_Entry(camera.m_Gate, wish == ControlTurns::Wish::kClose ? Gate::Kind::kCloser : Gate::Kind::kOperation) {
    if (!m_Entry) {
        camera.StoreError(ZEL_ERROR_CAMERA_COMM_FAILURE);
        // The transport could not be told; should it go on, nobody hears of it until the next start.
        if (wish != ControlTurns::Wish::kStart) camera.m_Stopped = true;
        return;
    }
    if (wish == ControlTurns::Wish::kClose) {
        camera.m_Gate.Shut(kClosing);
        camera.m_Gate.Cancel();
    }
    m_Answer = camera.m_Turns.Take(wish, m_Inside);
    if (m_Answer == ControlTurns::Answer::kRefused) camera.StoreError(ZEL_ERROR_UNSUPPORTED);
}

ZelCameraControl::Turn::~Turn() {
    ControlTurns::Wish left{};
    while (Taken() && m_Camera.m_Turns.HandBack(left)) {
        if (left == ControlTurns::Wish::kClose) {
            m_Camera.CloseNow(m_Inside);
        } else if (left == ControlTurns::Wish::kStop) {
            m_Camera.StopNow();
        } else {
            m_Camera.StopTriggerNow();
        }
    }
}

// What was under way when a close began ends, and so does what a connection or start under way begins after that; the
// close itself still talks to the camera.
bool ZelCameraControl::ExchangesEnd() {
    return m_Gate.Cancelled() || m_Turns.CloseAwaited() || (m_Gate.IsShut(kEnding) && !m_Turns.HolderCloses());
}

// A close is told of twice: those inside first, and the turns when it queues there. A start may look in between.
bool ZelCameraControl::StartEnds() { return m_Turns.Interrupted() || ExchangesEnd(); }

void ZelCameraControl::BeginEnd() {
    m_Gate.Shut(kEnding);
    m_Gate.Cancel();
}

// A camera that is open, or that somebody is busy with, is not retired. What it keeps is small from then on.
bool ZelCameraControl::Retire() {
    if (m_CameraOpened == 1 || m_DisconnectOwed || !m_Gate.ShutWhenEmpty(kRetired)) return false;
    if (m_CameraOpened == 1) {
        m_Gate.Open(kRetired);
        return false;
    }
    ReleaseImagePool();
    ReleaseScratchBuffers();
    m_SyncTable.reset();
    return true;
}

void ZelCameraControl::Suspend() {
    m_Suspended = true;
    m_Gate.Shut(kLibraryShutDown);
    m_Gate.Cancel();
}

void ZelCameraControl::Resume() {
    if (m_Suspended && m_Suspended.exchange(false)) m_Gate.Open(kLibraryShutDown);
}

// The transport is not closed here; it only forgets this object, and whoever is still inside leaves first.
ZelCameraControl::~ZelCameraControl() {
    m_Gate.Shut(kEnding);
    m_Gate.Cancel();
    if (m_Camera && TransportIsOurs()) {
        m_Camera->SetImageHandler(nullptr, nullptr);
        m_Camera->SetEventHandler(nullptr, nullptr);
        m_Camera->SetCameraCommon(nullptr);
    }
    m_Gate.AwaitAll();
}

}  // namespace zel
