// Demosaicing, tables, color transform and packing with AVX-512. The samples of 32 pixels go through all the steps in
// registers.
//
// A row's last block ends with the row and overlaps the one before it: some pixels are made twice.
#include "kernels/Avx512Color.h"

#include <algorithm>
#include <type_traits>

#include "kernels/Avx2Kernels.h"
#include "kernels/Avx512ColorSteps.h"
#include "kernels/CpuSupport.h"

ZEL_AVX512_BEGIN

namespace zel::kernels::avx512 {

std::uint16_t AllBits(std::span<const std::uint16_t> samples) {
    __m512i bits = _mm512_setzero_si512(), more = bits;
    std::size_t i = 0;
    for (; i + 2 * kPixels <= samples.size(); i += 2 * kPixels) {
        bits = _mm512_or_si512(bits, Load(samples.data() + i));
        more = _mm512_or_si512(more, Load(samples.data() + i + kPixels));
    }
    const int all = _mm512_reduce_or_epi32(_mm512_or_si512(bits, more));
    return static_cast<std::uint16_t>(all | all >> 16 | scalar::AllBits(samples.subspan(i)));
}

namespace {

// Calls steps(x) for the blocks of the columns from `begin` to before `end`, which are at least one. Between the first
// and the last block they stand at multiples of their size, so that most stores stay within cache lines.
template <class Steps>
ZEL_INLINE_512 void EachBlock(std::size_t begin, std::size_t end, Steps&& steps) {
    const std::size_t last = end - kPixels;
    for (std::size_t x = begin;; x = std::min(x / kPixels * kPixels + kPixels, last)) {
        steps(x);
        if (x == last) return;
    }
}

// What rows are left to that don't fit into blocks.
const KernelTable& Below() { return CpuHasFastGathers() ? avx2::kTable : avx2::kTableWithoutGathers; }

// Whether a row has a block of pixels with all their neighbours.
bool HasInside(const MosaicRow& m) { return m.above && m.below && PhaseAt(m.phase, 0, 0) != 0 && m.w >= kPixels + 2; }

// Calls run(output) with what writes the format.
template <class Function>
ZEL_INLINE_512 void WithOutput(ColorFormat format, void* out, Function&& run) {
    auto* const bytes = static_cast<std::uint8_t*>(out);
    if (format == ColorFormat::k16) return run(To16{static_cast<std::uint16_t*>(out)});
    if (format == ColorFormat::k8) return run(To8{bytes});
    run(To8Padded{bytes});
}

// One table of bytes for the three channels of an 8-bit picture, whose samples it has an entry for each.
struct ByteTable {
    __m512i part[4];

    ZEL_INLINE_512 explicit ByteTable(const std::uint16_t* table) {
        for (int i = 0; i < 4; ++i) {
            const __m512i low = _mm512_min_epu16(Load(table + 64 * i), Words(255));
            const __m512i high = _mm512_min_epu16(Load(table + 64 * i + 32), Words(255));
            part[i] =
                _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi16_epi8(low)), _mm512_cvtepi16_epi8(high), 1);
        }
    }
    ZEL_INLINE_512 __m512i Entries(__m512i at) const {
        const __m512i lower = _mm512_permutex2var_epi8(part[0], at, part[1]);
        const __m512i upper = _mm512_permutex2var_epi8(part[2], at, part[3]);
        return _mm512_mask_mov_epi8(lower, _mm512_movepi8_mask(at), upper);
    }
    static bool Serves(const ColorSteps& steps) {
        const ChannelMaps& maps = steps.output;
        return steps.format != ColorFormat::k16 && maps[0].table && maps[0] == maps[1] && maps[0] == maps[2] &&
               steps.transform.largest >> steps.transform.shift <= 255;
    }
};

