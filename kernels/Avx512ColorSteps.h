// What the AVX-512 color kernels do to a block of pixels: demosaicing, tables and the matrix.
#ifndef KERNELS_AVX512COLORSTEPS_H
#define KERNELS_AVX512COLORSTEPS_H

#include <algorithm>
#include <cmath>
#include <iterator>

#include "kernels/Avx512ColorOutput.h"

ZEL_AVX512_BEGIN

namespace zel::kernels::avx512 {

// Truncated means of two and four samples. Small samples are simply added up.
struct SmallMeans {
    __m512i row, column, sides, corners;

    ZEL_INLINE_512 SmallMeans(const std::uint16_t* above, const std::uint16_t* here, const std::uint16_t* below) {
        const __m512i row_sum = _mm512_add_epi16(Load(here - 1), Load(here + 1));
        const __m512i column_sum = _mm512_add_epi16(Load(above), Load(below));
        const __m512i corner_sum = _mm512_add_epi16(_mm512_add_epi16(Load(above - 1), Load(above + 1)),
                                                    _mm512_add_epi16(Load(below - 1), Load(below + 1)));
        row = _mm512_srli_epi16(row_sum, 1);
        column = _mm512_srli_epi16(column_sum, 1);
        sides = _mm512_srli_epi16(_mm512_add_epi16(row_sum, column_sum), 2);
        corners = _mm512_srli_epi16(corner_sum, 2);
    }
};

// The same for all samples, within 16 bits: the mean of two is rounded up by the processor and corrected by the bit
// that was lost; the mean of four is the mean of two means, plus 1 where both had lost a half and theirs is lost too.
struct AnyMeans {
    __m512i row, column, sides, corners;

    ZEL_INLINE_512 AnyMeans(const std::uint16_t* above, const std::uint16_t* here, const std::uint16_t* below) {
        const __m512i left = Load(here - 1), right = Load(here + 1), up = Load(above), down = Load(below);
        row = MeanOf(left, right);
        column = MeanOf(up, down);
        sides = MeanOfMeans(row, column, Lost(left, right), Lost(up, down));
        const __m512i a = Load(above - 1), b = Load(above + 1), c = Load(below - 1), d = Load(below + 1);
        corners = MeanOfMeans(MeanOf(a, b), MeanOf(c, d), Lost(a, b), Lost(c, d));
    }

  private:
    ZEL_INLINE_512 static __m512i Lost(__m512i a, __m512i b) {
        return _mm512_and_si512(_mm512_xor_si512(a, b), Words(1));
    }
    ZEL_INLINE_512 static __m512i MeanOf(__m512i a, __m512i b) {
        return _mm512_sub_epi16(_mm512_avg_epu16(a, b), Lost(a, b));
    }
    ZEL_INLINE_512 static __m512i MeanOfMeans(__m512i p, __m512i q, __m512i p_lost, __m512i q_lost) {
        const __m512i carry = _mm512_and_si512(Lost(p, q), _mm512_and_si512(p_lost, q_lost));
        return _mm512_add_epi16(MeanOf(p, q), carry);
    }
};

// Pixels of a mosaic row with all their neighbours.
struct FromMosaic {
    const MosaicRow& m;
    bool near_is_0 = NearChannel(m.phase) == 0;
    bool green_first = PhaseAt(m.phase, 0, 0) >= 3;

    ZEL_INLINE_512 Block Read(std::size_t x) const { return m.below_14_bits ? Read<SmallMeans>(x) : Read<AnyMeans>(x); }
    template <class Means>
    ZEL_INLINE_512 Block Read(std::size_t x) const {
        const Means means(m.above + x, m.row + x, m.below + x);
        const __m512i own = Load(m.row + x);
        const __mmask32 green = green_first == (x % 2 == 0) ? 0x55555555u : 0xAAAAAAAAu;
        const __m512i near = _mm512_mask_mov_epi16(own, green, means.row);
        const __m512i middle = _mm512_mask_mov_epi16(means.sides, green, own);
        const __m512i far = _mm512_mask_mov_epi16(means.corners, green, means.column);
        return near_is_0 ? Block{near, middle, far} : Block{far, middle, near};
    }
};

struct FromPlanes {
    const PlanarRow& row;

    ZEL_INLINE_512 Block Read(std::size_t x) const {
        return {Load(row.channel[0] + x), Load(row.channel[1] + x), Load(row.channel[2] + x)};
    }
};

// A table's entries at 32 indices.
struct Gathers512 {
    ZEL_INLINE_512 static __m512i Entries(const std::uint16_t* table, __m512i at) {
        const __m512i zero = _mm512_setzero_si512(), low_half = _mm512_set1_epi32(0xFFFF);
        const __m512i low = _mm512_i32gather_epi32(_mm512_unpacklo_epi16(at, zero), table, 2);
        const __m512i high = _mm512_i32gather_epi32(_mm512_unpackhi_epi16(at, zero), table, 2);
        return _mm512_packus_epi32(_mm512_and_si512(low, low_half), _mm512_and_si512(high, low_half));
    }
};

struct Inserts512 {
    ZEL_INLINE_512 static __m512i Entries(const std::uint16_t* table, __m512i at) {
        std::uint64_t indices[8];
        Store(indices, at);
        __m512i entries = _mm512_castsi128_si512(Eight(table, indices));
        entries = _mm512_inserti32x4(entries, Eight(table, indices + 2), 1);
        entries = _mm512_inserti32x4(entries, Eight(table, indices + 4), 2);
        return _mm512_inserti32x4(entries, Eight(table, indices + 6), 3);
    }

