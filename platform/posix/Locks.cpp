#include "platform/Locks.h"

#include <pthread.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <thread>

namespace zel::platform {

// The waiting time runs on the clock that nobody sets, and the holder is kept here, so that a release by another thread
// is refused before it reaches the system.
struct TimedMutex::State {
    std::mutex lock;
    std::condition_variable released;
    std::thread::id holder;
    unsigned depth = 0;
};

TimedMutex::TimedMutex() : m_State(new (m_Storage) State) {
    static_assert(sizeof(State) <= sizeof m_Storage && alignof(State) <= alignof(TimedMutex));
}

TimedMutex::~TimedMutex() { m_State->~State(); }
bool TimedMutex::Valid() const { return true; }

bool TimedMutex::Lock(std::uint32_t timeout_ms) {
    const std::thread::id self = std::this_thread::get_id();
    std::unique_lock lock(m_State->lock);
    if (m_State->depth == 0 || m_State->holder != self) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
        if (!m_State->released.wait_until(lock, deadline, [this] { return m_State->depth == 0; })) return false;
        m_State->holder = self;
    }
    ++m_State->depth;
    return true;
}

bool TimedMutex::Unlock() {
    const std::lock_guard lock(m_State->lock);
    if (m_State->depth == 0 || m_State->holder != std::this_thread::get_id()) return false;
    if (--m_State->depth == 0) m_State->released.notify_one();
    return true;
}

namespace {

pthread_mutex_t* Mutex(void* storage) { return static_cast<pthread_mutex_t*>(storage); }

}  // namespace

RecursiveLock::RecursiveLock() {
    static_assert(sizeof(pthread_mutex_t) <= sizeof m_Storage && alignof(pthread_mutex_t) <= alignof(RecursiveLock));
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(new (m_Storage) pthread_mutex_t, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

RecursiveLock::~RecursiveLock() { pthread_mutex_destroy(Mutex(m_Storage)); }
void RecursiveLock::lock() { pthread_mutex_lock(Mutex(m_Storage)); }
void RecursiveLock::unlock() { pthread_mutex_unlock(Mutex(m_Storage)); }
bool RecursiveLock::try_lock() { return pthread_mutex_trylock(Mutex(m_Storage)) == 0; }

}  // namespace zel::platform
