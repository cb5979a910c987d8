// The two locks of the library: a mutex that is waited for with a limit, and a recursive lock.
#ifndef PLATFORM_LOCKS_H
#define PLATFORM_LOCKS_H

#include <cstdint>

#include "platform/Mutex.h"

namespace zel::platform {

// A mutex whose holder is known to the system: releasing one that the calling thread does not hold fails. Recursive for
// its holder. Since a release may be refused it is no lock for the check of ThreadSafety.h.
class TimedMutex {
  public:
    TimedMutex();
    ~TimedMutex();
    TimedMutex(const TimedMutex&) = delete;
    TimedMutex& operator=(const TimedMutex&) = delete;

    // Whether the system could make the mutex. The operations of an invalid one answer false.
    bool Valid() const;
    // True when the calling thread holds the mutex afterwards; false when timeout_ms passed.
    bool Lock(std::uint32_t timeout_ms);
    // False when the calling thread does not hold it.
    bool Unlock();

  private:
    struct State;
    // In place, so that making it takes no memory.
    alignas(8) unsigned char m_Storage[112];
    State* const m_State;
};

// A recursive lock without a time limit, for ScopedLock.
class ZEL_CAPABILITY("recursive lock") RecursiveLock {
  public:
    RecursiveLock();
    ~RecursiveLock();
    RecursiveLock(const RecursiveLock&) = delete;
    RecursiveLock& operator=(const RecursiveLock&) = delete;

    void lock() ZEL_ACQUIRE();
    void unlock() ZEL_RELEASE();
    bool try_lock() ZEL_TRY_ACQUIRE(true);

  private:
    // The system's lock itself: in place, so that taking it follows no pointer and making it can't fail.
    alignas(8) unsigned char m_Storage[48];
};

}  // namespace zel::platform

#endif
