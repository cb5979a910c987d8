// The user's wish to end a running command.
#ifndef ZELCAM_INTERRUPT_H
#define ZELCAM_INTERRUPT_H

#include <functional>
#include <string>
#include <thread>

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

  private:
    std::jthread m_Watcher;
};

}  // namespace zelcam

#endif
