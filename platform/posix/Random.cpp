#include "platform/Random.h"

#include <sys/random.h>

namespace zel::platform {

// Up to 256 bytes the system fills whole or not at all.
bool RandomBytes(std::span<std::uint8_t> bytes) {
    return bytes.size() <= 256 && getentropy(bytes.data(), bytes.size()) == 0;
}

}  // namespace zel::platform
