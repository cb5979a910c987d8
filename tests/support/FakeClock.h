// A clock for tests: time passes only when somebody sleeps or advances it.
//
//     FakeClock clock;                       // installed until it goes out of scope
//     ... five seconds of waiting cost nothing ...
//     EXPECT_EQ(5500u, clock.Elapsed());
#ifndef TESTS_SUPPORT_FAKECLOCK_H
#define TESTS_SUPPORT_FAKECLOCK_H

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include "platform/Clock.h"

namespace zel::test {

class FakeClock : public platform::ClockSource {
  public:
    // The millisecond clock passes 2^32 within the first second, so that every budget is tested across that.
    explicit FakeClock(std::uint32_t start = 0xFFFFFF00u) : m_Start(start), m_Now(start) {
        platform::SetClockSource(this);
    }
    ~FakeClock() override { platform::SetClockSource(nullptr); }
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    std::uint32_t Milliseconds() override { return m_Now; }
    void Sleep(std::uint32_t milliseconds) override {
        Advance(milliseconds);
        const std::lock_guard lock(m_Lock);
        m_Sleeps.push_back(milliseconds);
    }

    // Lets time pass without a sleep being recorded.
    void Advance(std::uint32_t milliseconds) { m_Now += milliseconds; }
    std::uint32_t Elapsed() const { return m_Now - m_Start; }

    std::vector<std::uint32_t> Sleeps() const {
        const std::lock_guard lock(m_Lock);
        return m_Sleeps;
    }
    // How many sleeps of exactly this length there were. A silent ScriptedTransport does not sleep here.
    int CountSleeps(std::uint32_t milliseconds) const {
        return static_cast<int>(std::ranges::count(Sleeps(), milliseconds));
    }

  private:
    const std::uint32_t m_Start;
    std::atomic<std::uint32_t> m_Now;
    mutable std::mutex m_Lock;
    std::vector<std::uint32_t> m_Sleeps;
};

}  // namespace zel::test

#endif
