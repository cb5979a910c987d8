// Collects a given number of bytes of the camera's reply stream within a time budget, for both protocols.
#ifndef LINK_RECEIVEBYTES_H
#define LINK_RECEIVEBYTES_H

#include <algorithm>
#include <cstdint>

#include "link/ExchangeLock.h"
#include "link/ICameraInterface.h"
#include "platform/Clock.h"

namespace zel {

inline constexpr int kReceiveCallMs = 500;     // what one receive call may wait
inline constexpr int kReceiveStageMs = 5000;   // what one header or one payload may take
inline constexpr int kDatagramHeaderSize = 3;  // datagram id, payload length in two bytes, big-endian

// Fills `into` with `length` bytes; `received` tells how many came. before_call(bytes_to_recv) runs before each receive
// call. False when more than kReceiveStageMs passed, or when the exchange was cancelled: that is looked at before each
// receive call, so it takes at most the time of one.
//
// On purpose: the time is looked at after each call, so bytes that are completed by the call that crosses the budget
// count as a time-out.
template <class BeforeCall>
bool ReceiveBytes(ICameraInterface& camera, ExchangeLock& exchange, unsigned char* into, int length, int& received,
                  BeforeCall before_call) {
    received = 0;
    const std::uint32_t start = platform::MillisecondClock();
    while (received < length) {
        if (exchange.Cancelled()) return false;
        const int wanted = length - received;
        before_call(wanted);
        // The count comes from a plug-in: whatever it claims, the buffer's end is kept.
        received += std::clamp(camera.RecvData(wanted, into + received, kReceiveCallMs), 0, wanted);
        if (platform::MillisecondClock() - start > static_cast<std::uint32_t>(kReceiveStageMs)) return false;
    }
    return true;
}

// Big-endian 16-bit value of a header.
inline int BigEndian16(const unsigned char* bytes) { return bytes[0] * 256 + bytes[1]; }

}  // namespace zel

#endif
