// Counts the calls that a transport is making into the SDK, so that an operation can wait until the calls that began
// before it have ended. A thread that is inside such a call itself does not wait.
#ifndef SIM_CALLGATE_H
#define SIM_CALLGATE_H

#include <cstdint>
#include <thread>
#include <vector>

#include "platform/Mutex.h"

namespace zel::sim {

class CallGate {
  public:
    CallGate() { m_Calls.reserve(16); }
    std::uint64_t Enter();
    void Leave(std::uint64_t ticket);
    // Returns when every call that was entered before has been left.
    void WaitForCalls();
    bool CurrentThreadInside();

  private:
    struct Call {
        std::uint64_t ticket;
        std::thread::id thread;
    };
    bool InsideLocked() const ZEL_REQUIRES(m_Lock);

    platform::Mutex m_Lock;
    platform::Condition m_Left;
    std::vector<Call> m_Calls ZEL_GUARDED_BY(m_Lock);
    std::uint64_t m_NextTicket ZEL_GUARDED_BY(m_Lock) = 1;
};

class GatedCall {
  public:
    explicit GatedCall(CallGate& gate) : m_Gate(gate), m_Ticket(gate.Enter()) {}
    ~GatedCall() { m_Gate.Leave(m_Ticket); }
    GatedCall(const GatedCall&) = delete;
    GatedCall& operator=(const GatedCall&) = delete;

  private:
    CallGate& m_Gate;
    std::uint64_t m_Ticket;
};

}  // namespace zel::sim

#endif
