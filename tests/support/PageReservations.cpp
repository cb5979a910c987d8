#include "tests/support/PageReservations.h"

#include <atomic>
#include <cstddef>

// Other names for the linker, see CMakeLists.txt: the system's half, and what everybody else's calls lead to.
extern "C" {
void* SystemReservePages(std::size_t bytes);
void SystemReleasePages(void* pages);
void* CountedReservePages(std::size_t bytes);
void CountedReleasePages(void* pages);
}

namespace zel::platform {

namespace {
std::atomic<long long> s_Allowed{-1};
std::atomic<bool (*)()> s_Filter{nullptr};
std::atomic<long long> s_Live{0};

bool TakeOne() {
    bool (*const granted)() = s_Filter;
    if (granted && !granted()) return false;
    long long allowed = s_Allowed;
    while (allowed > 0 && !s_Allowed.compare_exchange_weak(allowed, allowed - 1)) continue;
    return allowed != 0;
}
}  // namespace

void SetPageReservationLimit(long long calls) { s_Allowed = calls; }
void SetPageReservationFilter(bool (*granted)()) { s_Filter = granted; }
long long LivePageReservations() { return s_Live; }

}  // namespace zel::platform

using namespace zel::platform;

void* CountedReservePages(std::size_t bytes) {
    void* const pages = TakeOne() ? SystemReservePages(bytes) : nullptr;
    if (pages) ++s_Live;
    return pages;
}

void CountedReleasePages(void* pages) {
    if (pages) --s_Live;
    SystemReleasePages(pages);
}
