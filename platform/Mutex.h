// The standard library's mutex and condition, and a guard for every lock, all known to the check of ThreadSafety.h.
#ifndef PLATFORM_MUTEX_H
#define PLATFORM_MUTEX_H

#include <condition_variable>
#include <mutex>

#include "platform/ThreadSafety.h"

namespace zel::platform {

class ZEL_CAPABILITY("mutex") Mutex {
  public:
    void lock() ZEL_ACQUIRE() { m_Mutex.lock(); }
    void unlock() ZEL_RELEASE() { m_Mutex.unlock(); }
    bool try_lock() ZEL_TRY_ACQUIRE(true) { return m_Mutex.try_lock(); }

  private:
    friend class Condition;
    std::mutex m_Mutex;
};

// Holds a lock for as long as it lives, except between unlock() and lock().
template <class Lockable>
class ZEL_SCOPED_CAPABILITY ScopedLock {
  public:
    explicit ScopedLock(Lockable& lockable) ZEL_ACQUIRE(lockable) : m_Lockable(lockable) { m_Lockable.lock(); }
    ~ScopedLock() ZEL_RELEASE() {
        if (m_Held) m_Lockable.unlock();
    }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

    void lock() ZEL_ACQUIRE() {
        m_Lockable.lock();
        m_Held = true;
    }
    void unlock() ZEL_RELEASE() {
        m_Held = false;
        m_Lockable.unlock();
    }

  private:
    friend class Condition;
    Lockable& m_Lockable;
    bool m_Held = true;
};

// What threads wait for under a Mutex. The lock is held again whenever a wait returns, and whenever a predicate runs.
class Condition {
  public:
    void notify_one() { m_Condition.notify_one(); }
    void notify_all() { m_Condition.notify_all(); }

    // Without a predicate, a wait may also return for no reason.
    void wait(ScopedLock<Mutex>& lock) {
        Waiting waiting(lock);
        m_Condition.wait(waiting.m_Lock);
    }
    template <class Time>
    void wait_until(ScopedLock<Mutex>& lock, const Time& time) {
        Waiting waiting(lock);
        m_Condition.wait_until(waiting.m_Lock, time);
    }

    template <class Predicate>
    void wait(ScopedLock<Mutex>& lock, Predicate predicate) {
        Waiting waiting(lock);
        m_Condition.wait(waiting.m_Lock, predicate);
    }
    template <class Time, class Predicate>
    bool wait_until(ScopedLock<Mutex>& lock, const Time& time, Predicate predicate) {
        Waiting waiting(lock);
        return m_Condition.wait_until(waiting.m_Lock, time, predicate);
    }
    template <class Duration, class Predicate>
    bool wait_for(ScopedLock<Mutex>& lock, const Duration& duration, Predicate predicate) {
        Waiting waiting(lock);
        return m_Condition.wait_for(waiting.m_Lock, duration, predicate);
    }

  private:
    // The guard's mutex in the form that a wait takes, and back.
    struct Waiting {
        explicit Waiting(ScopedLock<Mutex>& lock) : m_Lock(lock.m_Lockable.m_Mutex, std::adopt_lock) {}
        ~Waiting() { m_Lock.release(); }
        std::unique_lock<std::mutex> m_Lock;
    };

    std::condition_variable m_Condition;
};

}  // namespace zel::platform

#endif
