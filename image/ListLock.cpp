#include "image/ListLock.h"

#include <chrono>
#include <thread>

namespace zel {

// Asleep, so that a holder that lost its processor gets one whatever the priorities are.
void ListLock::WaitABit() { std::this_thread::sleep_for(std::chrono::microseconds(50)); }

}  // namespace zel
