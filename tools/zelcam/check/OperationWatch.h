// What a plug-in is asked to do at the moment, so that one that does not come back is told by name; and how long it
// took.
#ifndef ZELCAM_OPERATIONWATCH_H
#define ZELCAM_OPERATIONWATCH_H

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <type_traits>
#include <utility>

namespace zelcam::check {

class OperationWatch {
  public:
    using Clock = std::chrono::steady_clock;

    // tell: called on any thread when an operation begins (true) and when it has ended.
    explicit OperationWatch(std::function<void(const char* name, bool begins)> tell) : m_Tell(std::move(tell)) {}

    template <class Operation>
    auto Run(const char* name, Operation operation) {
        m_Tell(name, true);
        const Clock::time_point begun = Clock::now();
        if constexpr (std::is_void_v<decltype(operation())>) {
            operation();
            End(name, begun);
        } else {
            auto result = operation();
            End(name, begun);
            return result;
        }
    }

    // The longest time of each operation since the last call.
    std::map<std::string, Clock::duration> TakeTimes() {
        const std::lock_guard lock(m_Lock);
        return std::exchange(m_Times, {});
    }

  private:
    void End(const char* name, Clock::time_point begun) {
        m_Tell(name, false);
        const std::lock_guard lock(m_Lock);
        Clock::duration& longest = m_Times[name];
        longest = std::max(longest, Clock::now() - begun);
    }

    std::function<void(const char*, bool)> m_Tell;
    std::mutex m_Lock;
    std::map<std::string, Clock::duration> m_Times;
};

}  // namespace zelcam::check

#endif
