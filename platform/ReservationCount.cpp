#include "platform/ReservationCount.h"

#include <atomic>

#include "platform/Memory.h"

namespace zel::platform {

namespace {
std::atomic<long long> g_Allowed{-1};
std::atomic<long long> g_Live{0};
}  // namespace

void SetPageReservationLimit(long long calls) { g_Allowed = calls; }

long long LivePageReservations() { return g_Live; }

bool CountReservation() {
    long long allowed = g_Allowed.load();
    while (allowed >= 0) {
        if (allowed == 0) return false;
        if (g_Allowed.compare_exchange_weak(allowed, allowed - 1)) break;
    }
    ++g_Live;
    return true;
}

void CountRelease() { --g_Live; }

}  // namespace zel::platform
