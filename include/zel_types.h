/// @file
/// Types and values of the C interface: zel.h, which says the rules, includes this.
#ifndef ZEL_TYPES_H
#define ZEL_TYPES_H

#include <stddef.h>
#include <stdint.h>

#if !defined(ZEL_CALL)
#if defined(_WIN32)
#define ZEL_CALL __cdecl
#else
#define ZEL_CALL
#endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// The SDK, opened. Several may exist; see zel_sdk_open().
typedef struct zel_sdk zel_sdk;
/// An open camera: zel_camera_open().
typedef struct zel_camera zel_camera;
/// A frame, on loan from its camera's pool: zel_camera_wait().
typedef struct zel_frame zel_frame;

/* ---- results ---- */

/// What became of a call: one of zel_status_code.
typedef int32_t zel_status;

/// The values of zel_status. From 20 on, and ZEL_STATUS_LINK_LOST: why a wait ended without a frame.
enum zel_status_code {
    ZEL_OK = 0,                       ///< done
    ZEL_STATUS_FAILED = 1,            ///< another reason than those below
    ZEL_STATUS_INVALID_ARGUMENT = 2,  ///< null, or a name, number or text that can't be meant; nothing was done
    ZEL_STATUS_NO_CAMERA = 3,         ///< there is no such camera, or it can't be opened
    ZEL_STATUS_REFUSED = 4,           ///< the camera or the SDK refused a value, a command or the start
    ZEL_STATUS_TIMEOUT = 5,           ///< no reply, or no frame, came in time
    ZEL_STATUS_LINK_LOST = 6,         ///< the camera was unplugged or switched off
    ZEL_STATUS_OUTPUT = 7,            ///< a file can't be written
    ZEL_STATUS_OUT_OF_MEMORY = 8,     ///< memory ran out
    ZEL_STATUS_BAD_HANDLE = 9,        ///< null, closed, released, or a handle of another kind
    ZEL_STATUS_BAD_STRUCT = 10,       ///< `struct_size` is not one that the struct can have
    ZEL_STATUS_TOO_SMALL = 11,        ///< the room for a text or for samples is too small

    ZEL_STATUS_INTERRUPTED = 20,         ///< zel_camera_interrupt() was called
    ZEL_STATUS_SEQUENCE_OVER = 21,       ///< the camera has taken the frames that it was started for
    ZEL_STATUS_NO_BUFFERS = 22,          ///< the pool has no image buffers
    ZEL_STATUS_BUFFERS_HELD = 23,        ///< the application holds every image buffer
    ZEL_STATUS_WAITS_FOR_HARDWARE = 24,  ///< the camera waits for a trigger at its input
    ZEL_STATUS_NOT_STARTED = 25,         ///< the camera is not running
    ZEL_STATUS_EXPOSING = 26,            ///< the exposure takes longer than the wait
    ZEL_STATUS_WAITS_FOR_SOFTWARE = 27,  ///< no software trigger, or it brought no frame
    ZEL_STATUS_SILENT = 28               ///< the camera says that it is running and sends nothing
};

/// The parts of an error message.
typedef struct zel_error {
    uint32_t struct_size;  ///< sizeof(zel_error)
    zel_status status;     ///< of this thread's last call
    char problem[256];     ///< what went wrong: "camera 0 can't be opened"
    char why[256];         ///< why, when that is known
    char hint[256];        ///< what can be done about it
} zel_error;

/* ---- the SDK ---- */

/// How the search describes a camera.
typedef struct zel_camera_info {
    uint32_t struct_size;     ///< sizeof(zel_camera_info)
    int32_t number;           ///< 0 to 7
    char name[64];            ///< the name kept in the camera, or its model
    char serial[32];          ///< serial number; empty when the camera tells none
    char interface_type[32];  ///< kind of link: "Camera Link", "GigE", "USB 3.0", ...
    char addresses[3][64];    ///< where it hangs; unused ones are empty
} zel_camera_info;

/// A camera was plugged in or unplugged.
typedef struct zel_hot_plug_event {
    uint32_t struct_size;     ///< as the library has it
    int32_t connected;        ///< 1: plugged in; 0: unplugged
    int32_t number;           ///< what zel_camera_open_number() takes after a connect
    char name[64];            ///< the camera's name
    char serial[32];          ///< its serial number
    char interface_type[32];  ///< its kind of link
} zel_hot_plug_event;

