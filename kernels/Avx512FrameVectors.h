// Small pieces that the AVX-512 frame kernels share.
#ifndef KERNELS_AVX512FRAMEVECTORS_H
#define KERNELS_AVX512FRAMEVECTORS_H

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "kernels/Avx512Target.h"

ZEL_AVX512_BEGIN

namespace zel::kernels::avx512 {

inline constexpr std::size_t kLane = 32;  // 16-bit samples in a vector

static inline __m512i Load(const void* at) { return _mm512_loadu_si512(at); }
static inline void Store(void* at, __m512i value) { _mm512_storeu_si512(at, value); }
static inline __m512i Words(int value) { return _mm512_set1_epi16(static_cast<short>(value)); }

// The first `count` of a vector's words or bytes; what lies behind them is neither read nor written.
static inline __mmask32 FirstWords(std::size_t count) {
    return count >= 32 ? ~__mmask32{0} : static_cast<__mmask32>((1u << count) - 1);
}
static inline __mmask64 FirstBytes(std::size_t count) {
    return count >= 64 ? ~__mmask64{0} : static_cast<__mmask64>((std::uint64_t{1} << count) - 1);
}

// Two vectors of sixteen 32-bit values, clamped to 0 ... 65535, as 32 16-bit values in order.
static inline __m512i Narrow(__m512i low, __m512i high) {
    const __m512i order = _mm512_set_epi64(7, 5, 3, 1, 6, 4, 2, 0);
    return _mm512_permutexvar_epi64(order, _mm512_packus_epi32(low, high));
}

}  // namespace zel::kernels::avx512

ZEL_AVX512_END

#endif
