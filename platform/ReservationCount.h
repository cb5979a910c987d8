// Counts page reservations and makes them fail on demand, for the system-specific halves of Memory.h.
#ifndef PLATFORM_RESERVATIONCOUNT_H
#define PLATFORM_RESERVATIONCOUNT_H

namespace zel::platform {

// Whether one more reservation may be made. Each true is matched by one CountRelease, also when the system then
// refuses.
bool CountReservation();
void CountRelease();

}  // namespace zel::platform

#endif
