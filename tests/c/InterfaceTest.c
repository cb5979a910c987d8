// The C interface from a C program, over simulated cameras: every operation once, with what it answers.
#include <pthread.h>
#include <sched.h>
#include <stdio.h>
#include <string.h>
#include <time.h>

#include "zel.h"

static pthread_mutex_t s_Mutex = PTHREAD_MUTEX_INITIALIZER;  // callbacks check as well
static int s_Checks = 0, s_Failed = 0;

// clang-format off
#define CHECK(condition) Check((condition) ? 1 : 0, #condition, __LINE__)
#define EXPECT(status, call) CheckStatus((status), (call), #call, __LINE__)
#define OK(call) EXPECT(ZEL_OK, call)
// clang-format on

static void Check(int good, const char* what, int line) {
    pthread_mutex_lock(&s_Mutex);
    ++s_Checks;
    if (!good) ++s_Failed;
    if (!good) printf("line %d: %s [%s]\n", line, what, zel_error_message());
    pthread_mutex_unlock(&s_Mutex);
}

// A failure has a message, a success has none.
static void CheckStatus(zel_status wanted, zel_status status, const char* call, int line) {
    char what[300];
    snprintf(what, sizeof what, "%s is %s", call, zel_status_name(status));
    Check(status == wanted && (*zel_error_message() != '\0') == (wanted != ZEL_OK), what, line);
}

// Callbacks raise counters, which a test waits for.
static void Raise(int* counter) {
    pthread_mutex_lock(&s_Mutex);
    ++*counter;
    pthread_mutex_unlock(&s_Mutex);
}

// Whether it gets there within a minute.
static int Reaches(const int* counter, int wanted) {
    const time_t end = time(NULL) + 60;
    int count = 0;
    while (count < wanted && time(NULL) < end) {
        pthread_mutex_lock(&s_Mutex);
        count = *counter;
        pthread_mutex_unlock(&s_Mutex);
        sched_yield();
    }
    return count >= wanted;
}

// The simulated USB cameras' control interface (devices/sim/link/SimControl.h); they are the cameras 2 and 3.
int ZEL_CALL zel_sim_control(const char* command, char* reply, int reply_size);

#define COLOR "500101"
#define MONO "500102"

static char s_LastMessage[800];
static int s_Messages = 0;

static void ZEL_CALL Remember(zel_status status, const char* message, void* user) {
    (void)status, (void)user;
    ++s_Messages;
    snprintf(s_LastMessage, sizeof s_LastMessage, "%s", message);
    zel_sdk_close((zel_sdk*)1);  // fails, which must neither come here again nor replace the error that is told
}

static void TestResults(zel_sdk* sdk) {
    char text[512], small[8];
    size_t length = 0;
    int32_t written = 0;
    zel_error error = {sizeof error, 0, "", "", ""};
    CHECK(zel_c_version() == ZEL_C_VERSION);
    CHECK(strcmp(zel_status_name(ZEL_STATUS_SILENT), "SILENT") == 0);
    CHECK(strcmp(zel_status_name(12), "UNKNOWN") == 0 && strcmp(zel_status_name(-1), "UNKNOWN") == 0);
    OK(zel_version_text(text, sizeof text, &length));
    CHECK(length == strlen(text) && length > 7);
    EXPECT(ZEL_STATUS_TOO_SMALL, zel_version_text(small, sizeof small, &length));
    CHECK(strlen(small) == 7 && strncmp(small, text, 7) == 0 && length == strlen(text));
    OK(zel_version_text(NULL, 0, &length));
    EXPECT(ZEL_STATUS_NO_CAMERA, zel_sdk_get_camera_info(sdk, 7, &(zel_camera_info){.struct_size = 8}));
    EXPECT(ZEL_STATUS_BAD_HANDLE, zel_frame_keep((zel_frame*)sdk));
    CHECK(zel_last_error(NULL) == ZEL_STATUS_INVALID_ARGUMENT && zel_last_error(&error) == ZEL_OK);
    CHECK(error.status == ZEL_STATUS_BAD_HANDLE && strstr(error.why, "zel_sdk") &&
          strstr(zel_error_message(), error.why));

    OK(zel_sdk_on_message(sdk, Remember, NULL));
    EXPECT(ZEL_STATUS_NO_CAMERA, zel_camera_open(sdk, "50010", NULL, &(zel_camera*){NULL}));
    CHECK(s_Messages == 1 && strcmp(s_LastMessage, zel_error_message()) == 0 && strstr(s_LastMessage, "did you mean"));

    OK(zel_sdk_write_log(sdk, ZEL_LOG_LEVEL_WARNING, "TestResults", "a line of %d percent", &written));
    CHECK(written == 1);
    {
        char log[4096] = "";
        FILE* file = fopen("c_interface.log", "rb");
        if (file) log[fread(log, 1, sizeof log - 1, file)] = '\0', fclose(file);
        CHECK(strstr(log, "application") && strstr(log, "a line of %d percent"));
        CHECK(strstr(log, "zel_camera_open") && strstr(log, "no camera '50010'"));
    }
}

