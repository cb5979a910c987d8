// **  Saves a color picture that every viewer opens as color.png.
//
//     color_png [CAMERA]
#include <stdio.h>

#include "zel.h"

// The first color camera; null with a message when there is none.
static zel_camera* open_color_camera(zel_sdk* sdk) {
    zel_camera_state state = {.struct_size = sizeof state};
    zel_camera* camera = NULL;
    int32_t count = 0;
    zel_sdk_find_cameras(sdk, &count);
    for (int32_t number = 0; number < count; ++number) {
        if (zel_camera_open_number(sdk, number, NULL, &camera) != ZEL_OK) continue;
        if (zel_camera_get_state(camera, &state) == ZEL_OK && !state.is_monochrome) return camera;
        zel_camera_close(camera);
    }
    fprintf(stderr, "color_png: none of %d cameras has a color filter\n", (int)count);
    return NULL;
}

int main(int argc, char** argv) {
    // Eight bits a channel with the curve of sRGB: what ordinary picture files hold.
    zel_color_options options = {sizeof options, ZEL_COLOR_FORMAT_RGB8, ZEL_COLOR_SPACE_SRGB};
    zel_sdk* sdk = NULL;
    zel_camera* camera = NULL;
    zel_frame* frame = NULL;
    int failed = zel_sdk_open(&sdk) != ZEL_OK;
    if (!failed && argc > 1) zel_camera_open(sdk, argv[1], NULL, &camera);
    if (!failed && argc <= 1) camera = open_color_camera(sdk);
    failed = !camera || zel_camera_set_integer(camera, "EXPOSURE_TIME_US", 30000, NULL) != ZEL_OK ||
             zel_camera_use_color(camera, &options) != ZEL_OK || zel_camera_start(camera, NULL) != ZEL_OK ||
             zel_camera_wait(camera, ZEL_WAIT_AUTO, ZEL_ORDER_EVERY, &frame, NULL) != ZEL_OK ||
             zel_frame_save(frame, "color.png") != ZEL_OK;
    if (failed) {
        fprintf(stderr, "color_png: %s\n", zel_error_message());
    } else {
        puts("color.png is written");
    }
    zel_frame_release(frame);
    zel_camera_close(camera);
    zel_sdk_close(sdk);
    return failed;
}
