#include "platform/Thread.h"

#include <pthread.h>

#include <new>

namespace zel::platform {

struct Thread::State {
    pthread_t thread{};
    bool started = false;
    Routine routine = nullptr;
    void* argument = nullptr;

    static void* Run(void* state) {
        const auto* const self = static_cast<State*>(state);
        self->routine(self->argument);
        return nullptr;
    }
};

Thread::Thread() : m_State(new (std::nothrow) State) {}
Thread::~Thread() { Join(); }

bool Thread::Start(Routine routine, void* argument) {
    if (!m_State || m_State->started || !routine) return false;
    m_State->routine = routine;
    m_State->argument = argument;
    m_State->started = pthread_create(&m_State->thread, nullptr, State::Run, m_State.get()) == 0;
    return m_State->started;
}

void Thread::Join() {
    if (!Started()) return;
    pthread_join(m_State->thread, nullptr);
    m_State->started = false;
}

bool Thread::Started() const { return m_State && m_State->started; }

}  // namespace zel::platform
