// A logging library that falls short in one way, chosen when it is built. It counts the calls that reach it; the
// counts start anew when it is loaded again.
#include "ZelPlatform.h"

namespace {
int s_Gets = 0, s_Lines = 0, s_Frees = 0;
}

#if !defined(ZEL_VARIANT_no_get)
ZEL_PLUGIN_EXPORT void* ZEL_CALL zel_get_log(const char*, const char*) {
    ++s_Gets;
#if defined(ZEL_VARIANT_refusing)
    return nullptr;
#else
    return &s_Gets;
#endif
}
#endif

#if !defined(ZEL_VARIANT_no_log)
ZEL_PLUGIN_EXPORT int ZEL_CALL zel_log(void*, int, const char*, int, const char*, const char*) {
    ++s_Lines;
#if defined(ZEL_VARIANT_failing)
    return 7;
#else
    return 0;
#endif
}
#endif

#if !defined(ZEL_VARIANT_no_free)
ZEL_PLUGIN_EXPORT void ZEL_CALL zel_free_log(const char*, const char*) { ++s_Frees; }
#endif

// Gets, lines and frees so far.
ZEL_PLUGIN_EXPORT void ZEL_CALL variant_counts(int* counts) {
    counts[0] = s_Gets;
    counts[1] = s_Lines;
    counts[2] = s_Frees;
}
