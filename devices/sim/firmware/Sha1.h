// SHA-1, the digest by which the camera's flash directory vouches for its tables. The camera has one of its own, so
// that it can tell a host whose digest is wrong.
#ifndef SIM_SHA1_H
#define SIM_SHA1_H

#include <array>
#include <cstdint>
#include <span>

namespace zel::sim {

using Sha1Digest = std::array<std::uint8_t, 20>;

Sha1Digest Sha1(std::span<const std::uint8_t> message);

}  // namespace zel::sim

#endif
