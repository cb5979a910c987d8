// The color loops in their plain form, the reference for every faster one. They work on one row at a time, in three
// planes: channel 0, 1 and 2 (blue, green, red). Pure functions; callers make sure that the rows hold w samples.
#ifndef KERNELS_COLORKERNELS_H
#define KERNELS_COLORKERNELS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zel::kernels {

// A row of a picture with one sample per channel.
struct PlanarRow {
    std::uint16_t* channel[3];
    std::size_t w;
};

// A row of a color filter mosaic with the rows beside it; null where the picture ends.
//
// phase tells which color the row's first pixel has: 1 channel 2, 2 channel 0, 3 green with channel 2 beside it in the
// row, 4 green with channel 0 beside it. Every other number: no mosaic.
struct MosaicRow {
    const std::uint16_t* above;
    const std::uint16_t* row;
    const std::uint16_t* below;
    std::size_t w;
    int phase;
    bool below_14_bits;  // no sample of the three rows is above 16383: sums of four fit 16 bits
};

// The phase of a pixel `columns` to the right and `rows` below one of phase `phase`.
constexpr int PhaseAt(int phase, unsigned columns, unsigned rows) {
    if (phase < 1 || phase > 4) return 0;
    // Moving one column swaps 1 and 3, 2 and 4; moving one row swaps 1 and 4, 2 and 3.
    if (columns % 2 != 0) phase = phase <= 2 ? phase + 2 : phase - 2;
    if (rows % 2 != 0) phase = 5 - phase;
    return phase;
}

// The channel that a mosaic row has beside green.
constexpr int NearChannel(int phase) { return phase % 2 != 0 ? 2 : 0; }

// A 3 x 3 matrix, row by row, on the triple (channel 2, channel 1, channel 0) of each pixel, row 1 giving channel 2.
struct ColorTransform {
    float matrix[9];
    std::uint16_t largest;       // results are clamped to 0 ... largest
    const std::uint16_t* table;  // largest + 1 entries and two more that may be read; null: no lookup
    unsigned shift;              // 0 to 16, at the end
};

// Entries of this size and below keep every product of a pixel within 32-bit integers.
inline constexpr float kTameEntry = 10000.0f;

enum class ColorFormat { k16, k8, k8Padded };  // three 16-bit, three 8-bit, four 8-bit channels

constexpr std::size_t BytesPerPixel(ColorFormat format) {
    return format == ColorFormat::k16 ? 6 : format == ColorFormat::k8 ? 3 : 4;
}

// What the samples of one channel are replaced by: the entries of a table or, without one, what lies above `floor`, up
// to `ceiling`.
struct SampleMap {
    const std::uint16_t* table = nullptr;  // 65536 entries and two more that may be read
    std::uint16_t floor = 0;
    std::uint16_t ceiling = 0xFFFF;

    constexpr bool operator==(const SampleMap&) const = default;
};
using ChannelMaps = std::array<SampleMap, 3>;

constexpr bool KeepSamples(const ChannelMaps& maps) { return maps == ChannelMaps{}; }

// What a mosaic row goes through to become a row of the picture, in this order.
struct ColorSteps {
    ChannelMaps input;
    ColorTransform transform;
    ChannelMaps output;
    ColorFormat format;
};

namespace scalar {

// All the bits that are set in any of the samples.
std::uint16_t AllBits(std::span<const std::uint16_t> samples);

// Bilinear, whole numbers, truncating. A pixel keeps its own color; every other one is the mean of the neighbours that
// have it: the four at its sides or corners, or the two in its row or column. At the picture's edges the mean is over
// those that exist; where none exists, and where there is no mosaic, it is the pixel's own sample.
void DemosaicRow(const MosaicRow& mosaic, const PlanarRow& out);
// The columns from `begin` to before `end` of it, of a row that is part of a mosaic.
void DemosaicColumns(const MosaicRow& mosaic, std::size_t begin, std::size_t end, const PlanarRow& out);

// In single precision, in the order of the matrix's columns, truncated toward zero. What is no number counts as 0.
void TransformRow(const PlanarRow& row, const ColorTransform& transform);

// Writes the row's pixels one after the other, channel 0 first. 8-bit channels are clamped to 255; the fourth is 255.
void PackRow(const PlanarRow& row, ColorFormat format, void* out);

// Both in one step; the row stays as it is.
void TransformPackRow(const PlanarRow& row, const ColorTransform& transform, ColorFormat format, void* out);

void MapSamples(std::span<std::uint16_t> samples, const SampleMap& map);

// All the steps of a row, one after the other. `scratch` is a row that they may work in.
void ColorRow(const MosaicRow& mosaic, const ColorSteps& steps, const PlanarRow& scratch, void* out);

}  // namespace scalar
}  // namespace zel::kernels

#endif
