// From ZelSDK::Open to the end of ZelSDK::Close: one camera manager, and the order in which all of it ends.
#ifndef SDK_SDKSESSION_H
#define SDK_SDKSESSION_H

#include <condition_variable>
#include <mutex>

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

    bool WaitForClose(std::unique_lock<std::mutex>& lock);
    bool FinishOnThread();
    void Finish();

    std::mutex m_Lock;
    std::condition_variable m_Changed;
    State m_State = State::kClosed;
    bool m_Unfinished = false;  // closing, and nobody sees to it
};

SdkSession& Session();

}  // namespace zel

#endif
