// Demosaicing, color transform and packing with AVX2.
#include <algorithm>
#include <cmath>

#include "kernels/Avx2Color.h"
#include "kernels/Avx2Vectors.h"

ZEL_AVX2_BEGIN

namespace zel::kernels::avx2 {

std::uint16_t AllBits(std::span<const std::uint16_t> samples) {
    __m256i bits = _mm256_setzero_si256();
    std::size_t i = 0;
    for (; i + kLane <= samples.size(); i += kLane) bits = _mm256_or_si256(bits, Load(samples.data() + i));
    __m128i half = _mm_or_si128(_mm256_castsi256_si128(bits), _mm256_extracti128_si256(bits, 1));
    half = _mm_or_si128(half, _mm_srli_si128(half, 8));
    half = _mm_or_si128(half, _mm_srli_si128(half, 4));
    half = _mm_or_si128(half, _mm_srli_si128(half, 2));
    return static_cast<std::uint16_t>(_mm_extract_epi16(half, 0) | scalar::AllBits(samples.subspan(i)));
}

namespace {

// Truncated means of two and four samples. Small samples are simply added up.
struct SmallMeans {
    __m256i row, column, sides, corners;

    SmallMeans(const std::uint16_t* above, const std::uint16_t* here, const std::uint16_t* below) {
        const __m256i row_sum = _mm256_add_epi16(Load(here - 1), Load(here + 1));
        const __m256i column_sum = _mm256_add_epi16(Load(above), Load(below));
        const __m256i corner_sum = _mm256_add_epi16(_mm256_add_epi16(Load(above - 1), Load(above + 1)),
                                                    _mm256_add_epi16(Load(below - 1), Load(below + 1)));
        row = _mm256_srli_epi16(row_sum, 1);
        column = _mm256_srli_epi16(column_sum, 1);
        sides = _mm256_srli_epi16(_mm256_add_epi16(row_sum, column_sum), 2);
        corners = _mm256_srli_epi16(corner_sum, 2);
    }
};

// The same for all samples, within 16 bits: the mean of two is rounded up by the processor and corrected by the bit
// that was lost; the mean of four is the mean of two means, plus 1 where both had lost a half and theirs is lost too.
struct AnyMeans {
    __m256i row, column, sides, corners;

    AnyMeans(const std::uint16_t* above, const std::uint16_t* here, const std::uint16_t* below) {
        const __m256i left = Load(here - 1), right = Load(here + 1), up = Load(above), down = Load(below);
        row = MeanOf(left, right);
        column = MeanOf(up, down);
        sides = MeanOfMeans(row, column, Lost(left, right), Lost(up, down));
        const __m256i a = Load(above - 1), b = Load(above + 1), c = Load(below - 1), d = Load(below + 1);
        corners = MeanOfMeans(MeanOf(a, b), MeanOf(c, d), Lost(a, b), Lost(c, d));
    }

