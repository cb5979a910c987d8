// A library that another one is loaded for.
#include "ZelPlatform.h"

extern "C" int ZEL_CALL probe_count_call();

ZEL_PLUGIN_EXPORT int ZEL_CALL probe_count_through() { return probe_count_call(); }
