// From ZelSDK::Open to the end of ZelSDK::Close: one camera manager, and the order in which all of it ends.
#ifndef SDK_SDKSESSION_H
#define SDK_SDKSESSION_H

#include "platform/Mutex.h"

namespace zel {

class SdkSession {
  public:
    // Opens, after a close that is under way. False without memory, and from inside the library while it is closing:
    // that close waits for the caller.
    bool Open();
    // Nobody is let in any more, and everything under way is told to end. Then waits for it and tears down; for a
    // caller that is inside the library itself a thread does so after the caller has left.
    void Close();

  private:
    enum class State { kClosed, kOpen, kClosing };

    // Gives the lock up for as long as it finishes a close, which the check can't follow.
    bool WaitForClose(platform::ScopedLock<platform::Mutex>& lock) ZEL_REQUIRES(m_Lock) ZEL_NO_THREAD_SAFETY_ANALYSIS;
    bool FinishOnThread();
    void Finish();

    platform::Mutex m_Lock;
    platform::Condition m_Changed;
    State m_State ZEL_GUARDED_BY(m_Lock) = State::kClosed;
    bool m_Unfinished ZEL_GUARDED_BY(m_Lock) = false;  // closing, and nobody sees to it
};

SdkSession& Session();

}  // namespace zel

#endif
