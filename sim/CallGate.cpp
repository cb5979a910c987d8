#include "sim/CallGate.h"

#include <algorithm>

namespace zel::sim {

std::uint64_t CallGate::Enter() {
    const platform::ScopedLock lock(m_Lock);
    m_Calls.push_back({m_NextTicket, std::this_thread::get_id()});
    return m_NextTicket++;
}

void CallGate::Leave(std::uint64_t ticket) {
    const platform::ScopedLock lock(m_Lock);
    std::erase_if(m_Calls, [ticket](const Call& call) { return call.ticket == ticket; });
    m_Left.notify_all();
}

bool CallGate::InsideLocked() const {
    return std::any_of(m_Calls.begin(), m_Calls.end(),
                       [](const Call& call) { return call.thread == std::this_thread::get_id(); });
}

bool CallGate::CurrentThreadInside() {
    const platform::ScopedLock lock(m_Lock);
    return InsideLocked();
}

void CallGate::WaitForCalls() {
    platform::ScopedLock lock(m_Lock);
    if (InsideLocked()) return;
    const std::uint64_t now = m_NextTicket;
    m_Left.wait(lock, [this, now]() ZEL_REQUIRES(m_Lock) {
        return std::none_of(m_Calls.begin(), m_Calls.end(), [now](const Call& call) { return call.ticket < now; });
    });
}

}  // namespace zel::sim
