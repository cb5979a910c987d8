// The SDK's own view of an image record. Made by RecordSet alone.
#ifndef IMAGE_ZELIMAGEINTERNAL_H
#define IMAGE_ZELIMAGEINTERNAL_H

#include "image/PixelMemory.h"
#include "include/ZelImage.h"

class alignas(8) ZelImageInternal : public ZelColorImage {
  public:
    ZelImageInternal();
    ZEL_IMPLEMENTATION_DESTRUCTOR(ZelImageInternal)
    ~ZelImageInternal();

    unsigned post_processed;     // 1 once the frame in `pixels` has been post-processed
    zel::PlaneSet color_planes;  // filled by the color pipeline when somebody looks at them
    ZelImageInternal* next;      // link to the next record of the pool list that holds this one
};

namespace zel {
// Room for any format of the color picture of what a record's `pixels` can hold.
inline std::size_t PictureBytes(const ZelImageInternal& image) { return std::size_t{3} * image.buffer_size; }
}  // namespace zel

static_assert(sizeof(void*) != 4 || sizeof(ZelImageInternal) == 144,
              "a record's layout is fixed on the 32-bit product");

#endif
