// What a camera object keeps for its whole life is there from the beginning: a lock or a table that took memory of its
// own could lack it, and would answer false for good.
#include <new>
#include <optional>

#include "platform/Locks.h"
#include "tests/link/SyncTableFixture.h"

namespace {
thread_local bool s_NoMemory = false;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return s_NoMemory ? nullptr : ::operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

namespace zel::test {
namespace {

TEST(NoMemory, LockAndTableAreUsable) {
    ExchangeLock exchange_lock;
    std::optional<platform::TimedMutex> mutex;
    std::optional<SyncTable> table;
    s_NoMemory = true;
    mutex.emplace();
    table.emplace(nullptr, "test", exchange_lock);
    s_NoMemory = false;
    EXPECT_TRUE(mutex->Lock(0) && mutex->Unlock());
    int target = 0;
    EXPECT_TRUE(table->GetTarget(H_BIN, &target));
    EXPECT_EQ(target, 1);
}

}  // namespace
}  // namespace zel::test
