// SHA-1 (FIPS 180-4): the digest that tells whether a calibration table is the one the camera holds. It guards against
// damage and mix-ups, not against forgery.
#ifndef CALIBRATION_SHA1_H
#define CALIBRATION_SHA1_H

#include <array>
#include <cstdint>
#include <span>

namespace zel {

struct Sha1 {
    using Digest = std::array<std::uint8_t, 20>;

    static Digest Of(std::span<const std::uint8_t> message);
};

}  // namespace zel

#endif
