// The lock of one pool list. It is held for a few instructions at a time and, as every operation of the pool holds the
// manager lock around it, hardly ever contended: taking it is one atomic exchange, giving it back one store.
#ifndef IMAGE_LISTLOCK_H
#define IMAGE_LISTLOCK_H

#include <atomic>

#include "platform/ThreadSafety.h"

namespace zel {

class ZEL_CAPABILITY("list lock") ListLock {
  public:
    void lock() ZEL_ACQUIRE() {
        while (m_Taken.exchange(true, std::memory_order_acquire)) WaitABit();
    }
    void unlock() ZEL_RELEASE() { m_Taken.store(false, std::memory_order_release); }

  private:
    [[gnu::cold]] static void WaitABit();

    std::atomic<bool> m_Taken{false};
};

}  // namespace zel

#endif
