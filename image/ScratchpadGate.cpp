#include "image/ScratchpadGate.h"

namespace zel {

bool ScratchpadGate::Call(const ScratchpadHook& hook, ZelImageInternal* image, Lock& processing) {
    Entry here{image, std::this_thread::get_id(), false, m_Entries};
    m_Entries = &here;
    processing.unlock();
    const bool again = hook.callback(image, hook.context) != 0;
    processing.lock();
    for (Entry** link = &m_Entries; *link; link = &(*link)->next) {
        if (*link != &here) continue;
        *link = here.next;
        break;
    }
    m_Returned.notify_all();
    return again;
}

bool ScratchpadGate::Await(const ZelImageInternal* image, Caller caller, Lock& processing) {
    const Entry* elsewhere = nullptr;
    m_Returned.wait(processing, [&] {
        elsewhere = Elsewhere(image);
        return !elsewhere || (elsewhere->leaving && caller == Caller::kTransport);
    });
    return !elsewhere;
}

void ScratchpadGate::Leave() {
    for (Entry* entry = m_Entries; entry; entry = entry->next) {
        if (entry->thread == std::this_thread::get_id()) entry->leaving = true;
    }
    m_Returned.notify_all();
}

const ScratchpadGate::Entry* ScratchpadGate::Elsewhere(const ZelImageInternal* image) const {
    for (const Entry* entry = m_Entries; entry; entry = entry->next) {
        if (entry->image == image) return entry->thread != std::this_thread::get_id() ? entry : nullptr;
    }
    return nullptr;
}

}  // namespace zel
