// The calls that a transport is making into the SDK, so that an operation can wait until those that began before it
// have ended. A thread that is inside such a call itself does not wait.
#ifndef DEVICES_KIT_CALLGATE_H
#define DEVICES_KIT_CALLGATE_H

#include "platform/OperationGate.h"

namespace zel::kit {

class CallGate {
  public:
    void WaitForCalls() {
        if (!m_Gate.Inside()) m_Gate.AwaitOthers();
    }
    bool CurrentThreadInside() { return m_Gate.Inside(); }

  private:
    friend class GatedCall;
    platform::OperationGate m_Gate;
};

class GatedCall {
  public:
    explicit GatedCall(CallGate& gate) : m_Entry(gate.m_Gate, platform::OperationGate::Kind::kAlways) {}

  private:
    const platform::OperationGate::Entry m_Entry;
};

}  // namespace zel::kit

#endif
