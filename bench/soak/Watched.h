// What a thread is doing, and since when, for a thread that looks whether it hangs.
#ifndef BENCH_SOAK_WATCHED_H
#define BENCH_SOAK_WATCHED_H

#include <atomic>
#include <chrono>
#include <string>
#include <utility>

namespace zel::soak {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

class Watched {
  public:
    explicit Watched(std::string what) : name(std::move(what)) {}

    const std::string name;

    // Null: nothing.
    void Step(const char* step) {
        m_Since = Clock::now();
        m_Step = step;
    }
    const char* LongerThan(Clock::duration time) const {
        return Clock::now() - m_Since.load() > time ? m_Step.load() : nullptr;
    }

  private:
    std::atomic<const char*> m_Step{nullptr};
    std::atomic<Clock::time_point> m_Since{Clock::now()};
};

}  // namespace zel::soak

#endif
