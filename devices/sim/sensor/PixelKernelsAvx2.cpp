// GCC 12 takes the undefined values of its own header for uninitialized ones.
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>

#include "devices/sim/sensor/PixelKernels.h"
#include "kernels/Avx2Target.h"

#define ZEL_INLINE __attribute__((always_inline)) inline

// Table entries are fetched one by one: gathers are slower than that.

ZEL_AVX2_BEGIN

namespace zel::sim::avx2 {
namespace {

constexpr std::size_t kLane = 8;

// Pairs (mean, sigma) of four pixels.
ZEL_INLINE __m256 FourPairs(const SignalTable::Signal* signals, const std::uint16_t* levels) {
    const auto* const pair0 = reinterpret_cast<const __m64*>(signals + levels[0]);
    const auto* const pair1 = reinterpret_cast<const __m64*>(signals + levels[1]);
    const auto* const pair2 = reinterpret_cast<const __m64*>(signals + levels[2]);
    const auto* const pair3 = reinterpret_cast<const __m64*>(signals + levels[3]);
    const __m128 low = _mm_loadh_pi(_mm_loadl_pi(_mm_setzero_ps(), pair0), pair1);
    const __m128 high = _mm_loadh_pi(_mm_loadl_pi(_mm_setzero_ps(), pair2), pair3);
    return _mm256_insertf128_ps(_mm256_castps128_ps256(low), high, 1);
}

// Pixels in the order 0 1 4 5 2 3 6 7 that taking pairs apart leaves, back in their own.
ZEL_INLINE __m256 InOrder(__m256 values) {
    return _mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(values), _MM_SHUFFLE(3, 1, 2, 0)));
}

ZEL_INLINE void Lane(const PixelSettings& settings, const PixelRun& run, std::size_t i) {
    const __m256 low = FourPairs(settings.signals, run.levels + i);
    const __m256 high = FourPairs(settings.signals, run.levels + i + 4);
    const __m256 mean = InOrder(_mm256_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)));
    const __m256 sigma = InOrder(_mm256_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1)));
    const __m256 shot = _mm256_mul_ps(sigma, _mm256_loadu_ps(run.shot + i));
    const __m256 charge = _mm256_min_ps(_mm256_add_ps(mean, shot), _mm256_set1_ps(settings.full_well));
    const __m256 read = _mm256_mul_ps(_mm256_set1_ps(settings.read_noise), _mm256_loadu_ps(run.read + i));
    const __m256 counts = _mm256_add_ps(_mm256_add_ps(charge, read), _mm256_set1_ps(settings.offset));
    const __m256 cut = _mm256_min_ps(_mm256_max_ps(counts, _mm256_setzero_ps()), _mm256_set1_ps(settings.ceiling));
    const __m256i samples = _mm256_cvttps_epi32(cut);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(run.out + i),
                     _mm_packus_epi32(_mm256_castsi256_si128(samples), _mm256_extracti128_si256(samples, 1)));
    if (!settings.map.entries) return;
    for (std::size_t k = i; k < i + kLane; ++k) run.out[k] = settings.map.entries[run.out[k]];
}

}  // namespace

void RenderPixels(const PixelSettings& wanted, const PixelRun& run) {
    const PixelSettings settings = wanted;
    std::size_t i = 0;
    for (; i + kLane <= run.count; i += kLane) Lane(settings, run, i);
    RenderPixelsPlain(settings, {run.levels + i, run.shot + i, run.read + i, run.out + i, run.count - i});
}

}  // namespace zel::sim::avx2

ZEL_AVX2_END
