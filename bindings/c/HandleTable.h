// The objects behind the handles that applications hold.
#ifndef BINDINGS_C_HANDLETABLE_H
#define BINDINGS_C_HANDLETABLE_H

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "zel.h"

namespace zel::c {

// What a handle is a handle of: its two lowest bits.
enum class HandleKind : std::uintptr_t { kNone = 0, kSdk = 1, kCamera = 2, kFrame = 3 };

inline constexpr std::uintptr_t kHandleKinds = 4;

inline HandleKind KindOf(const void* handle) {
    return static_cast<HandleKind>(reinterpret_cast<std::uintptr_t>(handle) % kHandleKinds);
}

// A handle is a number in the shape of a pointer, given once: a handle that is dead, made up or of another kind is not
// found, and who is found lives until the call that found it has ended. (Numbers come again after 2^30 in a 32-bit
// process.) Any thread.
template <class Object, class Handle, HandleKind kKind>
class HandleTable {
  public:
    static Handle* Add(std::shared_ptr<Object> object) {
        Table& all = TheTable();
        const std::lock_guard lock(all.mutex);
        std::uintptr_t number;
        do {
            number = ++all.last * kHandleKinds + static_cast<std::uintptr_t>(kKind);
        } while (number < kHandleKinds || all.objects.contains(number));
        all.objects.emplace(number, std::move(object));
        return reinterpret_cast<Handle*>(number);
    }
    // Null when there is no such object.
    static std::shared_ptr<Object> Find(const Handle* handle) {
        Table& all = TheTable();
        const std::lock_guard lock(all.mutex);
        const auto found = all.objects.find(reinterpret_cast<std::uintptr_t>(handle));
        return found == all.objects.end() ? nullptr : found->second;
    }
    // The same, and the handle is dead from now on.
    static std::shared_ptr<Object> Take(const Handle* handle) {
        Table& all = TheTable();
        const std::lock_guard lock(all.mutex);
        const auto found = all.objects.find(reinterpret_cast<std::uintptr_t>(handle));
        if (found == all.objects.end()) return nullptr;
        std::shared_ptr<Object> object = std::move(found->second);
        all.objects.erase(found);
        return object;
    }

  private:
    struct Table {
        std::mutex mutex;
        std::unordered_map<std::uintptr_t, std::shared_ptr<Object>> objects;
        std::uintptr_t last = 0;
    };
    // Never destroyed, on purpose: threads of cameras may call while the program ends.
    static Table& TheTable() {
        static Table* const all = new Table;
        return *all;
    }
};

}  // namespace zel::c

#endif
