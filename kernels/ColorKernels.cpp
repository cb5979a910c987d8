#include "kernels/ColorKernels.h"

#include <algorithm>
#include <array>

#include "kernels/ScalarKernels.h"

namespace zel::kernels::scalar {

std::uint16_t AllBits(std::span<const std::uint16_t> samples) {
    std::uint16_t bits = 0;
    for (const std::uint16_t sample : samples) bits |= sample;
    return bits;
}

namespace {
// The mean of up to four samples, or a stand-in when there are none.
class Mean {
  public:
    void Add(const std::uint16_t* row, std::size_t column, std::size_t w) {
        // A column left of the first is a very large number.
        if (!row || column >= w) return;
        m_Sum += row[column];
        ++m_Count;
    }
    std::uint16_t Or(std::uint16_t otherwise) const {
        return m_Count == 0 ? otherwise : static_cast<std::uint16_t>(m_Sum / m_Count);
    }

  private:
    std::uint32_t m_Sum = 0;
    std::uint32_t m_Count = 0;
};

void DemosaicPixel(const MosaicRow& m, std::size_t x, const PlanarRow& out) {
    const std::uint16_t own = m.row[x];
    Mean row, column, sides, corners;
    for (const std::size_t beside : {x - 1, x + 1}) {
        row.Add(m.row, beside, m.w);
        sides.Add(m.row, beside, m.w);
        corners.Add(m.above, beside, m.w);
        corners.Add(m.below, beside, m.w);
    }
    for (const std::uint16_t* beside : {m.above, m.below}) {
        column.Add(beside, x, m.w);
        sides.Add(beside, x, m.w);
    }
    const bool green = PhaseAt(m.phase, x % 2, 0) >= 3;
    const int near = NearChannel(m.phase);
    out.channel[near][x] = green ? row.Or(own) : own;
    out.channel[1][x] = green ? own : sides.Or(own);
    out.channel[2 - near][x] = green ? column.Or(own) : corners.Or(own);
}

std::uint16_t Half(unsigned a, unsigned b) { return static_cast<std::uint16_t>((a + b) >> 1); }
std::uint16_t Quarter(unsigned a, unsigned b, unsigned c, unsigned d) {
    return static_cast<std::uint16_t>((a + b + c + d) >> 2);
}

// Pixels with all their neighbours, from column 1 on, in pairs. Returns the first column that is left.
std::size_t DemosaicInside(const MosaicRow& m, const PlanarRow& out) {
    const std::uint16_t *const above = m.above, *const row = m.row, *const below = m.below;
    std::uint16_t* const near = out.channel[NearChannel(m.phase)];
    std::uint16_t* const middle = out.channel[1];
    std::uint16_t* const far = out.channel[2 - NearChannel(m.phase)];
    const auto green = [&](std::size_t x) {
        near[x] = Half(row[x - 1], row[x + 1]);
        middle[x] = row[x];
        far[x] = Half(above[x], below[x]);
    };
    const auto colored = [&](std::size_t x) {
        near[x] = row[x];
        middle[x] = Quarter(row[x - 1], row[x + 1], above[x], below[x]);
        far[x] = Quarter(above[x - 1], above[x + 1], below[x - 1], below[x + 1]);
    };
    std::size_t x = 1;
    if (PhaseAt(m.phase, 1, 0) < 3 && x + 1 < m.w) colored(x++);
    for (; x + 2 < m.w; x += 2) {
        green(x);
        colored(x + 1);
    }
    return x;
}
}  // namespace

void DemosaicColumns(const MosaicRow& m, std::size_t begin, std::size_t end, const PlanarRow& out) {
    for (std::size_t x = begin; x < end; ++x) DemosaicPixel(m, x, out);
}

void DemosaicRow(const MosaicRow& m, const PlanarRow& out) {
    if (PhaseAt(m.phase, 0, 0) == 0) {
        for (std::uint16_t* channel : out.channel) std::copy_n(m.row, m.w, channel);
        return;
    }
    const std::size_t done = m.above && m.below ? DemosaicInside(m, out) : 0;
    DemosaicColumns(m, 0, std::min<std::size_t>(done, 1), out);
    DemosaicColumns(m, done, m.w, out);
}

namespace {
using Pixel = std::array<std::uint16_t, 3>;  // channel 0 first

Pixel Transformed(const PlanarRow& row, std::size_t x, const ColorTransform& transform) {
    const float* const m = transform.matrix;
    const auto largest = static_cast<float>(transform.largest);
    const auto c0 = static_cast<float>(row.channel[0][x]);
    const auto c1 = static_cast<float>(row.channel[1][x]);
    const auto c2 = static_cast<float>(row.channel[2][x]);
    Pixel pixel;
    for (unsigned r = 0; r < 3; ++r) {
        const float product = m[3 * r] * c2 + m[3 * r + 1] * c1 + m[3 * r + 2] * c0;
        // Clamped before it is truncated, which gives the same and is defined for every number.
        const float clamped = product > 0.0f ? (product < largest ? product : largest) : 0.0f;
        auto value = static_cast<std::uint16_t>(clamped);
        if (transform.table) value = transform.table[value];
        pixel[2 - r] = static_cast<std::uint16_t>(value >> transform.shift);
    }
    return pixel;
}

void PackPixel(const Pixel& pixel, std::size_t x, ColorFormat format, void* out) {
    if (format == ColorFormat::k16) {
        std::copy(pixel.begin(), pixel.end(), static_cast<std::uint16_t*>(out) + 3 * x);
        return;
    }
    auto* to = static_cast<std::uint8_t*>(out) + x * BytesPerPixel(format);
    for (const std::uint16_t channel : pixel) *to++ = static_cast<std::uint8_t>(std::min<std::uint16_t>(channel, 255));
    if (format == ColorFormat::k8Padded) *to = 255;
}
}  // namespace

void TransformRow(const PlanarRow& row, const ColorTransform& transform) {
    for (std::size_t x = 0; x < row.w; ++x) {
        const Pixel pixel = Transformed(row, x, transform);
        for (unsigned k = 0; k < 3; ++k) row.channel[k][x] = pixel[k];
    }
}

void PackRow(const PlanarRow& row, ColorFormat format, void* out) {
    for (std::size_t x = 0; x < row.w; ++x) {
        PackPixel({row.channel[0][x], row.channel[1][x], row.channel[2][x]}, x, format, out);
    }
}

void TransformPackRow(const PlanarRow& row, const ColorTransform& transform, ColorFormat format, void* out) {
    for (std::size_t x = 0; x < row.w; ++x) PackPixel(Transformed(row, x, transform), x, format, out);
}

void MapSamples(std::span<std::uint16_t> samples, const SampleMap& map) {
    if (map.table) return LookUp(samples, map.table, 0xFFFF, 0xFFFF);
    for (std::uint16_t& sample : samples) {
        const auto above = static_cast<std::uint16_t>(sample - std::min(sample, map.floor));
        sample = std::min(above, map.ceiling);
    }
}

void ColorRow(const MosaicRow& mosaic, const ColorSteps& steps, const PlanarRow& scratch, void* out) {
    const auto map = [&](const ChannelMaps& maps) {
        if (KeepSamples(maps)) return;
        for (unsigned k = 0; k < 3; ++k) MapSamples({scratch.channel[k], scratch.w}, maps[k]);
    };
    DemosaicRow(mosaic, scratch);
    map(steps.input);
    if (KeepSamples(steps.output)) return TransformPackRow(scratch, steps.transform, steps.format, out);
    TransformRow(scratch, steps.transform);
    map(steps.output);
    PackRow(scratch, steps.format, out);
}

}  // namespace zel::kernels::scalar
