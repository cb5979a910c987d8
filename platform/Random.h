// Random numbers that nobody can guess.
#ifndef PLATFORM_RANDOM_H
#define PLATFORM_RANDOM_H

#include <cstdint>
#include <span>

namespace zel::platform {

// Fills the bytes from the system's generator; false when it has none.
bool RandomBytes(std::span<std::uint8_t> bytes);

}  // namespace zel::platform

#endif
