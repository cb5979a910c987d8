// **  Prints brightness and frame rate of a running camera from its newest frames, as a display would show them.
//
//     live_statistics [CAMERA [FRAMES]]
#include <stdio.h>
#include <stdlib.h>

#include "zel.h"

typedef struct Statistics {
    unsigned darkest, brightest;
    double mean;
} Statistics;

static Statistics statistics_of(const zel_frame_info* info) {
    const size_t count = (size_t)info->width * info->height;
    Statistics found = {65535, 0, 0.0};
    double sum = 0.0;
    for (size_t i = 0; i < count; ++i) {
        const unsigned sample = info->pixels[i];
        if (sample < found.darkest) found.darkest = sample;
        if (sample > found.brightest) found.brightest = sample;
        sum += sample;
    }
    found.mean = count ? sum / (double)count : 0.0;
    return found;
}

static int show(zel_camera* camera, int frames) {
    zel_frame_info info = {.struct_size = sizeof info};
    zel_drops drops = {.struct_size = sizeof drops};
    zel_frame* frame;
    for (int i = 0; i < frames; ++i) {
        // The newest frame: what waited longer is passed over, so that the figures are never old.
        if (zel_camera_wait(camera, ZEL_WAIT_AUTO, ZEL_ORDER_NEWEST, &frame, &info) != ZEL_OK) return 1;
        const Statistics now = statistics_of(&info);
        zel_frame_release(frame);
        printf("frame %u: %u to %u, mean %.1f of %u\n", info.number, now.darkest, now.brightest, now.mean,
               (1u << info.bits) - 1);
    }
    if (zel_camera_stop(camera) != ZEL_OK || zel_camera_get_drops(camera, &drops) != ZEL_OK) return 1;
    printf("%.1f frames/s; dropped: %llu on the link, %llu without a free buffer; %llu passed over\n",
           drops.camera_rate, (unsigned long long)drops.link, (unsigned long long)drops.no_buffer,
           (unsigned long long)drops.skipped);
    return 0;
}

int main(int argc, char** argv) {
    zel_sdk* sdk = NULL;
    zel_camera* camera = NULL;
    int failed = zel_sdk_open(&sdk) != ZEL_OK ||
                 zel_camera_open(sdk, argc > 1 ? argv[1] : NULL, NULL, &camera) != ZEL_OK ||
                 zel_camera_start(camera, NULL) != ZEL_OK || show(camera, argc > 2 ? atoi(argv[2]) : 10);
    if (failed) fprintf(stderr, "live_statistics: %s\n", zel_error_message());
    zel_camera_close(camera);
    zel_sdk_close(sdk);
    return failed;
}
