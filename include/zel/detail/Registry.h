/// Who a callback belongs to.
#ifndef ZEL_LAYER_REGISTRY_H
#define ZEL_LAYER_REGISTRY_H

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

namespace zel::detail {

/// The SDK's callbacks are handed a number instead of a pointer: whoever dies while a callback is on its way is not
/// found any more, and who is found lives until the callback has returned.
template <class State>
class Registry {
  public:
    /// The context for the callbacks of `state`.
    static void* add(std::weak_ptr<State> state) {
        Table& all = table();
        const std::lock_guard lock(all.mutex);
        const std::uintptr_t number = ++all.last;
        all.states.emplace(number, std::move(state));
        return reinterpret_cast<void*>(number);
    }
    static void remove(void* context) {
        Table& all = table();
        const std::lock_guard lock(all.mutex);
        all.states.erase(reinterpret_cast<std::uintptr_t>(context));
    }
    /// Null when it is gone.
    static std::shared_ptr<State> find(void* context) {
        Table& all = table();
        const std::lock_guard lock(all.mutex);
        const auto found = all.states.find(reinterpret_cast<std::uintptr_t>(context));
        return found == all.states.end() ? nullptr : found->second.lock();
    }

  private:
    struct Table {
        std::mutex mutex;
        std::unordered_map<std::uintptr_t, std::weak_ptr<State>> states;
        std::uintptr_t last = 0;
    };
    // Never destroyed, on purpose: a callback may come while the program ends.
    static Table& table() {
        static Table* const all = new Table;
        return *all;
    }
};

}  // namespace zel::detail

#endif
