#include "platform/Thread.h"

#include <windows.h>

#include <new>

namespace zel::platform {

struct Thread::State {
    HANDLE handle = nullptr;
    Routine routine = nullptr;
    void* argument = nullptr;

    static DWORD WINAPI Run(void* state) {
        const auto* const self = static_cast<State*>(state);
        self->routine(self->argument);
        return 0;
    }
};

Thread::Thread() : m_State(new (std::nothrow) State) {}
Thread::~Thread() { Join(); }

bool Thread::Start(Routine routine, void* argument) {
    if (!m_State || m_State->handle || !routine) return false;
    m_State->routine = routine;
    m_State->argument = argument;
    m_State->handle = CreateThread(nullptr, 0, State::Run, m_State.get(), 0, nullptr);
    return m_State->handle != nullptr;
}

void Thread::Join() {
    if (!Started()) return;
    WaitForSingleObject(m_State->handle, INFINITE);
    CloseHandle(m_State->handle);
    m_State->handle = nullptr;
}

bool Thread::Started() const { return m_State && m_State->handle; }

}  // namespace zel::platform
