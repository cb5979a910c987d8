#include "platform/Random.h"

#include <windows.h>

// RtlGenRandom, which has this name in its library.
#include <ntsecapi.h>

namespace zel::platform {

bool RandomBytes(std::span<std::uint8_t> bytes) {
    return RtlGenRandom(bytes.data(), static_cast<ULONG>(bytes.size())) != FALSE;
}

}  // namespace zel::platform
