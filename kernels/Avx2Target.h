// What stands between ZEL_AVX2_BEGIN and ZEL_AVX2_END is compiled for AVX2, and nothing else is: functions of headers
// that come before are shared with code that runs on every processor.
#ifndef KERNELS_AVX2TARGET_H
#define KERNELS_AVX2TARGET_H

#ifdef __clang__
#define ZEL_AVX2_BEGIN _Pragma("clang attribute push(__attribute__((target(\"avx2\"))), apply_to = function)")
#define ZEL_AVX2_END _Pragma("clang attribute pop")
#else
#define ZEL_AVX2_BEGIN _Pragma("GCC push_options") _Pragma("GCC target(\"avx2\")")
#define ZEL_AVX2_END _Pragma("GCC pop_options")
#endif

#endif
