#include "camera/ControlTurns.h"

#include <algorithm>

namespace zel {

ControlTurns::Answer ControlTurns::Take(Wish wish, bool inside) {
    platform::ScopedLock lock(m_Lock);
    if (!inside || (!m_Taken && (m_Closers == 0 || wish == Wish::kClose))) return Wait(lock, wish, inside);
    if (wish == Wish::kStart) return Answer::kRefused;
    m_Stopped = true;
    // Without a holder it is a closer that comes next, and does all there is to do.
    if (m_Taken) m_Left = std::max(m_Left.value_or(wish), wish);
    m_Changed.notify_all();
    return Answer::kLeft;
}

// A closer waits for the others to leave the camera, so whoever else waits here gives up. Starts let stops pass.
ControlTurns::Answer ControlTurns::Wait(platform::ScopedLock<platform::Mutex>& lock, Wish wish, bool inside) {
    const bool closer = wish == Wish::kClose;
    const bool stopper = wish == Wish::kStop || wish == Wish::kStopTrigger;
    if (closer) ++m_Closers;
    if (stopper) ++m_Stoppers;
    m_Changed.notify_all();
    const auto hopeless = [&]() ZEL_REQUIRES(m_Lock) { return !closer && (m_Closers > 0 || m_Left == Wish::kClose); };
    m_Changed.wait(lock, [&]() ZEL_REQUIRES(m_Lock) {
        return hopeless() || (!m_Taken && (inside || wish != Wish::kStart || m_Stoppers == 0));
    });
    if (stopper) --m_Stoppers;
    m_Changed.notify_all();
    if (hopeless()) return Answer::kRefused;
    m_Taken = true;
    m_HolderCloses = closer;
    return Answer::kTurn;
}

bool ControlTurns::HandBack(Wish& left) {
    const platform::ScopedLock lock(m_Lock);
    m_Changed.notify_all();
    if (m_Left) {
        left = *m_Left;
        m_Left.reset();
        if (left == Wish::kClose && !m_HolderCloses) {
            m_HolderCloses = true;
            ++m_Closers;
        }
        return true;
    }
    if (m_HolderCloses) --m_Closers;
    m_Taken = m_HolderCloses = false;
    return false;
}

bool ControlTurns::Interrupted() {
    const platform::ScopedLock lock(m_Lock);
    return m_Closers > 0 || m_Stoppers > 0 || m_Left;
}

bool ControlTurns::Closing() {
    const platform::ScopedLock lock(m_Lock);
    return m_Closers > 0 || m_Left == Wish::kClose;
}

bool ControlTurns::CloseAwaited() {
    const platform::ScopedLock lock(m_Lock);
    return !m_HolderCloses && (m_Closers > 0 || m_Left == Wish::kClose);
}

bool ControlTurns::HolderCloses() {
    const platform::ScopedLock lock(m_Lock);
    return m_HolderCloses;
}

}  // namespace zel