/// Called on a thread of the plug-in, which goes on when it returns. The event is valid for the call.
typedef void(ZEL_CALL* zel_hot_plug_callback)(const zel_hot_plug_event* event, void* user);

/// Called with the failure of a call, on its thread, before it returns. The message is valid for the call. Inside,
/// further failures are not told.
typedef void(ZEL_CALL* zel_message_callback)(zel_status status, const char* message, void* user);

/// The state of long work that the SDK does by itself, as when calibration tables come from a camera: two lines, and a
/// percentage or -1. At the end both lines are empty. Called on the thread that opens the camera. Valid for the call.
typedef void(ZEL_CALL* zel_progress_callback)(const char* line1, const char* line2, int percent, void* user);

/// Levels of lines in the log.
enum zel_log_level {
    ZEL_LOG_LEVEL_ERROR = 0,    ///< something failed
    ZEL_LOG_LEVEL_WARNING = 1,  ///< something is odd
    ZEL_LOG_LEVEL_TRACE = 2     ///< what is going on
};

/* ---- cameras ---- */

/// How a camera is opened.
typedef struct zel_open_options {
    uint32_t struct_size;  ///< sizeof(zel_open_options)
    int32_t calibrated;    ///< 1: with the tables that even out its taps, which may take a while; 0: without
} zel_open_options;

/// How an open camera is doing.
typedef struct zel_camera_state {
    uint32_t struct_size;      ///< sizeof(zel_camera_state)
    int32_t running;           ///< 1 between start and stop, also when a sequence is over
    int32_t link_lost;         ///< 1 after it was unplugged or switched off, until it is there again
    int32_t is_monochrome;     ///< 1: it has no color filter
    int32_t frames_held;       ///< frames that the application holds
    int32_t frame_timeout_ms;  ///< how long a frame may take by the camera's own figures, and ten seconds of grace
} zel_camera_state;

/* ---- parameters ---- */

/// How a parameter's value is laid out.
enum zel_value_kind {
    ZEL_KIND_NUMBER = 0,         ///< 32-bit integer, unsigned: `integer`
    ZEL_KIND_SIGNED_NUMBER = 1,  ///< 32-bit integer, signed: `integer`
    ZEL_KIND_TEXT = 2,           ///< up to 31 characters: `text`
    ZEL_KIND_REGION = 3,         ///< six numbers: `region`
    ZEL_KIND_MATRIX = 4,         ///< nine numbers, row by row: `matrix`
    ZEL_KIND_WIDE = 5,           ///< 64-bit integer: `integer`
    ZEL_KIND_SELECTOR = 6        ///< has no value of its own
};

/// Whether a parameter can be read and written.
enum zel_access {
    ZEL_ACCESS_READ_WRITE = 0,  ///< both
    ZEL_ACCESS_READ_ONLY = 1,   ///< reading alone
    ZEL_ACCESS_WRITE_ONLY = 2   ///< writing alone
};

/// What a parameter is. Without a camera the range is not known.
typedef struct zel_parameter_info {
    uint32_t struct_size;   ///< sizeof(zel_parameter_info)
    uint32_t id;            ///< ZEL_PARAM_... of ZelParameters.h, which C can include as well
    int32_t kind;           ///< one of zel_value_kind
    int32_t access;         ///< one of zel_access
    int64_t minimum;        ///< the least value it takes now, in its unit
    int64_t maximum;        ///< the largest one
    int64_t standard;       ///< its default
    int32_t range_known;    ///< 0: the three above say nothing
    char name[48];          ///< without the leading ZEL_PARAM_
    char unit[24];          ///< "us", "px"; empty when it has none
    char description[124];  ///< one line
} zel_parameter_info;

/// The value of a parameter of any kind.
typedef struct zel_value {
    uint32_t struct_size;  ///< sizeof(zel_value)
    int32_t kind;          ///< one of zel_value_kind; says which of the next ones counts
    int64_t integer;       ///< of the number kinds; of other kinds the first word
    double matrix[9];      ///< row by row
    uint32_t region[6];    ///< x, y, width, height, horizontal and vertical binning, in sensor pixels
    char text[128];        ///< any value as text; written for the kind ZEL_KIND_TEXT alone
} zel_value;

