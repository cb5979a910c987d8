#include "tools/zelcam/text/Interrupt.h"

#include <atomic>
#include <chrono>
#include <utility>

#include "platform/Terminal.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

namespace {
std::atomic<int> s_Signal{0};

// How long a signal may go unnoticed.
constexpr std::chrono::milliseconds kSignalCheck{50};
}  // namespace

void CatchInterrupts() {
    zel::platform::InstallInterruptHandler([](int signal) { s_Signal = signal; });
}

bool Interrupted() { return s_Signal != 0; }

void FailIfInterrupted(const std::string& done) {
    if (!Interrupted()) return;
    FailureKind kind = kInterrupted;
    kind.exit_code += s_Signal;
    throw Failure("interrupted", done, "", kind);
}

OnInterrupt::OnInterrupt(std::function<void()> action) : m_Action(std::move(action)), m_Watcher([this] { Watch(); }) {}

OnInterrupt::~OnInterrupt() {
    {
        const zel::platform::ScopedLock lock(m_Mutex);
        m_Over = true;
    }
    m_Changed.notify_all();
    m_Watcher.join();
}

void OnInterrupt::Watch() {
    {
        zel::platform::ScopedLock lock(m_Mutex);
        while (!Interrupted()) {
            if (m_Changed.wait_for(lock, kSignalCheck, [this]() ZEL_REQUIRES(m_Mutex) { return m_Over; })) return;
        }
    }
    m_Action();
}

}  // namespace zelcam