static void TestSearch(zel_sdk* sdk) {
    struct {
        zel_camera_info info;
        uint32_t newer[2];
    } grown = {{.struct_size = sizeof grown}, {7, 7}};
    zel_camera_info whole = {.struct_size = sizeof whole}, cut = {.struct_size = 8, .name = "untouched"};
    int32_t count = 0;
    OK(zel_sdk_find_cameras(sdk, &count));
    CHECK(count == 4);
    OK(zel_sdk_get_camera_info(sdk, 3, &whole));
    CHECK(whole.number == 3 && strcmp(whole.serial, MONO) == 0 && strcmp(whole.interface_type, "USB 3.0") == 0);
    CHECK(strstr(whole.name, "A30-M") && strstr(whole.addresses[1], "device"));
    OK(zel_sdk_get_camera_info(sdk, 3, &cut));
    CHECK(cut.struct_size == 8 && cut.number == 3 && strcmp(cut.name, "untouched") == 0);
    OK(zel_sdk_get_camera_info(sdk, 3, &grown.info));
    CHECK(grown.info.struct_size == sizeof grown && strcmp(grown.info.serial, MONO) == 0);
    CHECK(grown.newer[0] == 0 && grown.newer[1] == 0);
}

static void TestParameters(zel_camera* camera) {
    zel_parameter_info info = {.struct_size = sizeof info};
    zel_value value = {.struct_size = sizeof value};
    zel_set_result result = {.struct_size = sizeof result};
    zel_region region = {.struct_size = sizeof region}, half = {sizeof half, 16, 8, 32, 24, 0, 0};
    uint32_t count = 0, index, exposure;
    int64_t number = 0;
    int32_t word = 0;
    char text[128];

    OK(zel_parameter_count(&count));
    for (index = 0; index < count; ++index) {
        zel_parameter_info again = {.struct_size = sizeof again};
        OK(zel_parameter_at(index, &info));
        OK(zel_parameter_find(info.name, &again));
        CHECK(again.id == info.id && *info.description && strlen(info.description) + 1 < sizeof info.description);
    }
    EXPECT(ZEL_STATUS_INVALID_ARGUMENT, zel_parameter_at(count, &info));
    EXPECT(ZEL_STATUS_INVALID_ARGUMENT, zel_parameter_find("EXPOSRUE_TIME_US", &info));
    CHECK(strstr(zel_error_message(), "did you mean EXPOSURE_TIME_US"));
    OK(zel_parameter_find("exposure-time-us", &info));
    exposure = info.id;
    CHECK(info.range_known == 0 && info.kind == ZEL_KIND_NUMBER);
    OK(zel_camera_get_parameter_info(camera, exposure, &info));
    CHECK(info.range_known && info.minimum > 0 && info.maximum > info.minimum && strcmp(info.unit, "us") == 0);

    OK(zel_camera_set_integer(camera, "EXPOSURE_TIME_US", 20000, &result));
    CHECK(result.accepted && result.actual == 20000 && result.maximum == info.maximum && *result.reason == '\0');
    OK(zel_camera_get_integer(camera, "exposure_time_us", &number));
    CHECK(number == 20000);
    EXPECT(ZEL_STATUS_REFUSED, zel_camera_set_integer(camera, "GAIN", 5000, &result));
    CHECK(!result.accepted && strcmp(result.requested, "5000") == 0 && result.actual == 0 && result.maximum == 1023);
    CHECK(strcmp(result.actual_text, "0") == 0 && strstr(result.reason, "range"));
    CHECK(strstr(zel_error_message(), "requested 5000 -> actual 0"));
    OK(zel_camera_set_text(camera, "GAIN", "0x10", NULL));
    OK(zel_camera_get_text(camera, "GAIN", text, sizeof text, NULL));
    CHECK(strcmp(text, "16") == 0);
    EXPECT(ZEL_STATUS_INVALID_ARGUMENT, zel_camera_set_text(camera, "GAIN", "much", NULL));
    EXPECT(ZEL_STATUS_REFUSED, zel_camera_set_integer(camera, "HSIZE", 3, NULL));
    OK(zel_camera_get_attribute(camera, exposure, 4 /* ZEL_ATTR_MIN_VALUE */, &word));
    EXPECT(ZEL_STATUS_INVALID_ARGUMENT, zel_camera_get_value(camera, 74, &value));

    value.kind = ZEL_KIND_NUMBER;
    value.integer = 30000;
    OK(zel_camera_set_value(camera, exposure, &value, &result));
    OK(zel_camera_get_value(camera, exposure, &value));
    CHECK(value.integer == 30000 && strcmp(value.text, "30000") == 0);
    value.kind = ZEL_KIND_TEXT;
    EXPECT(ZEL_STATUS_INVALID_ARGUMENT, zel_camera_set_value(camera, exposure, &value, NULL));

    OK(zel_camera_get_region(camera, &region));
    CHECK(region.x == 0 && region.width == 64 && region.height == 48 && region.bin_x == 1);
    OK(zel_camera_set_region(camera, &half));
    OK(zel_parameter_find("ROI_BIN", &info));
    OK(zel_camera_get_value(camera, info.id, &value));
    CHECK(value.kind == ZEL_KIND_REGION && value.region[0] == 16 && value.region[3] == 24 && value.region[5] == 1);
    CHECK(strcmp(value.text, "16,8,32,24,1,1") == 0);
    half.width = 64;
    EXPECT(ZEL_STATUS_REFUSED, zel_camera_set_region(camera, &half));
    OK(zel_camera_set_region(camera, &(zel_region){sizeof half, 0, 0, 0, 0, 2, 2}));
    OK(zel_camera_get_region(camera, &half));
    CHECK(half.x == 16 && half.width == 32 && half.bin_x == 2 && half.bin_y == 2);
    OK(zel_camera_set_text(camera, "ROI_BIN", "0,0,64,48,1,1", NULL));
    OK(zel_camera_set_averaging(camera, 2));
    OK(zel_camera_set_averaging(camera, 0));
    EXPECT(ZEL_STATUS_REFUSED, zel_camera_set_calibration(camera, 1));
    OK(zel_camera_command(camera, "tb p s", text, sizeof text, NULL));
    CHECK(strncmp(text, "108", 3) == 0);
}

