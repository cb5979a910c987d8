// ***  Takes frames for as long as it takes, also when the camera's cable is pulled and put back meanwhile.
//
//     hot_plug [CAMERA [FRAMES]]
#include <stdio.h>
#include <stdlib.h>

#include "zel.h"

// Called on a thread of the interface library, for any camera.
static void ZEL_CALL plugged(const zel_hot_plug_event* event, void* user) {
    (void)user;
    printf("camera %d (serial %s) is %s\n", (int)event->number, event->serial,
           event->connected ? "plugged in" : "unplugged");
    fflush(stdout);
}

// A camera that was switched off has forgotten its settings.
static zel_status start(zel_camera* camera) {
    const zel_status status = zel_camera_set_integer(camera, "EXPOSURE_TIME_US", 10000, NULL);
    return status == ZEL_OK ? zel_camera_start(camera, NULL) : status;
}

// Waits until the link is there, and starts the camera again.
static zel_status restart(zel_camera* camera) {
    zel_camera_event event = {.struct_size = sizeof event};
    zel_status status;
    do {
        status = zel_camera_wait_event(camera, 60000, &event);
        if (status == ZEL_OK && event.kind == ZEL_EVENT_LINK_BACK) return start(camera);
    } while (status == ZEL_OK);
    return status;
}

static int take(zel_camera* camera, int frames) {
    zel_frame* frame;
    int taken = 0;
    if (start(camera) != ZEL_OK) return 1;
    while (taken < frames) {
        const zel_status status = zel_camera_wait(camera, ZEL_WAIT_AUTO, ZEL_ORDER_EVERY, &frame, NULL);
        if (status == ZEL_OK) {
            ++taken;
            zel_frame_release(frame);
        } else if (status == ZEL_STATUS_LINK_LOST || status == ZEL_STATUS_NOT_STARTED) {
            // The second one: it is back already.
            printf("%s\n", zel_error_message());
            if (restart(camera) != ZEL_OK) return 1;
            puts("started again");
        } else {
            return 1;
        }
    }
    printf("%d frames\n", taken);
    return 0;
}

int main(int argc, char** argv) {
    zel_sdk* sdk = NULL;
    zel_camera* camera = NULL;
    int failed = zel_sdk_open(&sdk) != ZEL_OK || zel_sdk_on_hot_plug(sdk, plugged, NULL) != ZEL_OK ||
                 zel_camera_open(sdk, argc > 1 ? argv[1] : NULL, NULL, &camera) != ZEL_OK ||
                 take(camera, argc > 2 ? atoi(argv[2]) : 100);
    if (failed) fprintf(stderr, "hot_plug: %s\n", zel_error_message());
    zel_camera_close(camera);
    zel_sdk_close(sdk);
    return failed;
}
