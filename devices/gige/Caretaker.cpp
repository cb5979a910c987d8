#include "devices/gige/Caretaker.h"

#include <exception>

namespace zel::gige {

Caretaker::Caretaker() {
    const bool started = m_Thread.Start([](void* self) { static_cast<Caretaker*>(self)->Run(); }, this);
    const platform::ScopedLock lock(m_Lock);
    m_Ending = !started;
}

bool Caretaker::Post(Task task) {
    const platform::ScopedLock lock(m_Lock);
    if (m_Ending) return false;
    m_Tasks.push_back(std::move(task));
    m_Changed.notify_all();
    return true;
}

void Caretaker::Stop() {
    {
        const platform::ScopedLock lock(m_Lock);
        m_Ending = true;
    }
    m_Changed.notify_all();
    m_Thread.Join();
}

void Caretaker::Run() {
    platform::ScopedLock lock(m_Lock);
    while (true) {
        m_Changed.wait(lock, [&]() ZEL_REQUIRES(m_Lock) { return m_Ending || !m_Tasks.empty(); });
        if (m_Tasks.empty()) return;
        Task task = std::move(m_Tasks.front());
        m_Tasks.pop_front();
        lock.unlock();
        try {
            task();
        } catch (const std::exception&) {
        }
        task = nullptr;
        lock.lock();
    }
}

}  // namespace zel::gige
