// What stands between ZEL_AVX512_BEGIN and ZEL_AVX512_END is compiled for AVX-512 (F, BW, VBMI), and nothing else is.
#ifndef KERNELS_AVX512TARGET_H
#define KERNELS_AVX512TARGET_H

#ifdef __clang__
#define ZEL_AVX512_BEGIN \
    _Pragma("clang attribute push(__attribute__((target(\"avx512f,avx512bw,avx512vbmi\"))), apply_to = function)")
#define ZEL_AVX512_END _Pragma("clang attribute pop")
#else
#define ZEL_AVX512_BEGIN _Pragma("GCC push_options") _Pragma("GCC target(\"avx512f,avx512bw,avx512vbmi\")")
#define ZEL_AVX512_END _Pragma("GCC pop_options")
#endif

#endif
