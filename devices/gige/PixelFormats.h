// The pixel formats that this plug-in takes from a camera, and what makes 16-bit samples of them.
#ifndef GIGE_PIXELFORMATS_H
#define GIGE_PIXELFORMATS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zel::gige {

// How samples lie in memory. "p" packs them bit after bit from the lowest on:
//
//    12p, two in three bytes:   byte 0: bits 7..0 of the first     byte 1: bits 3..0 of the second | 11..8 of the first
//                               byte 2: bits 11..4 of the second
//    10p, four in five bytes, in the same way
//
// "Packed", the older one, gives each sample a byte for its upper bits; the byte between two has their lower ones:
//
//    12Packed: as kernels::scalar::Unpack12 draws it
//    10Packed: byte 0: bits 9..2 of the first   byte 1: bits 5..4, 1..0 of the second, first   byte 2: bits 9..2 of the
//              second
enum class Packing { kBytes, kWords, k12p, k12Packed, k10p, k10Packed };

struct PixelFormat {
    std::string name;  // as cameras name it: "Mono12p", "BayerRG8"
    int bits = 0;      // significant bits of a sample
    Packing packing = Packing::kBytes;
    int phase = 0;  // of the color filter, as in CFA_PHASE; 0: monochrome

    bool operator==(const PixelFormat&) const = default;
};

// The format of a name; none when frames of it can't be taken.
std::optional<PixelFormat> PixelFormatOf(std::string_view name);

// Those of the names that can be taken, the best one first. A camera with a mosaic of colors is one before anything
// else, since what it makes of it itself is not raw; then the most bits win, then the fewest bytes on the link.
std::vector<PixelFormat> RankFormats(std::span<const std::string> names);

// Bits that a sample takes on the link.
int BitsOnLink(Packing packing);

// Bytes of so many samples without a gap.
std::size_t PackedBytes(Packing packing, std::size_t samples);

// Makes samples.size() samples, little-endian; bytes has at least PackedBytes() for them.
void Unpack(Packing packing, std::span<const std::uint8_t> bytes, std::span<std::uint16_t> samples);

}  // namespace zel::gige

#endif
