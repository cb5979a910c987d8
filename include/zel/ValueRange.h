/// @file
/// What a parameter accepts, as the camera states it.
#ifndef ZEL_LAYER_VALUERANGE_H
#define ZEL_LAYER_VALUERANGE_H

#include <cstdint>
#include <string>

namespace zel {

/// Bounds and default of a number, both bounds included, in the parameter's unit.
struct ValueRange {
    bool known = false;      ///< false: the camera states none, and the rest is 0
    long long minimum = 0;   ///< smallest value
    long long maximum = 0;   ///< largest value
    long long standard = 0;  ///< the default

    /// Whether a value lies in it.
    bool contains(long long value) const { return value >= minimum && value <= maximum; }
    /// "0..100" or "unknown".
    std::string text() const { return known ? std::to_string(minimum) + ".." + std::to_string(maximum) : "unknown"; }
    /// The range in another unit; bounds that do not divide are drawn inwards.
    ValueRange scaled(long long factor, long long divisor) const {
        return {known, (minimum * factor + divisor - 1) / divisor, maximum * factor / divisor,
                standard * factor / divisor};
    }
    /// The range from three 32-bit words. The camera does not say whether they are signed: they are unless that would
    /// put the maximum below the minimum.
    static ValueRange from_words(int minimum, int maximum, int standard) {
        if (maximum >= minimum) return {true, minimum, maximum, standard};
        return {true, static_cast<std::uint32_t>(minimum), static_cast<std::uint32_t>(maximum),
                static_cast<std::uint32_t>(standard)};
    }
};

}  // namespace zel

#endif