  private:
    // Four indices are loaded at a time.
    ZEL_INLINE_512 static __m128i Eight(const std::uint16_t* table, const std::uint64_t* at) {
        __m128i v = _mm_cvtsi32_si128(table[at[0] & 0xFFFF]);
        v = _mm_insert_epi16(v, table[at[0] >> 16 & 0xFFFF], 1);
        v = _mm_insert_epi16(v, table[at[0] >> 32 & 0xFFFF], 2);
        v = _mm_insert_epi16(v, table[at[0] >> 48], 3);
        v = _mm_insert_epi16(v, table[at[1] & 0xFFFF], 4);
        v = _mm_insert_epi16(v, table[at[1] >> 16 & 0xFFFF], 5);
        v = _mm_insert_epi16(v, table[at[1] >> 32 & 0xFFFF], 6);
        return _mm_insert_epi16(v, table[at[1] >> 48], 7);
    }
};

// The maps of three channels; nothing is done where they keep the samples.
template <class Fetch>
struct Maps {
    const ChannelMaps& maps;
    bool there = !KeepSamples(maps);

    ZEL_INLINE_512 void Apply(Block& b) const {
        if (!there) return;
        b = {Channel(0, b.c0), Channel(1, b.c1), Channel(2, b.c2)};
    }
    ZEL_INLINE_512 __m512i Channel(std::size_t k, __m512i v) const {
        if (maps[k].table) return Fetch::Entries(maps[k].table, v);
        return _mm512_min_epu16(_mm512_subs_epu16(v, Words(maps[k].floor)), Words(maps[k].ceiling));
    }
};

// Whether the sums of a pixel stay within 32 bits, and there is no table in between.
inline bool InVectors(const ColorTransform& transform) {
    return !transform.table && std::all_of(std::begin(transform.matrix), std::end(transform.matrix),
                                           [](float entry) { return std::fabs(entry) <= kTameEntry; });
}

// The matrix, clamping and the shift.
struct ByMatrix {
    __m512 m[9];
    __m512i largest;
    __m128i shift;
    bool identity;  // samples are whole numbers, which such a product keeps

    ZEL_INLINE_512 explicit ByMatrix(const ColorTransform& transform)
        : largest(Words(transform.largest)), shift(_mm_cvtsi32_si128(static_cast<int>(transform.shift))) {
        constexpr float kOne[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
        identity = std::equal(std::begin(kOne), std::end(kOne), std::begin(transform.matrix));
        for (int i = 0; i < 9; ++i) m[i] = _mm512_set1_ps(transform.matrix[i]);
    }
    ZEL_INLINE_512 void Apply(Block& b) const {
        if (!identity) {
            // Samples 0-3, 8-11 and so on, and the others: the order in which packing puts them back.
            const __m512 a0 = Low(b.c2), a1 = Low(b.c1), a2 = Low(b.c0);
            const __m512 b0 = High(b.c2), b1 = High(b.c1), b2 = High(b.c0);
            b.c2 = _mm512_packus_epi32(Product(a0, a1, a2, m), Product(b0, b1, b2, m));
            b.c1 = _mm512_packus_epi32(Product(a0, a1, a2, m + 3), Product(b0, b1, b2, m + 3));
            b.c0 = _mm512_packus_epi32(Product(a0, a1, a2, m + 6), Product(b0, b1, b2, m + 6));
        }
        b = {Clamped(b.c0), Clamped(b.c1), Clamped(b.c2)};
    }

  private:
    ZEL_INLINE_512 static __m512 Low(__m512i v) {
        return _mm512_cvtepi32_ps(_mm512_unpacklo_epi16(v, _mm512_setzero_si512()));
    }
    ZEL_INLINE_512 static __m512 High(__m512i v) {
        return _mm512_cvtepi32_ps(_mm512_unpackhi_epi16(v, _mm512_setzero_si512()));
    }
    ZEL_INLINE_512 static __m512i Product(__m512 a, __m512 b, __m512 c, const __m512* row) {
        const __m512 sum = _mm512_add_ps(_mm512_mul_ps(row[0], a), _mm512_mul_ps(row[1], b));
        return _mm512_cvttps_epi32(_mm512_add_ps(sum, _mm512_mul_ps(row[2], c)));
    }
    ZEL_INLINE_512 __m512i Clamped(__m512i v) const { return _mm512_srl_epi16(_mm512_min_epu16(v, largest), shift); }
};

}  // namespace zel::kernels::avx512

ZEL_AVX512_END

#endif