  private:
    static __m256i Lost(__m256i a, __m256i b) { return _mm256_and_si256(_mm256_xor_si256(a, b), _mm256_set1_epi16(1)); }
    static __m256i MeanOf(__m256i a, __m256i b) { return _mm256_sub_epi16(_mm256_avg_epu16(a, b), Lost(a, b)); }
    static __m256i MeanOfMeans(__m256i p, __m256i q, __m256i p_lost, __m256i q_lost) {
        const __m256i carry = _mm256_and_si256(Lost(p, q), _mm256_and_si256(p_lost, q_lost));
        return _mm256_add_epi16(MeanOf(p, q), carry);
    }
};

// Columns from `x` on, an odd number; returns the first column that is left.
template <class Means>
std::size_t DemosaicInside(const MosaicRow& m, const PlanarRow& out, std::size_t x) {
    // In every pair of pixels one is green and the other is not.
    const bool green_first = PhaseAt(m.phase, 1, 0) >= 3;
    std::uint16_t* const near = out.channel[NearChannel(m.phase)];
    std::uint16_t* const far = out.channel[2 - NearChannel(m.phase)];
    const __m256i green = _mm256_set1_epi32(green_first ? 0x0000FFFF : static_cast<int>(0xFFFF0000));
    for (; x + kLane < m.w; x += kLane) {
        const Means means(m.above + x, m.row + x, m.below + x);
        const __m256i own = Load(m.row + x);
        Store(near + x, _mm256_blendv_epi8(own, means.row, green));
        Store(out.channel[1] + x, _mm256_blendv_epi8(means.sides, own, green));
        Store(far + x, _mm256_blendv_epi8(means.corners, means.column, green));
    }
    return x;
}

}  // namespace

void DemosaicRow(const MosaicRow& m, const PlanarRow& out) {
    if (!m.above || !m.below || PhaseAt(m.phase, 0, 0) == 0 || m.w < kLane + 2) {
        scalar::DemosaicRow(m, out);
        return;
    }
    const std::size_t end =
        m.below_14_bits ? DemosaicInside<SmallMeans>(m, out, 1) : DemosaicInside<AnyMeans>(m, out, 1);
    scalar::DemosaicColumns(m, 0, 1, out);
    scalar::DemosaicColumns(m, end, m.w, out);
}

namespace {

struct Floats {
    __m256 low, high;  // samples 0-3 and 8-11, 4-7 and 12-15: the order in which packing puts them back
};

Floats Widen(__m256i samples) {
    const __m256i zero = _mm256_setzero_si256();
    return {_mm256_cvtepi32_ps(_mm256_unpacklo_epi16(samples, zero)),
            _mm256_cvtepi32_ps(_mm256_unpackhi_epi16(samples, zero))};
}

__m256i Product(__m256 a, __m256 b, __m256 c, const __m256* row) {
    const __m256 sum = _mm256_add_ps(_mm256_mul_ps(row[0], a), _mm256_mul_ps(row[1], b));
    return _mm256_cvttps_epi32(_mm256_add_ps(sum, _mm256_mul_ps(row[2], c)));
}

// Sixteen pixels' samples, a vector per channel.
struct Block {
    __m256i c0, c1, c2;
};

// What becomes of sixteen pixels: the three ways of writing them, each with whatever it needs in registers. A block at
// column x is written by Write(block, x); kBeyond pixels behind it must be there too.
struct ToPlanes {
    PlanarRow out;
    static constexpr std::size_t kBeyond = 0;

    ZEL_INLINE void Write(const Block& block, std::size_t x) const {
        Store(out.channel[0] + x, block.c0);
        Store(out.channel[1] + x, block.c1);
        Store(out.channel[2] + x, block.c2);
    }
};

// The shuffle that puts samples of channel `channel` where the 16 bytes number `piece` of eight interleaved pixels have
// them, and zeros elsewhere.
__m256i PieceShuffle(int piece, int channel) {
    alignas(16) std::uint8_t pick[16];
    for (int place = 0; place < 8; ++place) {
        const int at = 8 * piece + place;
        const bool here = at % 3 == channel;
        pick[2 * place] = here ? static_cast<std::uint8_t>(at / 3 * 2) : 0x80;
        pick[2 * place + 1] = here ? static_cast<std::uint8_t>(at / 3 * 2 + 1) : 0x80;
    }
    return _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(pick)));
}

struct To16 {
    std::uint16_t* out;
    __m256i from[3][3];  // by piece and channel
    static constexpr std::size_t kBeyond = 0;

    explicit To16(void* to) : out(static_cast<std::uint16_t*>(to)) {
        for (int piece = 0; piece < 3; ++piece) {
            for (int channel = 0; channel < 3; ++channel) from[piece][channel] = PieceShuffle(piece, channel);
        }
    }
    // 24 samples of each half make three pieces.
    ZEL_INLINE __m256i Piece(const Block& b, int i) const {
        return _mm256_or_si256(
            _mm256_or_si256(_mm256_shuffle_epi8(b.c0, from[i][0]), _mm256_shuffle_epi8(b.c1, from[i][1])),
            _mm256_shuffle_epi8(b.c2, from[i][2]));
    }
    ZEL_INLINE void Write(const Block& block, std::size_t x) const {
        const __m256i p = Piece(block, 0), q = Piece(block, 1), r = Piece(block, 2);
        std::uint16_t* const to = out + 3 * x;
        Store(to, _mm256_permute2x128_si256(p, q, 0x20));
        Store(to + kLane, _mm256_blend_epi32(p, r, 0x0F));
        Store(to + 2 * kLane, _mm256_permute2x128_si256(q, r, 0x31));
    }
};

