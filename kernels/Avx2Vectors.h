// Small pieces that the AVX2 kernels share.
#ifndef KERNELS_AVX2VECTORS_H
#define KERNELS_AVX2VECTORS_H

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#pragma GCC push_options
#pragma GCC target("avx2")

namespace zel::kernels::avx2 {

inline constexpr std::size_t kLane = 16;  // 16-bit samples in a vector

static inline __m256i Load(const void* at) { return _mm256_loadu_si256(static_cast<const __m256i*>(at)); }
static inline void Store(void* at, __m256i value) { _mm256_storeu_si256(static_cast<__m256i*>(at), value); }

// Two vectors of eight 32-bit values, clamped to 0 ... 65535, as sixteen 16-bit values in order.
static inline __m256i Narrow(__m256i low, __m256i high) {
    return _mm256_permute4x64_epi64(_mm256_packus_epi32(low, high), _MM_SHUFFLE(3, 1, 2, 0));
}

// The table's entries at sixteen indices, two ways: by gathers, which fetch four bytes at each entry, and one by one,
// which is faster on processors that take their gathers apart.
struct Gathers {
    __attribute__((always_inline)) static inline __m256i Entries(const std::uint16_t* table, __m256i at) {
        const int* const entries = reinterpret_cast<const int*>(table);
        const __m256i zero = _mm256_setzero_si256();
        const __m256i low_half = _mm256_set1_epi32(0xFFFF);
        const __m256i low = _mm256_i32gather_epi32(entries, _mm256_unpacklo_epi16(at, zero), 2);
        const __m256i high = _mm256_i32gather_epi32(entries, _mm256_unpackhi_epi16(at, zero), 2);
        return _mm256_packus_epi32(_mm256_and_si256(low, low_half), _mm256_and_si256(high, low_half));
    }
};

struct Inserts {
    __attribute__((always_inline)) static inline __m256i Entries(const std::uint16_t* table, __m256i at) {
        alignas(32) std::uint32_t pairs[8];
        _mm256_store_si256(reinterpret_cast<__m256i*>(pairs), at);
        return _mm256_inserti128_si256(_mm256_castsi128_si256(Eight(table, pairs)), Eight(table, pairs + 4), 1);
    }

  private:
    __attribute__((always_inline)) static inline __m128i Eight(const std::uint16_t* table, const std::uint32_t* pairs) {
        const auto low = [&](int i) { return table[pairs[i] & 0xFFFF]; };
        const auto high = [&](int i) { return table[pairs[i] >> 16]; };
        __m128i v = _mm_cvtsi32_si128(low(0));
        v = _mm_insert_epi16(v, high(0), 1);
        v = _mm_insert_epi16(v, low(1), 2);
        v = _mm_insert_epi16(v, high(1), 3);
        v = _mm_insert_epi16(v, low(2), 4);
        v = _mm_insert_epi16(v, high(2), 5);
        v = _mm_insert_epi16(v, low(3), 6);
        return _mm_insert_epi16(v, high(3), 7);
    }
};

}  // namespace zel::kernels::avx2

#pragma GCC pop_options

#endif
