// Where the fields of every struct lie, for pointers of 32 and of 64 bits: what a program that was compiled once relies
// on. A struct may only grow at its end.
#include "zel.h"

#define SIZE(type, size) LAYOUT(type, size, struct_size, 0)
#define AT(type, field, offset) _Static_assert(offsetof(type, field) == (offset), #type "." #field)
#define LAYOUT(type, size, field, offset) \
    _Static_assert(sizeof(type) == (size) && offsetof(type, field) == (offset), #type)

enum { kPointer = sizeof(void*) };
_Static_assert(sizeof(zel_status) == 4 && (kPointer == 4 || kPointer == 8), "");

LAYOUT(zel_error, 776, why, 264);
LAYOUT(zel_camera_info, 328, name, 8);
AT(zel_camera_info, addresses, 136);
LAYOUT(zel_hot_plug_event, 140, serial, 76);
SIZE(zel_open_options, 8);
LAYOUT(zel_camera_state, 24, frame_timeout_ms, 20);
LAYOUT(zel_parameter_info, 240, minimum, 16);
AT(zel_parameter_info, range_known, 40);
AT(zel_parameter_info, description, 116);
LAYOUT(zel_value, 240, matrix, 16);
AT(zel_value, region, 88);
AT(zel_value, text, 112);
LAYOUT(zel_set_result, 304, actual_known, 40);
AT(zel_set_result, requested, 48);
AT(zel_set_result, reason, 200);
SIZE(zel_region, 28);
SIZE(zel_color_options, 12);
SIZE(zel_start_options, 12);
LAYOUT(zel_frame_info, 104 + 2 * kPointer, hand_over_delay_ns, 56);
AT(zel_frame_info, color_bytes, 72);
AT(zel_frame_info, color_format, 80);
AT(zel_frame_info, pixels, 104);
AT(zel_frame_info, color, 104 + kPointer);
LAYOUT(zel_drops, 48, camera_rate, 40);
LAYOUT(zel_no_frame, 304, sequence, 32);
AT(zel_no_frame, why, 48);
LAYOUT(zel_camera_event, 48, values, 16);
