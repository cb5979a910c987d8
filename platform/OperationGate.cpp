#include "platform/OperationGate.h"

namespace zel::platform {

OperationGate::Entry::Entry(OperationGate& gate, Kind kind) : m_Gate(gate), m_Kind(kind) {
    const ScopedLock lock(gate.m_Lock);
    if (gate.m_Reasons != 0 && kind == Kind::kOperation) return;
    if ((gate.m_Reasons & kForGood) != 0 && kind == Kind::kAlways) return;
    m_Inside = true;
    m_Cancellations = gate.m_Cancellations;
    m_Number = gate.m_NextNumber++;
    m_Next = gate.m_First;
    m_Link = &gate.m_First;
    if (m_Next) m_Next->m_Link = &m_Next;
    gate.m_First = this;
}

// Whoever waits may destroy the gate as soon as the lock is free.
OperationGate::Entry::~Entry() {
    if (!m_Inside) return;
    const ScopedLock lock(m_Gate.m_Lock);
    *m_Link = m_Next;
    if (m_Next) m_Next->m_Link = m_Link;
    if (m_Gate.m_Waiting > 0) m_Gate.m_Left.notify_all();
}

void OperationGate::Shut(unsigned reason) {
    const ScopedLock lock(m_Lock);
    m_Reasons |= reason;
}

void OperationGate::Open(unsigned reason) {
    const ScopedLock lock(m_Lock);
    m_Reasons &= ~reason;
}

bool OperationGate::IsShut(unsigned reasons) {
    const ScopedLock lock(m_Lock);
    return (m_Reasons & reasons) != 0;
}

bool OperationGate::ShutWhenEmpty(unsigned reason) {
    const ScopedLock lock(m_Lock);
    if (m_First) return false;
    m_Reasons |= reason;
    return true;
}

// waited_for(entry, number of the next entry when the wait began)
template <class WaitedFor>
void OperationGate::Await(WaitedFor waited_for) {
    ScopedLock lock(m_Lock);
    const std::uint64_t now = m_NextNumber;
    ++m_Waiting;
    m_Left.wait(lock, [&]() ZEL_REQUIRES(m_Lock) {
        const Entry* entry = m_First;
        while (entry && (entry->m_Thread == std::this_thread::get_id() || !waited_for(*entry, now)))
            entry = entry->m_Next;
        return !entry;
    });
    --m_Waiting;
}

void OperationGate::AwaitOthers() {
    Await([](const Entry& entry, std::uint64_t now) {
        return entry.m_Kind == Kind::kOperation || (entry.m_Kind == Kind::kAlways && entry.m_Number < now);
    });
}

void OperationGate::AwaitAll() {
    Await([](const Entry&, std::uint64_t) { return true; });
}

bool OperationGate::Inside() {
    const ScopedLock lock(m_Lock);
    const Entry* entry = m_First;
    while (entry && entry->m_Thread != std::this_thread::get_id()) entry = entry->m_Next;
    return entry != nullptr;
}

void OperationGate::Cancel() {
    const ScopedLock lock(m_Lock);
    ++m_Cancellations;
}

bool OperationGate::Cancelled() {
    const ScopedLock lock(m_Lock);
    const Entry* entry = m_First;
    while (entry && entry->m_Thread != std::this_thread::get_id()) entry = entry->m_Next;
    return entry && entry->m_Cancellations != m_Cancellations;
}

}  // namespace zel::platform
