// Says to Clang, and to readers, which lock covers what. Clang checks it at compile time (preset linux-clang);
// elsewhere nothing is left of it.
//
//     class Counter {
//         void Add() { const platform::ScopedLock lock(m_Lock); AddLocked(); }
//         void AddLocked() ZEL_REQUIRES(m_Lock) { ++m_Count; }
//         platform::Mutex m_Lock;
//         int m_Count ZEL_GUARDED_BY(m_Lock) = 0;
//     };
//
// A lambda is a function of its own for the check: one that runs under a lock says so, [&]() ZEL_REQUIRES(m_Lock) { ...
// }.
#ifndef PLATFORM_THREADSAFETY_H
#define PLATFORM_THREADSAFETY_H

#ifdef __clang__
#define ZEL_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define ZEL_THREAD_SAFETY(attribute)
#endif

// Members, and what pointers point to, that are used under a lock only.
#define ZEL_GUARDED_BY(lock) ZEL_THREAD_SAFETY(guarded_by(lock))
#define ZEL_PT_GUARDED_BY(lock) ZEL_THREAD_SAFETY(pt_guarded_by(lock))

// Functions that are called with locks held, or must not be.
#define ZEL_REQUIRES(...) ZEL_THREAD_SAFETY(requires_capability(__VA_ARGS__))
#define ZEL_EXCLUDES(...) ZEL_THREAD_SAFETY(locks_excluded(__VA_ARGS__))

// Functions that take locks and give them up; without arguments, the object itself.
#define ZEL_ACQUIRE(...) ZEL_THREAD_SAFETY(acquire_capability(__VA_ARGS__))
#define ZEL_TRY_ACQUIRE(...) ZEL_THREAD_SAFETY(try_acquire_capability(__VA_ARGS__))
#define ZEL_RELEASE(...) ZEL_THREAD_SAFETY(release_capability(__VA_ARGS__))

// Functions that answer a lock of the object, for others to take.
#define ZEL_RETURNS_LOCK(lock) ZEL_THREAD_SAFETY(lock_returned(lock))

// Classes that are locks, and classes that hold one for as long as they live.
#define ZEL_CAPABILITY(name) ZEL_THREAD_SAFETY(capability(name))
#define ZEL_SCOPED_CAPABILITY ZEL_THREAD_SAFETY(scoped_lockable)

// Functions whose locking can't be told to the check; a comment says why it is right.
#define ZEL_NO_THREAD_SAFETY_ANALYSIS ZEL_THREAD_SAFETY(no_thread_safety_analysis)

#endif
