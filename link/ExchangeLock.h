// Serialises the exchanges with one camera, text or table, and passes on the wish that they come to an end.
#ifndef LINK_EXCHANGELOCK_H
#define LINK_EXCHANGELOCK_H

#include "platform/Locks.h"

namespace zel {

class ExchangeLock : public platform::RecursiveLock {
  public:
    virtual ~ExchangeLock() = default;
    // Whether the calling thread's exchange is to end without a reply. Nobody wishes so, unless a derived class knows.
    virtual bool Cancelled() { return false; }
};

}  // namespace zel

#endif
