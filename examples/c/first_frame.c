// *  Takes one frame with the first camera and saves it as first_frame.tif.
#include <stdio.h>
#include <stdlib.h>

#include "zel.h"

// Ends the program with the reason when a call did not succeed.
static void check(zel_status status) {
    if (status == ZEL_OK) return;
    fprintf(stderr, "%s\n", zel_error_message());
    exit(1);
}

int main(void) {
    zel_sdk* sdk;
    zel_camera* camera;
    zel_frame* frame;
    zel_frame_info info = {.struct_size = sizeof info};
    check(zel_sdk_open(&sdk));
    check(zel_camera_open(sdk, NULL, NULL, &camera));
    check(zel_camera_set_integer(camera, "EXPOSURE_TIME_US", 20000, NULL));
    check(zel_camera_start(camera, NULL));
    check(zel_camera_wait(camera, ZEL_WAIT_AUTO, ZEL_ORDER_EVERY, &frame, &info));
    check(zel_frame_save(frame, "first_frame.tif"));
    printf("first_frame.tif: %u x %u pixels of %u bits\n", info.width, info.height, info.bits);
    zel_frame_release(frame);
    zel_camera_close(camera);
    return zel_sdk_close(sdk);
}
