#include "platform/ReservationCount.h"

#include <atomic>

#include "platform/Memory.h"

namespace zel::platform {

namespace {
std::atomic<long long> s_Allowed{-1};
std::atomic<long long> s_Live{0};
}  // namespace

void SetPageReservationLimit(long long calls) { s_Allowed = calls; }

long long LivePageReservations() { return s_Live; }

bool CountReservation() {
    long long allowed = s_Allowed.load();
    while (allowed >= 0) {
        if (allowed == 0) return false;
        if (s_Allowed.compare_exchange_weak(allowed, allowed - 1)) break;
    }
    ++s_Live;
    return true;
}

void CountRelease() { --s_Live; }

}  // namespace zel::platform
