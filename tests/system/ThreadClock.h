// A clock on which no sleep costs time: each thread has its own time, the system's (ten times as fast, for cameras that
// do not answer) and what the thread has slept. A wait of one thread does not use up the patience of another.
#ifndef TESTS_SYSTEM_THREADCLOCK_H
#define TESTS_SYSTEM_THREADCLOCK_H

#include <chrono>
#include <thread>

#include "platform/Clock.h"

namespace zel::test {

class ThreadClock : public platform::ClockSource {
  public:
    ThreadClock() { platform::SetClockSource(this); }
    ~ThreadClock() override { platform::SetClockSource(nullptr); }

    std::uint32_t Milliseconds() override {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now * 10).count()) +
               Slept();
    }
    void Sleep(std::uint32_t milliseconds) override {
        Slept() += milliseconds;
        std::this_thread::yield();
    }

  private:
    static std::uint32_t& Slept() {
        static thread_local std::uint32_t slept = 0;
        return slept;
    }
};

}  // namespace zel::test

#endif