Block ClampTo255(const Block& b) {
    const __m256i limit = _mm256_set1_epi16(255);
    return {_mm256_min_epu16(b.c0, limit), _mm256_min_epu16(b.c1, limit), _mm256_min_epu16(b.c2, limit)};
}

// Pixels as 32-bit words: channel 0 at the bottom, 255 on top.
struct To8Padded {
    std::uint8_t* out;
    static constexpr std::size_t kBeyond = 0;

    ZEL_INLINE void Write(const Block& block, std::size_t x) const {
        const Block b = ClampTo255(block);
        const __m256i low = _mm256_or_si256(b.c0, _mm256_slli_epi16(b.c1, 8));
        const __m256i high = _mm256_or_si256(b.c2, _mm256_set1_epi16(static_cast<short>(0xFF00)));
        const __m256i p = _mm256_unpacklo_epi16(low, high), q = _mm256_unpackhi_epi16(low, high);
        Store(out + 4 * x, _mm256_permute2x128_si256(p, q, 0x20));
        Store(out + 4 * x + 32, _mm256_permute2x128_si256(p, q, 0x31));
    }
};

// The same with the fourth bytes squeezed out. Each store of 16 bytes has 12 good ones; the next overwrites the rest.
struct To8 {
    std::uint8_t* out;
    static constexpr std::size_t kBeyond = 2;

    static void Store12(std::uint8_t* to, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), v); }
    ZEL_INLINE void Write(const Block& block, std::size_t x) const {
        const __m256i squeeze =
            _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
        const Block b = ClampTo255(block);
        const __m256i low = _mm256_or_si256(b.c0, _mm256_slli_epi16(b.c1, 8));
        const __m256i p = _mm256_shuffle_epi8(_mm256_unpacklo_epi16(low, b.c2), squeeze);
        const __m256i q = _mm256_shuffle_epi8(_mm256_unpackhi_epi16(low, b.c2), squeeze);
        std::uint8_t* const to = out + 3 * x;
        Store12(to, _mm256_castsi256_si128(p));
        Store12(to + 12, _mm256_castsi256_si128(q));
        Store12(to + 24, _mm256_extracti128_si256(p, 1));
        Store12(to + 36, _mm256_extracti128_si256(q, 1));
    }
};

// The transforms before that: none, or a matrix with or without a table.
struct AsItIs {
    Block Apply(const Block& block) const { return block; }
};

template <class Fetch, bool with_table>
struct ByMatrix {
    __m256 m[9];
    __m256i largest;
    __m128i shift;
    const std::uint16_t* table;

    explicit ByMatrix(const ColorTransform& transform)
        : largest(_mm256_set1_epi16(static_cast<short>(transform.largest))),
          shift(_mm_cvtsi32_si128(static_cast<int>(transform.shift))),
          table(transform.table) {
        for (int i = 0; i < 9; ++i) m[i] = _mm256_set1_ps(transform.matrix[i]);
    }
    ZEL_INLINE __m256i Channel(const Floats& a, const Floats& b, const Floats& c, const __m256* row) const {
        // Packing clamps to 0 ... 65535.
        const __m256i sums =
            _mm256_packus_epi32(Product(a.low, b.low, c.low, row), Product(a.high, b.high, c.high, row));
        __m256i value = _mm256_min_epu16(sums, largest);
        if constexpr (with_table) value = Fetch::Entries(table, value);
        return _mm256_srl_epi16(value, shift);
    }
    ZEL_INLINE Block Apply(const Block& block) const {
        const Floats c0 = Widen(block.c0), c1 = Widen(block.c1), c2 = Widen(block.c2);
        return {Channel(c2, c1, c0, m + 6), Channel(c2, c1, c0, m + 3), Channel(c2, c1, c0, m)};
    }
};

// Returns the first column that is left.
template <class Transform, class Output>
std::size_t Run(const PlanarRow& row, const Transform& transform, const Output& output) {
    std::size_t x = 0;
    for (; x + kLane + Output::kBeyond <= row.w; x += kLane) {
        output.Write(transform.Apply({Load(row.channel[0] + x), Load(row.channel[1] + x), Load(row.channel[2] + x)}),
                     x);
    }
    return x;
}

