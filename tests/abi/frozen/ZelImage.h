#ifndef ZEL_IMAGE_H
#define ZEL_IMAGE_H

#include "ZelPlatform.h"

class ZelImage {
  public:
    unsigned w;
    unsigned h;
    unsigned bit_depth;
    unsigned bytes_per_pixel;
    unsigned num_pixels;
    unsigned size_in_bytes;

    unsigned x_origin;
    unsigned y_origin;
    unsigned x_pixels;
    unsigned y_pixels;
    unsigned x_bin;
    unsigned y_bin;
    unsigned exposure_time_us;

    unsigned image_number;
    unsigned short* pixels;
    unsigned reserved_image[2];

    ZEL_INTERFACE_DESTRUCTOR(ZelImage)
};

class ZelColorImage : public ZelImage {
  public:
    void* color_pixels;
    unsigned color_size_in_bytes;
    unsigned reserved_color[4];

    unsigned buffer_size;

    unsigned hand_over_delta_ms;
    unsigned hand_over_time_ms;
    unsigned arrival_time_ms;
    unsigned queue_delay_ms;
};

#endif
