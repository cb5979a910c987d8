/// @file
/// Image records: one camera frame with its geometry, pixels and time stamps.
#ifndef ZEL_IMAGE_H
#define ZEL_IMAGE_H

#include "ZelPlatform.h"

/// One frame: its geometry, the settings it was taken with, and its pixels.
///
/// Records belong to the camera's pool. An application gets one from ZelCamera::GetPendingImage() or
/// GetLastPendingImage() and gives it back with FreeImage(); it never creates or deletes one. Every record handed out
/// may be viewed as a ZelColorImage: static_cast<ZelColorImage*>(image). Records carry no run-time type: dynamic_cast
/// and delete must not be used on them.
///
/// A record is plain memory without a lock: between hand-over and FreeImage() nobody but the application touches it.
class ZelImage {
  public:
    unsigned w;                ///< width in pixels of the data now in `pixels`
    unsigned h;                ///< height in pixels
    unsigned bit_depth;        ///< significant bits per sample; the largest legal value is 2^bit_depth - 1
    unsigned bytes_per_pixel;  ///< bytes per stored sample: 2
    unsigned num_pixels;     ///< w * h of the frame as acquired (Camera Link and USB keep it when a region is cut out)
    unsigned size_in_bytes;  ///< num_pixels * bytes_per_pixel

    // The acquisition settings that were in force when the frame was taken. Region and binning are those of the start.
    unsigned x_origin;          ///< left edge of the region of interest, in sensor pixels; of the start, like the next
    unsigned y_origin;          ///< top edge of the region, in sensor pixels
    unsigned x_pixels;          ///< width of the region, in sensor pixels
    unsigned y_pixels;          ///< height of the region, in sensor pixels
    unsigned x_bin;             ///< horizontal binning factor
    unsigned y_bin;             ///< vertical binning factor
    unsigned exposure_time_us;  ///< exposure time in microseconds: the one last written to the camera or read from it
                                ///< when the frame came in

    unsigned image_number;       ///< number of the frame since the acquisition was started; a hole is a lost frame
    unsigned short* pixels;      ///< w * h samples, row after row, no padding
    unsigned reserved_image[2];  ///< the library's own

    ZEL_INTERFACE_DESTRUCTOR(ZelImage)
};

/// The same record with its color picture and its time stamps.
class ZelColorImage : public ZelImage {
  public:
    /// The color picture, channels blue, green, red (and 255) interleaved (ZelColorCamera). Null when the record never
    /// had one; an earlier frame's when the size is 0. Like `num_pixels` the size is that of the full frame where a
    /// region was cut out on Camera Link and USB; the picture is the first w * h pixels.
    void* color_pixels;
    unsigned color_size_in_bytes;  ///< size of the color picture in bytes; 0: this frame has none
    unsigned reserved_color[4];    ///< the library's own

    unsigned buffer_size;  ///< size in bytes of the memory behind `pixels`

    unsigned hand_over_delta_ms;  ///< difference of two clock reads at hand-over, in practice 0
    unsigned hand_over_time_ms;   ///< when the record was handed over to the application: milliseconds of the system's
                                  ///< clock (on Windows timeGetTime, elsewhere the monotonic clock), modulo 2^32
    unsigned arrival_time_ms;     ///< when the complete frame arrived from the camera, by the same clock
    unsigned queue_delay_ms;      ///< hand_over_time_ms - arrival_time_ms
};

#endif