// Sums beyond 32 bits are left to the scalar reference.
template <class Fetch, class Output>
std::size_t RunMatrix(const PlanarRow& row, const ColorTransform& transform, const Output& output) {
    const bool tame = std::all_of(std::begin(transform.matrix), std::end(transform.matrix),
                                  [](float entry) { return std::fabs(entry) <= kTameEntry; });
    if (!tame) return 0;
    return transform.table ? Run(row, ByMatrix<Fetch, true>(transform), output)
                           : Run(row, ByMatrix<Fetch, false>(transform), output);
}

PlanarRow From(const PlanarRow& row, std::size_t x) {
    return {{row.channel[0] + x, row.channel[1] + x, row.channel[2] + x}, row.w - x};
}

}  // namespace

template <class Fetch>
void TransformRow(const PlanarRow& row, const ColorTransform& transform) {
    scalar::TransformRow(From(row, RunMatrix<Fetch>(row, transform, ToPlanes{row})), transform);
}

void PackRow(const PlanarRow& row, ColorFormat format, void* out) {
    auto* const bytes = static_cast<std::uint8_t*>(out);
    const std::size_t x = format == ColorFormat::k16  ? Run(row, AsItIs(), To16(out))
                          : format == ColorFormat::k8 ? Run(row, AsItIs(), To8{bytes})
                                                      : Run(row, AsItIs(), To8Padded{bytes});
    scalar::PackRow(From(row, x), format, bytes + x * BytesPerPixel(format));
}

template <class Fetch>
void TransformPackRow(const PlanarRow& row, const ColorTransform& transform, ColorFormat format, void* out) {
    auto* const bytes = static_cast<std::uint8_t*>(out);
    const std::size_t x = format == ColorFormat::k16  ? RunMatrix<Fetch>(row, transform, To16(out))
                          : format == ColorFormat::k8 ? RunMatrix<Fetch>(row, transform, To8{bytes})
                                                      : RunMatrix<Fetch>(row, transform, To8Padded{bytes});
    scalar::TransformPackRow(From(row, x), transform, format, bytes + x * BytesPerPixel(format));
}

template <class Fetch>
void MapSamples(std::span<std::uint16_t> samples, const SampleMap& map) {
    const __m256i floor = _mm256_set1_epi16(static_cast<short>(map.floor));
    const __m256i ceiling = _mm256_set1_epi16(static_cast<short>(map.ceiling));
    std::size_t i = 0;
    for (; i + kLane <= samples.size(); i += kLane) {
        std::uint16_t* const at = samples.data() + i;
        Store(at, map.table ? Fetch::Entries(map.table, at, 0xFFFF)
                            : _mm256_min_epu16(_mm256_subs_epu16(Load(at), floor), ceiling));
    }
    scalar::MapSamples(samples.subspan(i), map);
}

template <class Fetch>
void ColorRow(const MosaicRow& mosaic, const ColorSteps& steps, const PlanarRow& scratch, void* out) {
    const auto map = [&](const ChannelMaps& maps) {
        for (unsigned k = 0; k < 3; ++k) MapSamples<Fetch>({scratch.channel[k], scratch.w}, maps[k]);
    };
    DemosaicRow(mosaic, scratch);
    if (!KeepSamples(steps.input)) map(steps.input);
    if (KeepSamples(steps.output)) return TransformPackRow<Fetch>(scratch, steps.transform, steps.format, out);
    TransformRow<Fetch>(scratch, steps.transform);
    map(steps.output);
    PackRow(scratch, steps.format, out);
}

template void TransformRow<Gathers>(const PlanarRow&, const ColorTransform&);
template void TransformRow<Inserts>(const PlanarRow&, const ColorTransform&);
template void TransformPackRow<Gathers>(const PlanarRow&, const ColorTransform&, ColorFormat, void*);
template void TransformPackRow<Inserts>(const PlanarRow&, const ColorTransform&, ColorFormat, void*);
template void MapSamples<Gathers>(std::span<std::uint16_t>, const SampleMap&);
template void MapSamples<Inserts>(std::span<std::uint16_t>, const SampleMap&);
template void ColorRow<Gathers>(const MosaicRow&, const ColorSteps&, const PlanarRow&, void*);
template void ColorRow<Inserts>(const MosaicRow&, const ColorSteps&, const PlanarRow&, void*);

}  // namespace zel::kernels::avx2

ZEL_AVX2_END
