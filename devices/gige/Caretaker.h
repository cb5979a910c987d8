// What must not be done on the thread that notices it: hearing of a camera that came or went makes the application do
// things, and saying good-bye to one that is gone takes seconds.
#ifndef GIGE_CARETAKER_H
#define GIGE_CARETAKER_H

#include <deque>
#include <functional>

#include "platform/Mutex.h"
#include "platform/Thread.h"

namespace zel::gige {

// A thread that does one task after the other.
class Caretaker {
  public:
    using Task = std::function<void()>;

    Caretaker();
    ~Caretaker() { Stop(); }
    Caretaker(const Caretaker&) = delete;
    Caretaker& operator=(const Caretaker&) = delete;

    // False when it is not taken any more. Tasks may throw.
    bool Post(Task task);
    // Does what was posted and takes no more. Not from a task.
    void Stop();

  private:
    void Run();

    platform::Mutex m_Lock;
    platform::Condition m_Changed;
    std::deque<Task> m_Tasks ZEL_GUARDED_BY(m_Lock);
    bool m_Ending ZEL_GUARDED_BY(m_Lock) = false;
    platform::Thread m_Thread;
};

}  // namespace zel::gige

#endif
