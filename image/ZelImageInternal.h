// The SDK's own view of an image record. Made by ImageManager alone.
#ifndef IMAGE_ZELIMAGEINTERNAL_H
#define IMAGE_ZELIMAGEINTERNAL_H

#include "image/PixelMemory.h"
#include "include/ZelImage.h"

class alignas(8) ZelImageInternal : public ZelColorImage {
  public:
    ZelImageInternal();
#if defined(_WIN32)
    ZEL_IMPLEMENTATION_DESTRUCTOR(ZelImageInternal)
    ~ZelImageInternal();
#else
    ~ZelImageInternal() override;
#endif

    unsigned post_processed;     // 1 once the frame in `pixels` has been post-processed
    zel::PlaneSet color_planes;  // filled by the color pipeline when somebody looks at them
    ZelImageInternal* next;      // link to the next record of the pool list that holds this one
};

#if defined(_WIN32) && !defined(_WIN64)
static_assert(sizeof(ZelImageInternal) == 144, "the size of a record is part of the pool's memory arithmetic");
#endif

#endif
