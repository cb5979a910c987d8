#include "devices/kit/RunControl.h"

#include <algorithm>

namespace zel::kit {

void RunControl::Begin(const Run& run) {
    {
        const platform::ScopedLock lock(m_Lock);
        m_Mode = run.triggered ? Mode::kTriggered : Mode::kFree;
        m_Run = run;
        m_Run.frames = m_ToCome = std::max(run.frames, 0);
        ++m_Number;
        m_Done = 0;
        m_PendingTriggers = 0;
    }
    m_Changed.notify_all();
}

void RunControl::Idle() {
    m_Mode = Mode::kIdle;
    m_PendingTriggers = 0;
    m_ToCome = 0;
}

void RunControl::Halt() {
    {
        const platform::ScopedLock lock(m_Lock);
        Idle();
    }
    m_Changed.notify_all();
}

bool RunControl::Acquiring() {
    const platform::ScopedLock lock(m_Lock);
    return m_Mode != Mode::kIdle;
}

bool RunControl::Triggered() {
    const platform::ScopedLock lock(m_Lock);
    return m_Mode == Mode::kTriggered;
}

int RunControl::FramesDone() {
    const platform::ScopedLock lock(m_Lock);
    return m_Done;
}

int RunControl::FramesToCome() {
    const platform::ScopedLock lock(m_Lock);
    return m_ToCome;
}

bool RunControl::AddTrigger() {
    {
        const platform::ScopedLock lock(m_Lock);
        if (m_Mode != Mode::kTriggered) return false;
        m_PendingTriggers = std::min(m_PendingTriggers + 1, kMostPendingTriggers);
    }
    m_Changed.notify_all();
    return true;
}

void RunControl::SetLength(int frames) {
    {
        const platform::ScopedLock lock(m_Lock);
        m_ToCome = std::max(frames, 0);
        if (m_Mode != Mode::kIdle) {
            m_Run.frames = m_ToCome;
            m_ToCome = std::max(m_Run.frames - m_Done, 0);
            if (m_Run.frames > 0 && m_ToCome == 0) Idle();
        }
    }
    m_Changed.notify_all();
}

bool RunControl::Plugged() {
    const platform::ScopedLock lock(m_Lock);
    return m_Plugged;
}

bool RunControl::SetPlugged(bool plugged) {
    {
        const platform::ScopedLock lock(m_Lock);
        if (m_Plugged == plugged) return false;
        m_Plugged = plugged;
        Idle();
    }
    m_Changed.notify_all();
    return true;
}

void RunControl::Open() {
    const platform::ScopedLock lock(m_Lock);
    m_Closed = false;
    m_Held = true;
    m_Ready = false;
    m_Taken = 0;
}

void RunControl::Release() {
    {
        const platform::ScopedLock lock(m_Lock);
        m_Held = false;
    }
    m_Changed.notify_all();
}

bool RunControl::AwaitReady() {
    platform::ScopedLock lock(m_Lock);
    m_Changed.wait(lock, [this]() ZEL_REQUIRES(m_Lock) { return m_Ready || m_Closed; });
    return !m_Closed;
}

bool RunControl::AwaitRelease() {
    platform::ScopedLock lock(m_Lock);
    m_Changed.wait(lock, [this]() ZEL_REQUIRES(m_Lock) { return !m_Held || m_Closed; });
    return !m_Closed;
}

void RunControl::SetReady() {
    {
        const platform::ScopedLock lock(m_Lock);
        m_Ready = true;
    }
    m_Changed.notify_all();
}

void RunControl::Close() {
    {
        const platform::ScopedLock lock(m_Lock);
        m_Closed = true;
    }
    m_Changed.notify_all();
}

std::optional<RunControl::Ticket> RunControl::Await() {
    platform::ScopedLock lock(m_Lock);
    m_Changed.wait(lock, [this]() ZEL_REQUIRES(m_Lock) {
        return m_Closed || (m_Plugged && m_Mode != Mode::kIdle && m_Taken != m_Number);
    });
    if (m_Closed) return std::nullopt;
    m_Taken = m_Number;
    return Ticket{m_Number, m_Run};
}

void RunControl::Finish(const Ticket& ticket) {
    const platform::ScopedLock lock(m_Lock);
    if (!Over(ticket)) Idle();
}

bool RunControl::Ended(const Ticket& ticket) {
    const platform::ScopedLock lock(m_Lock);
    return Over(ticket);
}

bool RunControl::Count(const Ticket& ticket) {
    {
        const platform::ScopedLock lock(m_Lock);
        if (Over(ticket)) return false;
        ++m_Done;
        if (m_Run.frames <= 0 || --m_ToCome > 0) return true;
        Idle();
    }
    m_Changed.notify_all();
    return true;
}

bool RunControl::WaitUntil(const Ticket& ticket, Clock::time_point time) {
    platform::ScopedLock lock(m_Lock);
    return !m_Changed.wait_until(lock, time, [&]() ZEL_REQUIRES(m_Lock) { return Over(ticket); });
}

bool RunControl::TakeTrigger(const Ticket& ticket) {
    platform::ScopedLock lock(m_Lock);
    m_Changed.wait(lock, [&]() ZEL_REQUIRES(m_Lock) { return Over(ticket) || m_PendingTriggers > 0; });
    if (Over(ticket)) return false;
    --m_PendingTriggers;
    return true;
}

bool RunControl::WaitForMemory(const Ticket& ticket, Clock::duration time) {
    platform::ScopedLock lock(m_Lock);
    return !m_Changed.wait_for(lock, time, [&]() ZEL_REQUIRES(m_Lock) { return Lost(ticket); });
}

}  // namespace zel::kit
