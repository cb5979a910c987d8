// A thread with a plain routine. Joined before it is destroyed.
#ifndef PLATFORM_THREAD_H
#define PLATFORM_THREAD_H

#include <memory>

namespace zel::platform {

class Thread {
  public:
    using Routine = void (*)(void* argument);

    Thread();
    ~Thread();  // waits for the routine to end
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    // Runs routine(argument) on a thread of its own. False when it runs already or the system has no thread left.
    bool Start(Routine routine, void* argument);
    // Waits for the routine to end. Does nothing when none runs. Must not be called from the routine itself.
    void Join();
    // Whether Start succeeded and Join has not been called since.
    bool Started() const;

  private:
    struct State;
    std::unique_ptr<State> m_State;
};

}  // namespace zel::platform

#endif