static void* Interrupt(void* camera) { return zel_camera_interrupt((zel_camera*)camera) == ZEL_OK ? camera : NULL; }

static void* Close(void* camera) { return zel_camera_close((zel_camera*)camera) == ZEL_OK ? camera : NULL; }

// Waits while another thread does something that ends the wait.
static void WaitMeanwhile(zel_status wanted, void* (*act)(void*), zel_camera* camera) {
    pthread_t thread;
    void* done = NULL;
    zel_frame* frame = NULL;
    CHECK(pthread_create(&thread, NULL, act, camera) == 0);
    EXPECT(wanted, zel_camera_wait(camera, 60000, ZEL_ORDER_EVERY, &frame, NULL));
    CHECK(pthread_join(thread, &done) == 0 && done && !frame);
}

static void TestFrames(zel_camera* camera) {
    zel_frame_info info = {.struct_size = sizeof info}, again = {.struct_size = sizeof again};
    zel_drops drops = {.struct_size = sizeof drops};
    zel_no_frame why = {.struct_size = sizeof why};
    zel_camera_state state = {.struct_size = sizeof state};
    zel_frame* frame = NULL;
    uint16_t samples[64 * 48];
    uint32_t number;

    EXPECT(ZEL_STATUS_NOT_STARTED, zel_camera_wait(camera, 0, ZEL_ORDER_EVERY, &frame, NULL));
    OK(zel_camera_start(camera, &(zel_start_options){sizeof(zel_start_options), 3, ZEL_TRIGGER_AS_SET}));
    for (number = 0; number < 3; ++number) {
        OK(zel_camera_wait(camera, ZEL_WAIT_AUTO, ZEL_ORDER_EVERY, &frame, &info));

        CHECK(frame && info.width == 64 && info.height == 48 && info.bits == 14 && info.number == number);
        CHECK(info.exposure_us == 30000 && info.region_width == 64 && info.bin_x == 1);
        CHECK(info.pixel_bytes == sizeof samples && info.color == NULL && info.color_channels == 0);
        OK(zel_frame_copy_pixels(frame, samples, sizeof samples));
        CHECK(memcmp(samples, info.pixels, sizeof samples) == 0);
        EXPECT(ZEL_STATUS_TOO_SMALL, zel_frame_copy_pixels(frame, samples, sizeof samples - 1));
        EXPECT(ZEL_STATUS_REFUSED, zel_frame_copy_color(frame, samples, sizeof samples));
        OK(zel_frame_get_info(frame, &again));
        CHECK(memcmp(&info, &again, sizeof info) == 0);
        OK(zel_frame_release(frame));
        EXPECT(ZEL_STATUS_BAD_HANDLE, zel_frame_get_info(frame, &again));
        EXPECT(ZEL_STATUS_BAD_HANDLE, zel_frame_release(frame));
    }
    EXPECT(ZEL_STATUS_SEQUENCE_OVER, zel_camera_wait(camera, 60000, ZEL_ORDER_EVERY, &frame, &info));
    CHECK(frame == NULL);
    EXPECT(ZEL_STATUS_TIMEOUT, zel_camera_try_wait(camera, 0, ZEL_ORDER_NEWEST, &frame, NULL));
    OK(zel_camera_get_drops(camera, &drops));
    CHECK(drops.frames == 3 && drops.link == 0 && drops.no_buffer == 0 && drops.skipped == 0);

    OK(zel_camera_start(camera, &(zel_start_options){sizeof(zel_start_options), 0, ZEL_TRIGGER_SOFTWARE}));
    OK(zel_camera_get_state(camera, &state));
    CHECK(state.running && !state.link_lost && state.is_monochrome && state.frame_timeout_ms > 10000);
    OK(zel_camera_why_no_frame(camera, 1000, &why));
    CHECK(why.reason == ZEL_STATUS_WAITS_FOR_SOFTWARE && why.waits_for_software && why.buffers > 0 && *why.why);
    WaitMeanwhile(ZEL_STATUS_INTERRUPTED, Interrupt, camera);
    OK(zel_camera_trigger(camera));
    OK(zel_camera_wait(camera, ZEL_WAIT_AUTO, ZEL_ORDER_NEWEST, &frame, NULL));
    OK(zel_frame_save(frame, "c_interface.tif"));
    OK(zel_frame_save(frame, "c_interface.png"));
    EXPECT(ZEL_STATUS_INVALID_ARGUMENT, zel_frame_save(frame, "c_interface.jpg"));
    EXPECT(ZEL_STATUS_OUTPUT, zel_frame_save(frame, "no folder/c_interface.tif"));
    OK(zel_camera_stop(camera));
    OK(zel_frame_release(frame));
}

