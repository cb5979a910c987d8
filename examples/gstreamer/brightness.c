// *  Looks at the frames of a pipeline: the mean of each, with its number and the time it arrived at.
//
//    gcc -o brightness brightness.c $(pkg-config --cflags --libs gstreamer-app-1.0)
#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <stdio.h>

// The newest frame only, when this program is too slow for all of them.
static const char kPipeline[] =
    "zelsrc camera=0 num-buffers=3 mode=newest ! video/x-raw,format=GRAY16_LE ! "
    "appsink name=frames sync=false max-buffers=1 drop=true";

static double mean_of(GstBuffer* buffer) {
    GstMapInfo map;
    if (!gst_buffer_map(buffer, &map, GST_MAP_READ)) return 0.0;
    const guint16* const samples = (const guint16*)(void*)map.data;
    const gsize count = map.size / sizeof *samples;
    double sum = 0.0;
    for (gsize i = 0; i < count; ++i) sum += samples[i];
    gst_buffer_unmap(buffer, &map);
    return count ? sum / (double)count : 0.0;
}

static int report_error(GstElement* pipeline) {
    GstBus* const bus = gst_element_get_bus(pipeline);
    GstMessage* const message = gst_bus_pop_filtered(bus, GST_MESSAGE_ERROR);
    gst_object_unref(bus);
    if (!message) return 0;
    GError* error = NULL;
    gst_message_parse_error(message, &error, NULL);
    fprintf(stderr, "brightness: %s\n", error->message);
    g_error_free(error);
    gst_message_unref(message);
    return 1;
}

int main(int argc, char** argv) {
    gst_init(&argc, &argv);
    GError* error = NULL;
    GstElement* const pipeline = gst_parse_launch(kPipeline, &error);
    if (error) {
        fprintf(stderr, "brightness: %s\n", error->message);
        return 1;
    }
    GstElement* const frames = gst_bin_get_by_name(GST_BIN(pipeline), "frames");
    const int runs = gst_element_set_state(pipeline, GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE;
    GstSample* sample;
    // At the end of the frames, and when the source has failed, there is no sample.
    while (runs && (sample = gst_app_sink_pull_sample(GST_APP_SINK(frames))) != NULL) {
        GstBuffer* const buffer = gst_sample_get_buffer(sample);
        printf("frame %u: mean %.1f after %.3f s\n", (unsigned)GST_BUFFER_OFFSET(buffer), mean_of(buffer),
               (double)GST_BUFFER_PTS(buffer) / GST_SECOND);
        gst_sample_unref(sample);
    }
    const int failed = report_error(pipeline);
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(frames);
    gst_object_unref(pipeline);
    return failed;
}
