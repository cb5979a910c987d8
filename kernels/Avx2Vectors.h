// Small pieces that the AVX2 kernels share.
#ifndef KERNELS_AVX2VECTORS_H
#define KERNELS_AVX2VECTORS_H

#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kernels/Avx2Target.h"

// Keeps constants in registers across what would be calls in the loops.
#define ZEL_INLINE __attribute__((always_inline)) inline

ZEL_AVX2_BEGIN

namespace zel::kernels::avx2 {

inline constexpr std::size_t kLane = 16;  // 16-bit samples in a vector

static inline __m256i Load(const void* at) { return _mm256_loadu_si256(static_cast<const __m256i*>(at)); }
static inline void Store(void* at, __m256i value) { _mm256_storeu_si256(static_cast<__m256i*>(at), value); }

// Two vectors of eight 32-bit values, clamped to 0 ... 65535, as sixteen 16-bit values in order.
static inline __m256i Narrow(__m256i low, __m256i high) {
    return _mm256_permute4x64_epi64(_mm256_packus_epi32(low, high), _MM_SHUFFLE(3, 1, 2, 0));
}

// A table's entries at sixteen indices, two ways: by gathers, which fetch four bytes at each entry, and one by one,
// which is faster on processors that take their gathers apart. Indices come in a vector, or from memory with a mask.
struct Gathers {
    ZEL_INLINE static __m256i Entries(const std::uint16_t* table, __m256i at) {
        const int* const entries = reinterpret_cast<const int*>(table);
        const __m256i zero = _mm256_setzero_si256();
        const __m256i low_half = _mm256_set1_epi32(0xFFFF);
        const __m256i low = _mm256_i32gather_epi32(entries, _mm256_unpacklo_epi16(at, zero), 2);
        const __m256i high = _mm256_i32gather_epi32(entries, _mm256_unpackhi_epi16(at, zero), 2);
        return _mm256_packus_epi32(_mm256_and_si256(low, low_half), _mm256_and_si256(high, low_half));
    }
    ZEL_INLINE static __m256i Entries(const std::uint16_t* table, const std::uint16_t* at, std::uint16_t mask) {
        return Entries(table, _mm256_and_si256(Load(at), _mm256_set1_epi16(static_cast<short>(mask))));
    }
};

struct Inserts {
    ZEL_INLINE static __m256i Entries(const std::uint16_t* table, __m256i at) {
        alignas(32) std::uint16_t indices[kLane];
        _mm256_store_si256(reinterpret_cast<__m256i*>(indices), at);
        return Entries(table, indices, 0xFFFF);
    }
    ZEL_INLINE static __m256i Entries(const std::uint16_t* table, const std::uint16_t* at, std::uint16_t mask) {
        const std::uint32_t pair_mask = mask * 0x00010001u;
        return _mm256_inserti128_si256(_mm256_castsi128_si256(Eight(table, at, pair_mask)),
                                       Eight(table, at + 8, pair_mask), 1);
    }

  private:
    // Two indices are loaded at a time.
    ZEL_INLINE static __m128i Eight(const std::uint16_t* table, const std::uint16_t* at, std::uint32_t mask) {
        std::uint32_t pairs[4];
        std::memcpy(pairs, at, sizeof pairs);
        for (std::uint32_t& pair : pairs) pair &= mask;
        __m128i v = _mm_setzero_si128();
        v = _mm_insert_epi16(v, table[pairs[0] & 0xFFFF], 0);
        v = _mm_insert_epi16(v, table[pairs[0] >> 16], 1);
        v = _mm_insert_epi16(v, table[pairs[1] & 0xFFFF], 2);
        v = _mm_insert_epi16(v, table[pairs[1] >> 16], 3);
        v = _mm_insert_epi16(v, table[pairs[2] & 0xFFFF], 4);
        v = _mm_insert_epi16(v, table[pairs[2] >> 16], 5);
        v = _mm_insert_epi16(v, table[pairs[3] & 0xFFFF], 6);
        return _mm_insert_epi16(v, table[pairs[3] >> 16], 7);
    }
};

}  // namespace zel::kernels::avx2

ZEL_AVX2_END

#endif
