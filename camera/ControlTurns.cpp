#include "camera/ControlTurns.h"

namespace zel {

ControlTurns::Answer ControlTurns::Take(Wish wish, bool inside) {
    platform::ScopedLock lock(m_Lock);
    if (!m_Taken || !inside) return Wait(lock, wish);
    if (wish == Wish::kStart) return Answer::kRefused;
    (wish == Wish::kClose ? m_CloseLeft : m_StopLeft) = true;
    m_Changed.notify_all();
    return Answer::kLeft;
}

// A closer waits for the others to leave the camera, so whoever else waits here gives up.
ControlTurns::Answer ControlTurns::Wait(platform::ScopedLock<platform::Mutex>& lock, Wish wish) {
    const bool closer = wish == Wish::kClose;
    if (closer) ++m_Closers;
    if (wish == Wish::kStop) ++m_Stoppers;
    m_Changed.notify_all();
    m_Changed.wait(lock,
                   [&]() ZEL_REQUIRES(m_Lock) { return !m_Taken || (!closer && (m_Closers > 0 || m_CloseLeft)); });
    if (wish == Wish::kStop) --m_Stoppers;
    if (m_Taken || (!closer && (m_Closers > 0 || m_CloseLeft))) return Answer::kRefused;
    m_Taken = true;
    m_HolderCloses = closer;
    return Answer::kTurn;
}

bool ControlTurns::HandBack(Wish& left) {
    const platform::ScopedLock lock(m_Lock);
    if (m_CloseLeft || m_StopLeft) {
        left = m_CloseLeft ? Wish::kClose : Wish::kStop;
        if (m_CloseLeft && !m_HolderCloses) {
            m_HolderCloses = true;
            ++m_Closers;
        }
        m_CloseLeft = m_StopLeft = false;
        m_Changed.notify_all();
        return true;
    }
    if (m_HolderCloses) --m_Closers;
    m_Taken = m_HolderCloses = false;
    m_Changed.notify_all();
    return false;
}

bool ControlTurns::Interrupted() {
    const platform::ScopedLock lock(m_Lock);
    return m_Closers > 0 || m_Stoppers > 0 || m_CloseLeft || m_StopLeft;
}

bool ControlTurns::Closing() {
    const platform::ScopedLock lock(m_Lock);
    return m_Closers > 0 || m_CloseLeft;
}

}  // namespace zel
