// Where the fields of every struct lie, for pointers of 32 and of 64 bits: what a program that was compiled once relies
// on. A struct may only grow at its end.
#include "zel.h"

#define SIZE(type, size) _Static_assert(sizeof(type) == (size), #type)
#define AT(type, field, offset) _Static_assert(offsetof(type, field) == (offset), #type "." #field)

enum { kPointer = sizeof(void*) };
_Static_assert(sizeof(zel_status) == 4 && (kPointer == 4 || kPointer == 8), "");

SIZE(zel_error, 776);
AT(zel_error, why, 264);
SIZE(zel_camera_info, 328);
AT(zel_camera_info, name, 8);
AT(zel_camera_info, addresses, 136);
SIZE(zel_hot_plug_event, 140);
AT(zel_hot_plug_event, serial, 76);
SIZE(zel_open_options, 8);
SIZE(zel_camera_state, 24);
AT(zel_camera_state, frame_timeout_ms, 20);
SIZE(zel_parameter_info, 240);
AT(zel_parameter_info, minimum, 16);
AT(zel_parameter_info, range_known, 40);
AT(zel_parameter_info, description, 116);
SIZE(zel_value, 240);
AT(zel_value, matrix, 16);
AT(zel_value, region, 88);
AT(zel_value, text, 112);
SIZE(zel_set_result, 304);
AT(zel_set_result, actual_known, 40);
AT(zel_set_result, requested, 48);
AT(zel_set_result, reason, 200);
SIZE(zel_region, 28);
SIZE(zel_color_options, 12);
SIZE(zel_start_options, 12);
SIZE(zel_frame_info, 104 + 2 * kPointer);
AT(zel_frame_info, hand_over_delay_ns, 56);
AT(zel_frame_info, color_bytes, 72);
AT(zel_frame_info, color_format, 80);
AT(zel_frame_info, pixels, 104);
AT(zel_frame_info, color, 104 + kPointer);
SIZE(zel_drops, 48);
AT(zel_drops, camera_rate, 40);
SIZE(zel_no_frame, 304);
AT(zel_no_frame, sequence, 32);
AT(zel_no_frame, why, 48);
SIZE(zel_camera_event, 48);
AT(zel_camera_event, values, 16);
