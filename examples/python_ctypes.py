#!/usr/bin/env python3
"""* *     Takes one frame with Python's own ctypes and no module beside it; prints what is in it.

    python_ctypes.py LIBRARY [CAMERA]       LIBRARY: libzel_c.so or zel_c.dll
"""
import ctypes as c
import sys

zel = c.CDLL(sys.argv[1])  # cdecl on Windows as well
zel.zel_error_message.restype = c.c_char_p
zel.zel_status_name.restype = c.c_char_p

ORDER_EVERY, WAIT_AUTO = 0, -1


class Struct(c.Structure):
    """A struct of zel_types.h: its first field says how large it is here."""

    def __init__(self, *values):
        super().__init__(c.sizeof(self), *values)


class StartOptions(Struct):
    _fields_ = [("struct_size", c.c_uint32), ("frames", c.c_int32), ("trigger", c.c_int32)]


class SetResult(Struct):
    _fields_ = (
        [("struct_size", c.c_uint32), ("accepted", c.c_int32)]
        + [(name, c.c_int64) for name in ("actual", "minimum", "maximum", "standard")]
        + [("actual_known", c.c_int32), ("range_known", c.c_int32), ("requested", c.c_char * 64)]
        + [("actual_text", c.c_char * 64), ("unit", c.c_char * 24), ("reason", c.c_char * 104)]
    )


class FrameInfo(Struct):
    _fields_ = (
        [("struct_size", c.c_uint32)]
        + [(name, c.c_uint32) for name in ("width", "height", "bits", "number", "exposure_us")]
        + [(name, c.c_uint32) for name in ("region_x", "region_y", "region_width", "region_height", "bin_x", "bin_y")]
        + [("arrival_ms", c.c_uint32), ("hand_over_ms", c.c_uint32), ("hand_over_delay_ns", c.c_int64)]
        + [("pixel_bytes", c.c_uint64), ("color_bytes", c.c_uint64)]
        + [("color_format", c.c_int32), ("color_space", c.c_int32), ("color_channels", c.c_uint32)]
        + [(name, c.c_uint32) for name in ("color_bytes_per_channel", "color_bits", "color_black_level")]
        + [("pixels", c.POINTER(c.c_uint16)), ("color", c.c_void_p)]
    )


class Event(Struct):
    _fields_ = [(name, c.c_int32) for name in ("struct_size", "kind", "code", "value")] + [("values", c.c_int32 * 8)]


FrameCallback = c.CFUNCTYPE(None, c.c_void_p, c.c_void_p, c.POINTER(FrameInfo), c.c_void_p)


class ZelError(Exception):
    pass


def call(name, *arguments):
    """Calls a function of the library; what it answers besides ZEL_OK becomes an exception."""
    status = getattr(zel, name)(*arguments)
    if status != 0:
        raise ZelError(f"{zel.zel_status_name(status).decode()}: {zel.zel_error_message().decode()}")


def main():
    sdk, camera, frame = c.c_void_p(), c.c_void_p(), c.c_void_p()
    call("zel_sdk_open", c.byref(sdk))
    wanted = sys.argv[2].encode() if len(sys.argv) > 2 else None
    call("zel_camera_open", sdk, wanted, None, c.byref(camera))

    result = SetResult()
    call("zel_camera_set_integer", camera, b"EXPOSURE_TIME_US", c.c_int64(20000), c.byref(result))
    print("exposure:", result.actual, result.unit.decode(), "of", f"{result.minimum}..{result.maximum}")
    try:
        call("zel_camera_set_integer", camera, b"GAIN", c.c_int64(5000), None)
    except ZelError as error:
        print(error)

    info = FrameInfo()
    call("zel_camera_start", camera, c.byref(StartOptions(2, 0)))
    call("zel_camera_wait", camera, WAIT_AUTO, ORDER_EVERY, c.byref(frame), c.byref(info))
    pixels = info.pixels[: info.width * info.height]  # a copy; numpy.ctypeslib.as_array() makes none
    call("zel_frame_release", frame)
    print(f"frame {info.number}: {info.width} x {info.height}, {min(pixels)} to {max(pixels)} of {2**info.bits - 1}")

    # The same with a callback, which runs on a thread of the SDK; Python takes its lock for it.
    numbers = []
    callback = FrameCallback(lambda camera, frame, info, user: numbers.append(info.contents.number))
    call("zel_camera_on_frame", camera, callback, None)
    call("zel_camera_start", camera, c.byref(StartOptions(3, 0)))
    event = Event()
    while len(numbers) < 3:
        zel.zel_camera_wait_event(camera, 10, c.byref(event))
    call("zel_camera_close", camera)
    call("zel_sdk_close", sdk)
    print("called back with the frames", *numbers)


main()