/// What became of a write: requested, actual and what would have been taken.
typedef struct zel_set_result {
    uint32_t struct_size;  ///< sizeof(zel_set_result)
    int32_t accepted;      ///< 1: the camera took the value as it was asked for
    int64_t actual;        ///< the value now, where it is a number
    int64_t minimum;       ///< the range as in zel_parameter_info
    int64_t maximum;       ///< the largest value
    int64_t standard;      ///< the default
    int32_t actual_known;  ///< 0: it can't be read back
    int32_t range_known;   ///< 0: minimum, maximum and standard say nothing
    char requested[64];    ///< as text
    char actual_text[64];  ///< as read back, as text
    char unit[24];         ///< of all of them
    char reason[104];      ///< why it was not accepted
} zel_set_result;

/// A part of the sensor and the binning, in sensor pixels.
typedef struct zel_region {
    uint32_t struct_size;  ///< sizeof(zel_region)
    uint32_t x;            ///< left edge, counted from 0
    uint32_t y;            ///< upper edge
    uint32_t width;        ///< columns
    uint32_t height;       ///< rows
    uint32_t bin_x;        ///< so many columns become one
    uint32_t bin_y;        ///< so many rows become one
} zel_region;

/* ---- color ---- */

/// How the channels of a color picture are stored, in the order blue, green, red.
enum zel_color_format {
    ZEL_COLOR_FORMAT_RGB16 = 0,  ///< three channels of 16 bits
    ZEL_COLOR_FORMAT_RGB8 = 1,   ///< three channels of 8 bits
    ZEL_COLOR_FORMAT_RGBA8 = 2   ///< four channels of 8 bits, the fourth opaque
};

/// What the channels of a color picture mean.
enum zel_color_space {
    ZEL_COLOR_SPACE_SRGB = 0,    ///< as ordinary picture files
    ZEL_COLOR_SPACE_LINEAR = 1,  ///< the same primaries (CCIR 709), linear light
    ZEL_COLOR_SPACE_XYZ = 2,     ///< CIE XYZ, linear
    ZEL_COLOR_SPACE_SENSOR = 3   ///< what the sensor's channels say, black level included
};

/// How color pictures are made.
typedef struct zel_color_options {
    uint32_t struct_size;  ///< sizeof(zel_color_options)
    int32_t format;        ///< one of zel_color_format
    int32_t space;         ///< one of zel_color_space
} zel_color_options;

/* ---- running ---- */

/// What starts a frame.
enum zel_trigger {
    ZEL_TRIGGER_AS_SET = 0,    ///< the camera itself, unless HW_TRIGGER_ACTIVE was set to 1
    ZEL_TRIGGER_SOFTWARE = 1,  ///< zel_camera_trigger()
    ZEL_TRIGGER_HARDWARE = 2   ///< a signal at the camera's trigger input
};

/// How an acquisition is started.
typedef struct zel_start_options {
    uint32_t struct_size;  ///< sizeof(zel_start_options)
    int32_t frames;        ///< the camera stops by itself after so many; 0: as FRAME_COUNT says, which is 0 = never
    int32_t trigger;       ///< one of zel_trigger
} zel_start_options;

/// Which of the frames that wait is handed over.
enum zel_order {
    ZEL_ORDER_EVERY = 0,  ///< the oldest: each frame, in order
    ZEL_ORDER_NEWEST = 1  ///< the newest; older ones that wait are passed over
};

/// Time-outs in milliseconds are 0 or more, or this: by the camera's own figures, `frame_timeout_ms`.
enum zel_wait { ZEL_WAIT_AUTO = -1 };

