#include "image/ZelImageInternal.h"

ZelImageInternal::ZelImageInternal() {
    w = h = bit_depth = bytes_per_pixel = num_pixels = size_in_bytes = 0;
    x_origin = y_origin = x_pixels = y_pixels = x_bin = y_bin = exposure_time_us = 0;
    image_number = 0;
    pixels = nullptr;
    for (unsigned& word : reserved_image) word = 0;

    color_pixels = nullptr;
    color_size_in_bytes = 0;
    for (unsigned& word : reserved_color) word = 0;
    buffer_size = 0;
    hand_over_delta_ms = hand_over_time_ms = arrival_time_ms = queue_delay_ms = 0;

    post_processed = 0;
    color_planes = {};
    next = nullptr;
}

ZelImageInternal::~ZelImageInternal() {
    zel::FreePixels(pixels);
    zel::FreePixels(color_pixels);
    color_planes.Resize(0);
}
