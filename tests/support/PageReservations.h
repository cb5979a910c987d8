// Page reservations (platform/Memory.h) as test programs see them: counted, and refused on demand. Test programs are
// linked so that ReservePages and ReleasePages lead here first.
#ifndef TESTS_SUPPORT_PAGERESERVATIONS_H
#define TESTS_SUPPORT_PAGERESERVATIONS_H

namespace zel::platform {

// How many reservations succeed from now on before every further one fails; negative: all succeed.
void SetPageReservationLimit(long long calls);

// Is asked before each reservation whether it may succeed; null: nobody is.
void SetPageReservationFilter(bool (*granted)());

// How many are alive in this program.
long long LivePageReservations();

}  // namespace zel::platform

#endif
