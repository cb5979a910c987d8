// A library with one export and a counter that starts anew with every load.
#include "ZelPlatform.h"

namespace {
int s_Calls = 0;
}

ZEL_PLUGIN_EXPORT int ZEL_CALL probe_count_call() { return ++s_Calls; }