typedef struct Seen {
    int frames, events, plugs;
    zel_camera* camera;
    zel_frame* kept;
    zel_frame* passed;
    zel_camera_event event;
    zel_hot_plug_event plug;
} Seen;

static void ZEL_CALL SeeFrame(zel_camera* camera, zel_frame* frame, const zel_frame_info* info, void* user) {
    Seen* seen = (Seen*)user;
    CHECK(camera == seen->camera && info->struct_size == sizeof *info && info->width == 64);
    if (info->number == 1) OK(zel_frame_keep(seen->kept = frame));
    if (info->number == 2) seen->passed = frame;
    Raise(&seen->frames);
}

static void ZEL_CALL SeeEvent(zel_camera* camera, const zel_camera_event* event, void* user) {
    Seen* seen = (Seen*)user;
    CHECK(camera == seen->camera);
    seen->event = *event;
    Raise(&seen->events);
}

static void ZEL_CALL SeePlug(const zel_hot_plug_event* event, void* user) {
    Seen* seen = (Seen*)user;
    seen->plug = *event;
    Raise(&seen->plugs);
}

static void TestCallbacks(zel_sdk* sdk, zel_camera* camera) {
    static Seen seen;
    zel_camera_state state = {.struct_size = sizeof state};
    zel_frame_info info = {.struct_size = sizeof info};
    zel_camera_event event = {.struct_size = sizeof event};
    zel_hot_plug_event plug = {.struct_size = sizeof plug};
    zel_frame* frame = NULL;
    seen.camera = camera;
    EXPECT(ZEL_STATUS_TIMEOUT, zel_camera_wait_event(camera, 0, &event));
    EXPECT(ZEL_STATUS_TIMEOUT, zel_sdk_wait_hot_plug(sdk, 0, &plug));
    OK(zel_camera_on_frame(camera, SeeFrame, &seen));
    OK(zel_camera_on_event(camera, SeeEvent, &seen));
    OK(zel_sdk_on_hot_plug(sdk, SeePlug, &seen));
    OK(zel_camera_start(camera, &(zel_start_options){sizeof(zel_start_options), 5, 0}));
    CHECK(Reaches(&seen.frames, 5));
    OK(zel_camera_stop(camera));
    OK(zel_frame_get_info(seen.kept, &info));
    CHECK(info.number == 1);
    EXPECT(ZEL_STATUS_BAD_HANDLE, zel_frame_get_info(seen.passed, &info));
    OK(zel_camera_get_state(camera, &state));
    CHECK(state.frames_held == 1);
    OK(zel_frame_release(seen.kept));
    OK(zel_camera_on_frame(camera, NULL, NULL));

    CHECK(zel_sim_control("event 1 3 17 1 2 3", NULL, 0) >= 0 && Reaches(&seen.events, 1));
    CHECK(seen.event.kind == ZEL_EVENT_CAMERA && seen.event.code == 3 && seen.event.value == 17);
    CHECK(seen.event.values[0] == 1 && seen.event.values[2] == 3 && seen.event.struct_size == sizeof seen.event);
    OK(zel_camera_start(camera, NULL));
    CHECK(zel_sim_control("unplug 1", NULL, 0) >= 0 && Reaches(&seen.events, 2) && Reaches(&seen.plugs, 1));
    CHECK(seen.event.kind == ZEL_EVENT_LINK_LOST && seen.plug.connected == 0 && strcmp(seen.plug.serial, MONO) == 0);
    while (zel_camera_try_wait(camera, 0, ZEL_ORDER_EVERY, &frame, NULL) == ZEL_OK) zel_frame_release(frame);
    EXPECT(ZEL_STATUS_LINK_LOST, zel_camera_wait(camera, 60000, ZEL_ORDER_EVERY, &frame, NULL));
    CHECK(zel_sim_control("plug 1", NULL, 0) >= 0 && Reaches(&seen.events, 3));
    CHECK(seen.event.kind == ZEL_EVENT_LINK_BACK);
    // The same events, waited for.
    OK(zel_camera_wait_event(camera, 0, &event));
    CHECK(event.kind == ZEL_EVENT_CAMERA && event.values[2] == 3);
    OK(zel_camera_wait_event(camera, 0, &event));
    CHECK(event.kind == ZEL_EVENT_LINK_LOST);
    OK(zel_sdk_wait_hot_plug(sdk, 0, &plug));
    CHECK(plug.connected == 0 && plug.number == 3 && strcmp(plug.serial, MONO) == 0);
    EXPECT(ZEL_STATUS_INVALID_ARGUMENT, zel_camera_wait_event(camera, -1, &event));
    OK(zel_camera_on_event(camera, NULL, NULL));
    OK(zel_sdk_on_hot_plug(sdk, NULL, NULL));
}

