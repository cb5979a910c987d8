#include "tests/campaign/FailingMemory.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include "tests/campaign/Side.h"
#include "tests/support/PageReservations.h"

namespace zel::campaign {

namespace {

std::atomic<int> s_Count{0};
std::atomic<int> s_First{0};
std::atomic<int> s_Failing{0};
std::atomic<long long> s_Live{0};

bool Granted() {
    if (t_Side != Side::kSdk) return true;
    const int past = ++s_Count - s_First;
    return past < 0 || past >= s_Failing;
}

void* Allocate(std::size_t size) {
    void* const memory = Granted() ? std::malloc(size ? size : 1) : nullptr;
    if (memory) ++s_Live;
    return memory;
}

void Free(void* memory) {
    if (memory) --s_Live;
    std::free(memory);
}

}  // namespace

void PlanAllocationFailure(int first, int failing) {
    s_Count = 0;
    s_Failing = 0;
    s_First = first;
    s_Failing = failing;
    platform::SetPageReservationFilter(Granted);
}

int AllocationCount() { return s_Count; }
long long LiveAllocations() { return s_Live; }

}  // namespace zel::campaign

// What the library's other forms lead to. Nothing here is aligned beyond the usual.
void* operator new(std::size_t size) {
    if (void* const memory = zel::campaign::Allocate(size)) return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return zel::campaign::Allocate(size); }
void operator delete(void* memory) noexcept { zel::campaign::Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { zel::campaign::Free(memory); }
