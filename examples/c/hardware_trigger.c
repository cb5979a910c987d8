// **  Takes a sequence in which a signal at the camera's trigger input starts each frame.
//
//     hardware_trigger [CAMERA [FRAMES]]
#include <stdio.h>
#include <stdlib.h>

#include "zel.h"

static int take(zel_camera* camera, int frames) {
    zel_start_options options = {sizeof options, frames, ZEL_TRIGGER_HARDWARE};
    zel_frame_info info = {.struct_size = sizeof info};
    zel_frame* frame;
    uint32_t first_ms = 0;
    // Input 1, active high; the exposure begins with the edge.
    if (zel_camera_set_integer(camera, "HW_TRIG_SOURCE", 1, NULL) != ZEL_OK ||
        zel_camera_set_integer(camera, "HW_TRIG_POLARITY", 0, NULL) != ZEL_OK ||
        zel_camera_set_integer(camera, "EXPOSURE_TIME_US", 1000, NULL) != ZEL_OK ||
        zel_camera_start(camera, &options) != ZEL_OK) {
        return 1;
    }
    for (int taken = 0; taken < frames;) {
        switch (zel_camera_wait(camera, 2000, ZEL_ORDER_EVERY, &frame, &info)) {
            case ZEL_OK:
                if (taken++ == 0) first_ms = info.arrival_ms;
                printf("frame %u, %u ms after the first\n", info.number, info.arrival_ms - first_ms);
                zel_frame_release(frame);
                break;
            case ZEL_STATUS_WAITS_FOR_HARDWARE:
                // No pulse for two seconds is no fault: go on waiting.
                printf("%s\n", zel_error_message());
                break;
            default:
                return 1;
        }
    }
    return 0;
}

int main(int argc, char** argv) {
    zel_sdk* sdk = NULL;
    zel_camera* camera = NULL;
    int failed = zel_sdk_open(&sdk) != ZEL_OK ||
                 zel_camera_open(sdk, argc > 1 ? argv[1] : NULL, NULL, &camera) != ZEL_OK ||
                 take(camera, argc > 2 ? atoi(argv[2]) : 3);
    if (failed) fprintf(stderr, "hardware_trigger: %s\n", zel_error_message());
    zel_camera_close(camera);
    zel_sdk_close(sdk);
    return failed;
}
