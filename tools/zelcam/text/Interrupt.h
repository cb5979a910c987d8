// The user's wish to end a running command.
#ifndef ZELCAM_INTERRUPT_H
#define ZELCAM_INTERRUPT_H

#include <functional>
#include <string>
#include <thread>

#include "platform/Mutex.h"

namespace zelcam {

// From now on Ctrl-C and the like make Interrupted() true instead of ending the program; a second one ends it.
void CatchInterrupts();
bool Interrupted();

// Throws Failure when the user wanted the end; its exit code tells by which signal. done: what there is by now.
void FailIfInterrupted(const std::string& done);

// Calls a function once the user wants the end, on a thread of its own: what a signal can't do. Not any more when this
// object has died.
class OnInterrupt {
  public:
    explicit OnInterrupt(std::function<void()> action);
    ~OnInterrupt();
    OnInterrupt(const OnInterrupt&) = delete;
    OnInterrupt& operator=(const OnInterrupt&) = delete;

  private:
    void Watch();

    const std::function<void()> m_Action;
    zel::platform::Mutex m_Mutex;
    zel::platform::Condition m_Changed;
    bool m_Over ZEL_GUARDED_BY(m_Mutex) = false;
    std::thread m_Watcher;
};

}  // namespace zelcam

#endif
