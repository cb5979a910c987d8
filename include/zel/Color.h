/// @file
/// Color pictures: what they are to be, and the tables that make them so.
#ifndef ZEL_LAYER_COLOR_H
#define ZEL_LAYER_COLOR_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace zel {

/// How the channels of a color picture are stored. In the SDK's pictures they stand in the order blue, green, red.
enum class ColorFormat {
    rgb16,  ///< three channels of 16 bits
    rgb8,   ///< three channels of 8 bits
    rgba8,  ///< four channels of 8 bits, the fourth opaque
};

/// What the channels of a color picture mean.
enum class ColorSpace {
    srgb,    ///< as ordinary picture files: the primaries of CCIR 709 and the curve that viewers expect
    linear,  ///< CCIR 709 primaries, linear light: twice the light is twice the number
    xyz,     ///< CIE XYZ, linear
    sensor,  ///< what the sensor's channels say, black level included
};

/// What an application asks for.
struct ColorOptions {
    ColorFormat format = ColorFormat::rgb16;  ///< how channels are stored
    ColorSpace space = ColorSpace::srgb;      ///< what they mean
};

/// How the color pictures of a camera are made: Camera::use_color() answers it.
struct ColorSetting {
    ColorFormat format = ColorFormat::rgb16;  ///< how channels are stored
    ColorSpace space = ColorSpace::srgb;      ///< what they mean
    unsigned bits = 0;                        ///< of the mosaic
    unsigned black_level = 0;                 ///< counts taken off before anything else

    /// Channels of a pixel.
    unsigned channels() const { return format == ColorFormat::rgba8 ? 4 : 3; }
    /// Bytes of a channel.
    unsigned bytes_per_channel() const { return format == ColorFormat::rgb16 ? 2 : 1; }
    /// Bits of a channel that the values fill.
    unsigned output_bits() const {
        if (format != ColorFormat::rgb16) return 8;
        return space == ColorSpace::srgb ? 16 : bits;
    }
};

namespace detail {

inline constexpr float kIdentity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
// CCIR 709 primaries with the white point D65 (ITU-R BT.709) to CIE XYZ and back.
inline constexpr float kRgbToXyz[9] = {0.41214f, 0.3576f,  0.18036f, 0.21251f, 0.71535f,
                                       0.07214f, 0.01932f, 0.11923f, 0.94988f};
inline constexpr float kXyzToRgb[9] = {3.2406f, -1.5372f, -0.4986f, -0.9689f, 1.8758f,
                                       0.0415f, 0.0557f,  -0.204f,  1.057f};

}  // namespace detail

/// Table for SetInputLinearizationTable(): what lies above the black level. 2^bits entries of three equal channels.
inline std::vector<std::uint16_t> black_level_table(unsigned bits, unsigned black_level) {
    std::vector<std::uint16_t> table;
    table.reserve(std::size_t{3} << bits);
    for (unsigned value = 0; value < 1u << bits; ++value) {
        table.insert(table.end(), 3, static_cast<std::uint16_t>(value > black_level ? value - black_level : 0));
    }
    return table;
}

/// Table for SetOutputNonLinearizationTable(): the sRGB curve (IEC 61966-2-1) over full 16 or 8 bits, three equal
/// channels.
inline std::vector<std::uint16_t> srgb_table(const ColorSetting& setting) {
    const unsigned bits = setting.bytes_per_channel() == 2 ? setting.bits : 8;
    const double largest = setting.bytes_per_channel() == 2 ? 65535.0 : 255.0;
    const double full = static_cast<double>((1u << setting.bits) - 1);
    // The largest count stays white although the black level was taken off it.
    const double stretch = full / (full - setting.black_level) / static_cast<double>((1u << bits) - 1);
    std::vector<std::uint16_t> table;
    table.reserve(std::size_t{3} << bits);
    for (unsigned value = 0; value < 1u << bits; ++value) {
        const double light = (std::min)(value * stretch, 1.0);
        const double encoded = light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1.0 / 2.4) - 0.055;
        table.insert(table.end(), 3, static_cast<std::uint16_t>(encoded * largest + 0.5));
    }
    return table;
}

}  // namespace zel

#endif
