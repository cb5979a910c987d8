// Small pieces that the AVX2 kernels share.
#ifndef KERNELS_AVX2VECTORS_H
#define KERNELS_AVX2VECTORS_H

#include <immintrin.h>

#include <cstddef>

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

}  // namespace zel::kernels::avx2

#pragma GCC pop_options

#endif