// Columns with all their neighbours.
template <class Fetch, class Output>
void MapInside(const MosaicRow& mosaic, const ColorSteps& steps, const Output& picture) {
    const FromMosaic source{mosaic};
    const Maps<Fetch> input{steps.input}, output{steps.output};
    const ByMatrix matrix(steps.transform);
    EachBlock(1, mosaic.w - 1, [&](std::size_t x) {
        Block block = source.Read(x);
        input.Apply(block);
        matrix.Apply(block);
        output.Apply(block);
        picture.Write(block, x);
    });
}

// The same with the output maps' entries in registers.
template <class Fetch, class Output>
void MapBytesInside(const MosaicRow& mosaic, const ColorSteps& steps, const Output& picture) {
    const FromMosaic source{mosaic};
    const Maps<Fetch> input{steps.input};
    const ByMatrix matrix(steps.transform);
    const ByteTable table(steps.output[0].table);
    EachBlock(1, mosaic.w - 1, [&](std::size_t x) {
        Block block = source.Read(x);
        input.Apply(block);
        matrix.Apply(block);
        const ByteBlock bytes = ByteBlock::Of(block);
        picture.Write(ByteBlock{table.Entries(bytes.c01), table.Entries(bytes.c2)}, x);
    });
}

// The steps of a single column, in the row's scratch.
void Column(const MosaicRow& mosaic, std::size_t x, const ColorSteps& steps, const PlanarRow& scratch, void* out) {
    const PlanarRow pixel{{scratch.channel[0] + x, scratch.channel[1] + x, scratch.channel[2] + x}, 1};
    const auto map = [&](const ChannelMaps& maps) {
        for (unsigned k = 0; k < 3; ++k) scalar::MapSamples({pixel.channel[k], 1}, maps[k]);
    };
    scalar::DemosaicColumns(mosaic, x, x + 1, scratch);
    map(steps.input);
    scalar::TransformRow(pixel, steps.transform);
    map(steps.output);
    scalar::PackRow(pixel, steps.format, static_cast<std::uint8_t*>(out) + x * BytesPerPixel(steps.format));
}

}  // namespace

void DemosaicRow(const MosaicRow& m, const PlanarRow& out) {
    if (!HasInside(m)) return Below().demosaic_row(m, out);
    const FromMosaic source{m};
    EachBlock(1, m.w - 1, [&](std::size_t x) { ToPlanes{out}.Write(source.Read(x), x); });
    scalar::DemosaicColumns(m, 0, 1, out);
    scalar::DemosaicColumns(m, m.w - 1, m.w, out);
}

void TransformPackRow(const PlanarRow& row, const ColorTransform& transform, ColorFormat format, void* out) {
    if (row.w < kPixels || !InVectors(transform)) return Below().transform_pack_row(row, transform, format, out);
    const FromPlanes source{row};
    const ByMatrix matrix(transform);
    WithOutput(format, out, [&](const auto& picture) {
        EachBlock(0, row.w, [&](std::size_t x) {
            Block block = source.Read(x);
            matrix.Apply(block);
            picture.Write(block, x);
        });
    });
}

template <class Fetch>
void ColorRow(const MosaicRow& mosaic, const ColorSteps& steps, const PlanarRow& scratch, void* out) {
    if (!HasInside(mosaic) || !InVectors(steps.transform)) return Below().color_row(mosaic, steps, scratch, out);
    WithOutput(steps.format, out, [&](const auto& picture) {
        using Output = std::decay_t<decltype(picture)>;
        if constexpr (!std::is_same_v<Output, To16>) {
            if (ByteTable::Serves(steps)) return MapBytesInside<Fetch>(mosaic, steps, picture);
        }
        MapInside<Fetch>(mosaic, steps, picture);
    });
    Column(mosaic, 0, steps, scratch, out);
    Column(mosaic, mosaic.w - 1, steps, scratch, out);
}

template void ColorRow<Gathers512>(const MosaicRow&, const ColorSteps&, const PlanarRow&, void*);
template void ColorRow<Inserts512>(const MosaicRow&, const ColorSteps&, const PlanarRow&, void*);

}  // namespace zel::kernels::avx512

ZEL_AVX512_END
