// Where the fields of the public records stand, with 32-bit and with 64-bit pointers: the same for every compiler.
// Applications and plug-ins were built with these places and types, so a line never changes; it need only compile.
#include <stddef.h>

#include "ZelCamera.h"
#include "link/ICameraInterface.h"

template <class, class>
constexpr bool kSame = false;
template <class Type>
constexpr bool kSame<Type, Type> = true;

constexpr size_t Either(size_t with_32_bits, size_t with_64_bits) {
    return sizeof(void*) == 4 ? with_32_bits : with_64_bits;
}

#define RECORD(type, size32, size64) static_assert(sizeof(type) == Either(size32, size64), "the size of " #type);
#define FIELD(record, name, offset32, offset64, ...)                                                         \
    static_assert(offsetof(record, name) == Either(offset32, offset64), "the place of " #record "::" #name); \
    static_assert(kSame<decltype(record::name), __VA_ARGS__>, "the type of " #record "::" #name);

RECORD(ZelImage, 72, 80)
FIELD(ZelImage, w, 4, 8, unsigned)
FIELD(ZelImage, h, 8, 12, unsigned)
FIELD(ZelImage, bit_depth, 12, 16, unsigned)
FIELD(ZelImage, bytes_per_pixel, 16, 20, unsigned)
FIELD(ZelImage, num_pixels, 20, 24, unsigned)
FIELD(ZelImage, size_in_bytes, 24, 28, unsigned)
FIELD(ZelImage, x_origin, 28, 32, unsigned)
FIELD(ZelImage, y_origin, 32, 36, unsigned)
FIELD(ZelImage, x_pixels, 36, 40, unsigned)
FIELD(ZelImage, y_pixels, 40, 44, unsigned)
FIELD(ZelImage, x_bin, 44, 48, unsigned)
FIELD(ZelImage, y_bin, 48, 52, unsigned)
FIELD(ZelImage, exposure_time_us, 52, 56, unsigned)
FIELD(ZelImage, image_number, 56, 60, unsigned)
FIELD(ZelImage, pixels, 60, 64, unsigned short*)
FIELD(ZelImage, reserved_image, 64, 72, unsigned[2])

RECORD(ZelColorImage, 116, 128)
FIELD(ZelColorImage, color_pixels, 72, 80, void*)
FIELD(ZelColorImage, color_size_in_bytes, 76, 88, unsigned)
FIELD(ZelColorImage, reserved_color, 80, 92, unsigned[4])
FIELD(ZelColorImage, buffer_size, 96, 108, unsigned)
FIELD(ZelColorImage, hand_over_delta_ms, 100, 112, unsigned)
FIELD(ZelColorImage, hand_over_time_ms, 104, 116, unsigned)
FIELD(ZelColorImage, arrival_time_ms, 108, 120, unsigned)
FIELD(ZelColorImage, queue_delay_ms, 112, 124, unsigned)

RECORD(ZelRoiBin, 24, 24)
FIELD(ZelRoiBin, XOrigin, 0, 0, unsigned)
FIELD(ZelRoiBin, YOrigin, 4, 4, unsigned)
FIELD(ZelRoiBin, XPixels, 8, 8, unsigned)
FIELD(ZelRoiBin, YPixels, 12, 12, unsigned)
FIELD(ZelRoiBin, XBin, 16, 16, unsigned)
FIELD(ZelRoiBin, YBin, 20, 20, unsigned)

RECORD(ZelParamAttrId, 8, 8)
FIELD(ZelParamAttrId, ParamID, 0, 0, int)
FIELD(ZelParamAttrId, AttrID, 4, 4, int)

RECORD(ZelCameraControlRecord, 36, 36)
FIELD(ZelCameraControlRecord, value, 0, 0, int)
FIELD(ZelCameraControlRecord, values, 4, 4, int[8])

RECORD(ZelCameraEvent, 24, 24)
FIELD(ZelCameraEvent, id, 0, 0, unsigned)
FIELD(ZelCameraEvent, value, 4, 4, int)
FIELD(ZelCameraEvent, values, 8, 8, short[8])
