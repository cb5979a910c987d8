// The image file writer behind ZelUtil.
#ifndef UTIL_ZELUTILIMPL_H
#define UTIL_ZELUTILIMPL_H

#include "include/ZelUtil.h"

namespace zel {

// No state of its own: its operations may run on any thread.
class ZelUtilImpl final : public ZelUtil {
  public:
    bool SaveTIFF(const char* file_name, ZelImage* image) override;
    bool SavePNG(const char* file_name, ZelImage* image) override;

    ZEL_IMPLEMENTATION_DESTRUCTOR(ZelUtilImpl)
};

// The one object of the process.
ZelUtil* UtilInstance();

}  // namespace zel

#endif
