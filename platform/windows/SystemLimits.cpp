#include "platform/SystemLimits.h"

namespace zel::platform {

// Windows limits none of this for a single program: priorities and locked memory are asked for, sockets get the buffers
// that they ask for.
std::optional<std::uint64_t> RealTimePriorityLimit() { return std::nullopt; }
std::optional<std::uint64_t> LockedMemoryLimit() { return std::nullopt; }
std::optional<std::uint64_t> ReceiveBufferLimit() { return std::nullopt; }
std::optional<std::uint64_t> ReceiveBufferDefault() { return std::nullopt; }
std::optional<std::uint64_t> UsbMemoryLimit() { return std::nullopt; }

}  // namespace zel::platform
