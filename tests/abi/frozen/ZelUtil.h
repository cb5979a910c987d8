#ifndef ZEL_UTIL_H
#define ZEL_UTIL_H

#include "ZelPlatform.h"

class ZelImage;

class ZelUtil {
  public:
    virtual bool SaveTIFF(const char* file_name, ZelImage* image) = 0;

    virtual bool SavePNG(const char* file_name, ZelImage* image) = 0;

    ZEL_INTERFACE_DESTRUCTOR(ZelUtil)
};

#endif
