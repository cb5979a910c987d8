// Image records: one camera frame with its geometry, pixels and time stamps.
//
// Records belong to the camera's pool. An application gets one from ZelCamera::GetPendingImage() or
// GetLastPendingImage() and gives it back with FreeImage(); it never creates or deletes one. Every record handed out
// may be viewed as a ZelColorImage: static_cast<ZelColorImage*>(image). Records carry no run-time type: dynamic_cast
// and delete must not be used on them.
#ifndef ZEL_IMAGE_H
#define ZEL_IMAGE_H

#include "ZelPlatform.h"

class ZelImage {
  public:
    unsigned w;                // width in pixels of the data now in `pixels`
    unsigned h;                // height in pixels
    unsigned bit_depth;        // significant bits per sample; the largest legal value is 2^bit_depth - 1
    unsigned bytes_per_pixel;  // bytes per stored sample: 2
    unsigned num_pixels;       // w * h of the frame as acquired (Camera Link and USB keep it when a region is cut out)
    unsigned size_in_bytes;    // num_pixels * bytes_per_pixel

    // The acquisition settings that were in force when the frame was taken. Region and binning are those of the start;
    // the exposure time, which can be changed meanwhile, is the one last written to the camera or read from it when the
    // frame came in.
    unsigned x_origin;  // region of interest, in sensor pixels
    unsigned y_origin;
    unsigned x_pixels;
    unsigned y_pixels;
    unsigned x_bin;  // binning factors
    unsigned y_bin;
    unsigned exposure_time_us;  // exposure time in microseconds

    unsigned image_number;   // number of the frame since the acquisition was started
    unsigned short* pixels;  // w * h samples, row after row, no padding
    unsigned reserved_image[2];

    ZEL_INTERFACE_DESTRUCTOR(ZelImage)
};

class ZelColorImage : public ZelImage {
  public:
    // The color picture, channels blue, green, red (and 255) interleaved (ZelColorCamera). Null when the record never
    // had one; an earlier frame's when the size is 0. Like `num_pixels` the size is that of the full frame where a
    // region was cut out on Camera Link and USB; the picture is the first w * h pixels.
    void* color_pixels;
    unsigned color_size_in_bytes;
    unsigned reserved_color[4];

    unsigned buffer_size;  // size in bytes of the memory behind `pixels`

    // Milliseconds of the system's millisecond clock (on Windows timeGetTime, elsewhere the monotonic clock), modulo
    // 2^32.
    unsigned hand_over_delta_ms;  // difference of two clock reads at hand-over, in practice 0
    unsigned hand_over_time_ms;   // when the record was handed over to the application
    unsigned arrival_time_ms;     // when the complete frame arrived from the camera
    unsigned queue_delay_ms;      // hand_over_time_ms - arrival_time_ms
};

#endif