/// A frame: its samples, what they show and when it came. Valid until the frame is released.
typedef struct zel_frame_info {
    uint32_t struct_size;        ///< sizeof(zel_frame_info)
    uint32_t width;              ///< pixels of a row
    uint32_t height;             ///< rows
    uint32_t bits;               ///< significant bits of a grey sample; the largest one is 2^bits - 1
    uint32_t number;             ///< number of the frame since the start
    uint32_t exposure_us;        ///< exposure time in microseconds
    uint32_t region_x;           ///< left edge on the sensor, at the start
    uint32_t region_y;           ///< upper edge on the sensor
    uint32_t region_width;       ///< columns of the sensor
    uint32_t region_height;      ///< rows of the sensor
    uint32_t bin_x;              ///< horizontal binning
    uint32_t bin_y;              ///< vertical binning
    uint32_t arrival_ms;         ///< when the complete frame arrived: milliseconds of the system's monotonic clock
                                 ///< (on Windows timeGetTime), modulo 2^32
    uint32_t hand_over_ms;       ///< when it was handed over, by the same clock
    int64_t hand_over_delay_ns;  ///< from the camera's notification to the hand-over, in nanoseconds
    uint64_t pixel_bytes;        ///< bytes of the grey samples, 2 each
    uint64_t color_bytes;        ///< bytes of the color picture; 0: there is none
    int32_t color_format;        ///< one of zel_color_format
    int32_t color_space;         ///< one of zel_color_space
    uint32_t color_channels;     ///< 3 or 4; 0: there is none
    uint32_t color_bytes_per_channel;  ///< 2 or 1
    uint32_t color_bits;               ///< bits of a channel that the values fill
    uint32_t color_black_level;        ///< counts that were taken off before anything else
    const uint16_t* pixels;  ///< width * height grey samples, row after row (with a color picture: the mosaic)
    const void* color;       ///< width * height pixels of blue, green, red (and 255); null: there is none
} zel_frame_info;

/// Frames that did not reach the application since the start, by cause.
typedef struct zel_drops {
    uint32_t struct_size;  ///< sizeof(zel_drops)
    uint32_t reserved;     ///< 0
    uint64_t frames;       ///< handed over
    uint64_t link;         ///< lost on the link, as the transport counts them
    uint64_t no_buffer;    ///< arrived while no image buffer was free
    uint64_t skipped;      ///< passed over for newer ones
    double camera_rate;    ///< frames per second that the camera sent; 0 while that can't be told
} zel_drops;

/// Why no frame comes.
typedef struct zel_no_frame {
    uint32_t struct_size;        ///< sizeof(zel_no_frame)
    zel_status reason;           ///< ZEL_STATUS_LINK_LOST, or from ZEL_STATUS_INTERRUPTED on
    int32_t started;             ///< 1: the camera says that it is running
    int32_t waits_for_hardware;  ///< 1: the trigger input starts frames
    int32_t waits_for_software;  ///< 1: zel_camera_trigger() starts frames
    int32_t buffers;             ///< size of the image pool
    int32_t buffers_held;        ///< how many of them the application holds
    uint32_t reserved;           ///< 0
    int64_t sequence;            ///< frames after which the camera stops by itself; 0: it does not
    int64_t exposure_us;         ///< exposure time of the run in microseconds
    char why[128];               ///< the reason as the end of a sentence
    char hint[128];              ///< what can be done about it
} zel_no_frame;

/// A frame has come. It is released when the callback returns, unless zel_frame_keep() was called. Called on the
/// transport's thread, which delivers nothing else meanwhile. `info` is valid for the call.
typedef void(ZEL_CALL* zel_frame_callback)(zel_camera* camera, zel_frame* frame, const zel_frame_info* info,
                                           void* user);

/// What happened to an open camera.
enum zel_event_kind {
    ZEL_EVENT_LINK_LOST = 0,  ///< it was unplugged or switched off
    ZEL_EVENT_LINK_BACK = 1,  ///< it is there again
    ZEL_EVENT_CAMERA = 2      ///< an event of the camera itself
};

/// An event of an open camera.
typedef struct zel_camera_event {
    uint32_t struct_size;  ///< as the library has it
    int32_t kind;          ///< one of zel_event_kind
    int32_t code;          ///< of the camera's own event, 0 to 5
    int32_t value;         ///< sent with it
    int32_t values[8];     ///< sent with it
} zel_camera_event;

/// Called on the transport's thread. The event is valid for the call.
typedef void(ZEL_CALL* zel_camera_event_callback)(zel_camera* camera, const zel_camera_event* event, void* user);

#ifdef __cplusplus
}
#endif

#endif
