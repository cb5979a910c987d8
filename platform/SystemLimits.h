// What the system grants to programs that move much data in little time. Each is empty where the system has no such
// limit or does not tell.
#ifndef PLATFORM_SYSTEMLIMITS_H
#define PLATFORM_SYSTEMLIMITS_H

#include <cstdint>
#include <optional>

namespace zel::platform {

inline constexpr std::uint64_t kUnlimited = UINT64_MAX;

// The highest real-time priority that this process may give its threads; 0: none.
std::optional<std::uint64_t> RealTimePriorityLimit();
// How many bytes this process may keep from being swapped out.
std::optional<std::uint64_t> LockedMemoryLimit();

// Bytes that a socket may have for what has arrived, when it asks for them and when it does not.
std::optional<std::uint64_t> ReceiveBufferLimit();
std::optional<std::uint64_t> ReceiveBufferDefault();

// Bytes that all USB transfers of programs may take together.
std::optional<std::uint64_t> UsbMemoryLimit();

}  // namespace zel::platform

#endif
