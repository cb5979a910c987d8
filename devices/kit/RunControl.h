// Whether a camera runs, and for which frames: the meeting point of the host's wishes, the link's state and the frame
// thread. A run is told from the next one by its number, so that a frame of an earlier one is never taken for its own.
//
// One lock guards everything; nothing is called while it is held.
#ifndef DEVICES_KIT_RUNCONTROL_H
#define DEVICES_KIT_RUNCONTROL_H

#include <chrono>
#include <optional>

#include "devices/kit/BackEnd.h"
#include "platform/Mutex.h"

namespace zel::kit {

class RunControl {
  public:
    using Clock = std::chrono::steady_clock;
    static constexpr int kMostPendingTriggers = 1000;

    struct Ticket {
        unsigned number = 0;  // of the run
        Run run;
    };

    // ---- the host ----
    void Begin(const Run& run);
    void Halt();
    bool Acquiring();
    bool Triggered();    // a run of that kind is on
    int FramesDone();    // of the run
    int FramesToCome();  // 0: without an end
    // False without a triggered run.
    bool AddTrigger();
    // The length of the run that is on, counted from its start; without one, what FramesToCome() answers.
    void SetLength(int frames);

    // ---- the link ----
    bool Plugged();
    // False when nothing changed. A run ends with the plug.
    bool SetPlugged(bool plugged);

    // ---- the transport ----
    // There is a frame thread, which has to wait for Release(); when it is ready, runs are its own.
    void Open();
    void Release();
    bool AwaitReady();  // false: the thread is to end
    // The frame thread is to end.
    void Close();

    // ---- the frame thread ----
    bool AwaitRelease();  // false: it is to end
    void SetReady();
    // Waits for a run that has not been taken. None: the thread is to end.
    std::optional<Ticket> Await();
    // The run is over as far as its maker is concerned: what is left of it is halted.
    void Finish(const Ticket& ticket);
    bool Ended(const Ticket& ticket);
    // A frame was taken; the last one of a sequence ends the run. False when it had ended before.
    bool Count(const Ticket& ticket);
    // False when the run ended first.
    bool WaitUntil(const Ticket& ticket, Clock::time_point time);
    bool TakeTrigger(const Ticket& ticket);
    // As WaitUntil, but the last frame of a sequence is still wanted when all of them are taken.
    bool WaitForMemory(const Ticket& ticket, Clock::duration time);

  private:
    enum class Mode { kIdle, kFree, kTriggered };
    bool Over(const Ticket& ticket) const ZEL_REQUIRES(m_Lock) {
        return m_Closed || !m_Plugged || m_Mode == Mode::kIdle || m_Number != ticket.number;
    }
    bool Lost(const Ticket& ticket) const ZEL_REQUIRES(m_Lock) {
        return m_Closed || !m_Plugged || m_Number != ticket.number;
    }
    void Idle() ZEL_REQUIRES(m_Lock);

    platform::Mutex m_Lock;
    platform::Condition m_Changed;
    Mode m_Mode ZEL_GUARDED_BY(m_Lock) = Mode::kIdle;
    Run m_Run ZEL_GUARDED_BY(m_Lock);
    unsigned m_Number ZEL_GUARDED_BY(m_Lock) = 0;
    unsigned m_Taken ZEL_GUARDED_BY(m_Lock) = 0;  // the run that the frame thread has
    int m_Done ZEL_GUARDED_BY(m_Lock) = 0;
    int m_ToCome ZEL_GUARDED_BY(m_Lock) = 0;
    int m_PendingTriggers ZEL_GUARDED_BY(m_Lock) = 0;
    bool m_Plugged ZEL_GUARDED_BY(m_Lock) = true;
    bool m_Closed ZEL_GUARDED_BY(m_Lock) = true;
    bool m_Held ZEL_GUARDED_BY(m_Lock) = true;
    bool m_Ready ZEL_GUARDED_BY(m_Lock) = false;
};

}  // namespace zel::kit

#endif