static void TestColor(zel_sdk* sdk) {
    zel_camera* camera = NULL;
    zel_frame* frame = NULL;
    zel_frame_info info = {.struct_size = sizeof info};
    static uint8_t picture[64 * 48 * 4];
    OK(zel_camera_open_number(sdk, 2, &(zel_open_options){sizeof(zel_open_options), 0}, &camera));
    OK(zel_camera_use_color(camera, &(zel_color_options){sizeof(zel_color_options), ZEL_COLOR_FORMAT_RGBA8, 0}));
    OK(zel_camera_start(camera, NULL));
    OK(zel_camera_wait(camera, ZEL_WAIT_AUTO, ZEL_ORDER_EVERY, &frame, &info));
    CHECK(info.color_channels == 4 && info.color_bytes_per_channel == 1 && info.color_bits == 8);
    CHECK(info.color_format == ZEL_COLOR_FORMAT_RGBA8 && info.color_space == ZEL_COLOR_SPACE_SRGB);
    CHECK(info.color_black_level > 0 && info.color_bytes == sizeof picture && info.color);
    OK(zel_frame_copy_color(frame, picture, sizeof picture));
    CHECK(picture[3] == 255 && memcmp(picture, info.color, sizeof picture) == 0);
    OK(zel_frame_save(frame, "c_interface_color.png"));
    // A frame outlives its camera, which can be opened again when the frame is gone.
    OK(zel_camera_close(camera));
    CHECK(memcmp(picture, info.color, sizeof picture) == 0);
    EXPECT(ZEL_STATUS_BAD_HANDLE, zel_camera_use_grey(camera));
    EXPECT(ZEL_STATUS_REFUSED, zel_camera_open(sdk, COLOR, NULL, &camera));
    OK(zel_frame_release(frame));
    OK(zel_camera_open(sdk, COLOR, NULL, &camera));
    OK(zel_camera_start(camera, &(zel_start_options){sizeof(zel_start_options), 0, ZEL_TRIGGER_SOFTWARE}));
    WaitMeanwhile(ZEL_STATUS_BAD_HANDLE, Close, camera);
}

