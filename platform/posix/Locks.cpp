#include "platform/Locks.h"

#include <pthread.h>

#include <chrono>
#include <new>
#include <thread>

namespace zel::platform {

// The waiting time runs on the clock that nobody sets, and the holder is kept here, so that a release by another thread
// is refused before it reaches the system.
struct TimedMutex::State {
    Mutex lock;
    Condition released;
    std::thread::id holder ZEL_GUARDED_BY(lock);
    unsigned depth ZEL_GUARDED_BY(lock) = 0;
};

TimedMutex::TimedMutex() : m_State(new (m_Storage) State) {
    static_assert(sizeof(State) <= sizeof m_Storage && alignof(State) <= alignof(TimedMutex));
}

TimedMutex::~TimedMutex() { m_State->~State(); }
bool TimedMutex::Valid() const { return true; }

bool TimedMutex::Lock(std::uint32_t timeout_ms) {
    const std::thread::id self = std::this_thread::get_id();
    ScopedLock lock(m_State->lock);
    if (m_State->depth == 0 || m_State->holder != self) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
        if (!m_State->released.wait_until(lock, deadline,
                                          [this]() ZEL_REQUIRES(m_State->lock) { return m_State->depth == 0; }))
            return false;
        m_State->holder = self;
    }
    ++m_State->depth;
    return true;
}

bool TimedMutex::Unlock() {
    const ScopedLock lock(m_State->lock);
    if (m_State->depth == 0 || m_State->holder != std::this_thread::get_id()) return false;
    if (--m_State->depth == 0) m_State->released.notify_one();
    return true;
}

namespace {

pthread_mutex_t* System(void* storage) { return static_cast<pthread_mutex_t*>(storage); }

}  // namespace

RecursiveLock::RecursiveLock() {
    static_assert(sizeof(pthread_mutex_t) <= sizeof m_Storage && alignof(pthread_mutex_t) <= alignof(RecursiveLock));
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(new (m_Storage) pthread_mutex_t, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

RecursiveLock::~RecursiveLock() { pthread_mutex_destroy(System(m_Storage)); }
void RecursiveLock::lock() { pthread_mutex_lock(System(m_Storage)); }
void RecursiveLock::unlock() { pthread_mutex_unlock(System(m_Storage)); }
bool RecursiveLock::try_lock() { return pthread_mutex_trylock(System(m_Storage)) == 0; }

}  // namespace zel::platform
