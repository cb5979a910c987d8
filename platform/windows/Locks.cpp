#include "platform/Locks.h"

#include <windows.h>

#include <new>

namespace zel::platform {

struct TimedMutex::State {
    HANDLE handle;
};

TimedMutex::TimedMutex() : m_State(new (m_Storage) State{CreateMutexA(nullptr, FALSE, nullptr)}) {}

TimedMutex::~TimedMutex() {
    if (Valid()) CloseHandle(m_State->handle);
}

bool TimedMutex::Valid() const { return m_State->handle != nullptr; }

bool TimedMutex::Lock(std::uint32_t timeout_ms) {
    if (!Valid()) return false;
    const DWORD result = WaitForSingleObject(m_State->handle, timeout_ms);
    // Abandoned: the last holder ended without a release, and the mutex is this thread's now.
    return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
}

bool TimedMutex::Unlock() { return Valid() && ReleaseMutex(m_State->handle) != 0; }

namespace {

CRITICAL_SECTION* Section(void* storage) { return static_cast<CRITICAL_SECTION*>(storage); }

}  // namespace

RecursiveLock::RecursiveLock() {
    static_assert(sizeof(CRITICAL_SECTION) <= sizeof m_Storage && alignof(CRITICAL_SECTION) <= alignof(RecursiveLock));
    InitializeCriticalSection(new (m_Storage) CRITICAL_SECTION);
}

RecursiveLock::~RecursiveLock() { DeleteCriticalSection(Section(m_Storage)); }
void RecursiveLock::lock() { EnterCriticalSection(Section(m_Storage)); }
void RecursiveLock::unlock() { LeaveCriticalSection(Section(m_Storage)); }
bool RecursiveLock::try_lock() { return TryEnterCriticalSection(Section(m_Storage)) != 0; }

}  // namespace zel::platform
