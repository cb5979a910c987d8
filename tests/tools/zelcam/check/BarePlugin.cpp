// A plug-in that lacks two of the three exports that it must have.
#include "include/ZelPlatform.h"

ZEL_PLUGIN_EXPORT int ZEL_CALL get_num_cameras() { return 1; }
