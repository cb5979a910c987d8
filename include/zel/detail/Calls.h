/// Who is inside the application's handlers.
#ifndef ZEL_LAYER_CALLS_H
#define ZEL_LAYER_CALLS_H

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace zel::detail {

/// One call of a handler, for as long as it lives. Whoever ends waits for the calls of its own handlers, but never
/// inside a handler: what is waited for there may be waiting for the caller.
class Call {
  public:
    /// `owner` is who the handler was set at.
    explicit Call(const void* owner) : m_Owner(owner) {
        Table& all = table();
        const std::lock_guard lock(all.mutex);
        all.calls.emplace_back(owner, std::this_thread::get_id());
    }
    ~Call() {
        Table& all = table();
        const std::lock_guard lock(all.mutex);
        all.calls.erase(std::find(all.calls.begin(), all.calls.end(), std::pair(m_Owner, std::this_thread::get_id())));
        all.changed.notify_all();
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    /// Whether the calling thread is inside any handler.
    static bool inside() {
        Table& all = table();
        const std::lock_guard lock(all.mutex);
        return all.inside();
    }
    /// Waits until no handler of this owner runs; inside a handler not at all.
    static void wait_for(const void* owner) {
        Table& all = table();
        std::unique_lock lock(all.mutex);
        if (all.inside()) return;
        all.changed.wait(lock, [&] {
            return std::none_of(all.calls.begin(), all.calls.end(),
                                [&](const auto& call) { return call.first == owner; });
        });
    }

  private:
    struct Table {
        std::mutex mutex;
        std::condition_variable changed;
        std::vector<std::pair<const void*, std::thread::id>> calls;

        bool inside() const {
            const auto here = std::this_thread::get_id();
            return std::any_of(calls.begin(), calls.end(), [&](const auto& call) { return call.second == here; });
        }
    };
    // Never destroyed, as the registry.
    static Table& table() {
        static Table* const all = new Table;
        return *all;
    }

    const void* m_Owner;
};

}  // namespace zel::detail

#endif
