// A picture in memory as it is to stand in a PNG file.
#ifndef UTIL_PNGPICTURE_H
#define UTIL_PNGPICTURE_H

#include <cstddef>
#include <cstdint>

namespace zel {

// Samples of a pixel in memory, in the host's byte order, without gaps between rows:
enum class PngFormat {
    kGrey16,  // | grey 2 |
    kRgb16,   // | blue 2 | green 2 | red 2 |
    kRgb8,    // | blue | green | red |
    kRgba8,   // | blue | green | red | unused |, opaque in the file
};

// What the file says of its samples.
enum class PngLight {
    kUntold,  // nothing
    kSrgb,    // they have the sRGB curve
    kLinear,  // they are proportional to light
};

struct PngPicture {
    PngFormat format = PngFormat::kGrey16;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    const void* pixels = nullptr;
    // Samples of 16 bits are moved up by this many; what no longer fits becomes 65535.
    unsigned shift = 0;
    PngLight light = PngLight::kUntold;

    unsigned BytesPerSample() const { return format == PngFormat::kGrey16 || format == PngFormat::kRgb16 ? 2 : 1; }
    unsigned Channels() const { return format == PngFormat::kGrey16 ? 1 : format == PngFormat::kRgba8 ? 4 : 3; }
    unsigned BytesPerPixel() const { return BytesPerSample() * Channels(); }
    std::uint64_t BytesPerRow() const { return std::uint64_t{width} * BytesPerPixel(); }
};

}  // namespace zel

#endif
