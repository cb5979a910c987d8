// Events that wait until the application asks for them, for programs that can't be called back on another thread.
#ifndef BINDINGS_C_EVENTQUEUE_H
#define BINDINGS_C_EVENTQUEUE_H

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace zel::c {

// The last events, oldest first; an application that asks for none costs no memory. Any thread.
template <class Event>
class EventQueue {
  public:
    enum class Answer { kEvent, kNone, kEnded };

    void Add(const Event& event) {
        const std::lock_guard lock(m_Mutex);
        m_Events[(m_First + m_Count) % kMost] = event;
        if (m_Count < kMost) {
            ++m_Count;
        } else {
            m_First = (m_First + 1) % kMost;
        }
        m_Changed.notify_one();
    }
    // The oldest one; kNone when none comes in time.
    Answer Next(std::chrono::milliseconds timeout, Event& event) {
        const auto end = std::chrono::steady_clock::now() + timeout;
        std::unique_lock lock(m_Mutex);
        m_Changed.wait_until(lock, end, [this] { return m_Count > 0 || m_Ended; });
        if (m_Ended) return Answer::kEnded;
        if (m_Count == 0) return Answer::kNone;
        event = m_Events[m_First];
        m_First = (m_First + 1) % kMost;
        --m_Count;
        return Answer::kEvent;
    }
    // Nobody waits any more.
    void End() {
        const std::lock_guard lock(m_Mutex);
        m_Ended = true;
        m_Changed.notify_all();
    }

  private:
    static constexpr std::size_t kMost = 64;

    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::array<Event, kMost> m_Events{};
    std::size_t m_First = 0;
    std::size_t m_Count = 0;
    bool m_Ended = false;
};

}  // namespace zel::c

#endif