// The camera with four taps, whose tables are in its flash memory.
static void TestCalibration(zel_sdk* sdk) {
    zel_camera* camera = NULL;
    OK(zel_camera_open(sdk, "300101", &(zel_open_options){sizeof(zel_open_options), 1}, &camera));
    OK(zel_camera_set_calibration(camera, 0));
    OK(zel_camera_set_calibration(camera, 1));
    OK(zel_camera_close(camera));
}

// What the SDK does by itself for a while; the window that would show it on Windows does not appear.
static void ZEL_CALL SeeProgress(const char* line1, const char* line2, int percent, void* user) {
    CHECK(line1 && line2 && percent <= 100 && user == &s_Messages);
}

// Calls that make no sense, each with the status it must have.
static void TestBadInput(zel_sdk* sdk, zel_camera* camera) {
    zel_camera* opened = camera;
    zel_frame* frame = (zel_frame*)&frame;
    zel_frame_info info = {.struct_size = 0};
    zel_value matrix = {.struct_size = sizeof matrix, .kind = ZEL_KIND_MATRIX};
    struct {
        zel_start_options options;
        uint32_t newer;
    } future = {{sizeof future, 1, 0}, 1};
    zel_camera* const wrong[] = {NULL, (zel_camera*)sdk, (zel_camera*)&info, (zel_camera*)UINTPTR_MAX};
    size_t i;
    for (i = 0; i < sizeof wrong / sizeof *wrong; ++i) {
        EXPECT(ZEL_STATUS_BAD_HANDLE, zel_camera_start(wrong[i], NULL));
        EXPECT(ZEL_STATUS_BAD_HANDLE, zel_camera_wait(wrong[i], 0, 0, &frame, NULL));
        EXPECT(wrong[i] ? ZEL_STATUS_BAD_HANDLE : ZEL_OK, zel_camera_close(wrong[i]));
    }
    EXPECT(ZEL_STATUS_BAD_HANDLE, zel_camera_open((zel_sdk*)camera, NULL, NULL, &opened));
    CHECK(opened == NULL && frame == NULL);
#define ROW(status, call) EXPECT(ZEL_STATUS_##status, call)
    ROW(INVALID_ARGUMENT, zel_sdk_open(NULL));
    ROW(INVALID_ARGUMENT, zel_sdk_find_cameras(sdk, NULL));
    ROW(INVALID_ARGUMENT, zel_camera_open(sdk, MONO, NULL, NULL));
    ROW(REFUSED, zel_camera_open(sdk, MONO, NULL, &opened));
    ROW(NO_CAMERA, zel_camera_open(sdk, "", NULL, &opened));
    ROW(NO_CAMERA, zel_camera_open_number(sdk, -1, NULL, &opened));
    ROW(INVALID_ARGUMENT, zel_sdk_write_log(sdk, 3, NULL, "", NULL));
    ROW(INVALID_ARGUMENT, zel_version_text(NULL, 1, NULL));
    ROW(INVALID_ARGUMENT, zel_use_plugins(NULL));
    ROW(REFUSED, zel_use_plugins("sim"));
    ROW(INVALID_ARGUMENT, zel_camera_get_info(camera, NULL));
    ROW(BAD_STRUCT, zel_camera_get_info(camera, &(zel_camera_info){.struct_size = 4}));
    ROW(BAD_STRUCT, zel_camera_get_info(camera, &(zel_camera_info){.struct_size = 0xCDCDCDCDu}));
    ROW(INVALID_ARGUMENT, zel_camera_start(camera, &future.options));
    ROW(INVALID_ARGUMENT, zel_camera_start(camera, &(zel_start_options){sizeof future.options, -1, 0}));
    ROW(INVALID_ARGUMENT, zel_camera_start(camera, &(zel_start_options){sizeof future.options, 0, 3}));
    ROW(BAD_STRUCT, zel_camera_wait(camera, 0, ZEL_ORDER_EVERY, &frame, &info));
    ROW(INVALID_ARGUMENT, zel_camera_wait(camera, -2, ZEL_ORDER_EVERY, &frame, NULL));
    ROW(INVALID_ARGUMENT, zel_camera_wait(camera, 0, 2, &frame, NULL));
    ROW(INVALID_ARGUMENT, zel_camera_wait(camera, 0, 0, NULL, NULL));
    ROW(INVALID_ARGUMENT, zel_camera_set_averaging(camera, -1));
    ROW(INVALID_ARGUMENT, zel_camera_set_integer(camera, "GAIN", INT64_MAX, NULL));
    ROW(INVALID_ARGUMENT, zel_camera_set_integer(camera, NULL, 0, NULL));
    ROW(BAD_STRUCT, zel_camera_set_integer(camera, "GAIN", 1, &(zel_set_result){.struct_size = 6}));
    ROW(INVALID_ARGUMENT, zel_camera_get_integer(camera, "GAIN", NULL));
    ROW(INVALID_ARGUMENT, zel_camera_set_text(camera, "HW_MODEL", "a text of more than 31 characters", NULL));
    ROW(INVALID_ARGUMENT, zel_camera_set_value(camera, 69, &matrix, NULL));
    ROW(REFUSED, zel_camera_use_color(camera, NULL));
    ROW(INVALID_ARGUMENT, zel_camera_use_color(camera, &(zel_color_options){sizeof(zel_color_options), 9, 0}));
    ROW(INVALID_ARGUMENT, zel_camera_command(camera, NULL, NULL, 0, NULL));
}

int main(void) {
    zel_sdk *sdk = NULL, *second = NULL;
    zel_camera* camera = NULL;
    remove("c_interface.log");
    OK(zel_sdk_open(&sdk));
    OK(zel_sdk_open(&second));
    TestResults(sdk);
    TestSearch(sdk);
    OK(zel_camera_open(sdk, MONO, NULL, &camera));
    TestParameters(camera);
    TestFrames(camera);
    TestBadInput(sdk, camera);
    TestCallbacks(sdk, camera);
    TestColor(sdk);
    OK(zel_sdk_on_progress(sdk, SeeProgress, &s_Messages));
    TestCalibration(sdk);
    OK(zel_sdk_close(sdk));
    EXPECT(ZEL_STATUS_BAD_HANDLE, zel_sdk_close(sdk));
    OK(zel_camera_start(camera, NULL));  // lives on without the handle it was opened through
    OK(zel_camera_close(camera));
    OK(zel_sdk_close(second));
    printf("%d checks, %d failed\n", s_Checks, s_Failed);
    return s_Failed != 0;
}
