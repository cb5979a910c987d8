// Serialises the exchanges with one camera, text or table, and passes on the wish that they come to an end.
#ifndef LINK_EXCHANGELOCK_H
#define LINK_EXCHANGELOCK_H

#include "platform/Locks.h"
#include "platform/OperationGate.h"

namespace zel {

class ExchangeLock : public platform::RecursiveLock {
  public:
    // `gate` is the camera's; null: nobody ever wishes so.
    explicit ExchangeLock(platform::OperationGate* gate = nullptr) : m_Gate(gate) {}
    // Whether the calling thread's exchange is to end without a reply.
    bool Cancelled() const { return m_Gate && m_Gate->Cancelled(); }

  private:
    platform::OperationGate* const m_Gate;
};

}  // namespace zel

#endif
