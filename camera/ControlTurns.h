// The turns of the control operations of a camera: opening, starting, stopping and closing, one at a time.
//
// Who wants to stop or close does not wait for a start to come to its own end: Interrupted() ends the start's waits.
// Who is inside an operation or callback of the camera waits for nobody, because the holder of the turn may be waiting
// for exactly that callback: the wish is left for the holder, which carries it out before it hands the turn back.
#ifndef CAMERA_CONTROLTURNS_H
#define CAMERA_CONTROLTURNS_H

#include <atomic>
#include <optional>

#include "platform/Mutex.h"

namespace zel {

class ControlTurns {
  public:
    enum class Wish : unsigned char { kStart, kStop, kStopTrigger, kClose };
    enum class Answer {
        kTurn,     // the caller has the turn; it ends with HandBack
        kLeft,     // the holder stops or closes in the caller's place
        kRefused,  // the camera is being closed, or somebody else has the turn and the caller can't wait
    };

    // `stopped` is set when a stop or close is left to the holder: no callback begins from then on.
    explicit ControlTurns(std::atomic<bool>& stopped) : m_Stopped(stopped) {}

    Answer Take(Wish wish, bool inside);

    // What was left for the holder: true, with the turn still held, when something was; else the turn is over.
    bool HandBack(Wish& left);

    // Whether a start, or a connection, is to end: somebody wants to stop or close, or to close.
    bool Interrupted();
    bool Closing();
    // Whether somebody wants to close while another operation has the turn, and whether the one that has it closes.
    bool CloseAwaited();
    bool HolderCloses();

  private:
    Answer Wait(platform::ScopedLock<platform::Mutex>& lock, Wish wish, bool inside) ZEL_REQUIRES(m_Lock);

    platform::Mutex m_Lock;
    platform::Condition m_Changed;
    bool m_Taken ZEL_GUARDED_BY(m_Lock) = false;
    int m_Stoppers ZEL_GUARDED_BY(m_Lock) = 0;  // waiting
    int m_Closers ZEL_GUARDED_BY(m_Lock) = 0;   // waiting, or with the turn
    bool m_HolderCloses ZEL_GUARDED_BY(m_Lock) = false;
    std::optional<Wish> m_Left ZEL_GUARDED_BY(m_Lock);  // for the holder
    std::atomic<bool>& m_Stopped;
};

}  // namespace zel

#endif
