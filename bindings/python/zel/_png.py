"""Previews of frames for notebooks."""
from __future__ import annotations

import struct
import zlib
from typing import TYPE_CHECKING, Any

if TYPE_CHECKING:
    from ._core import Frame

_MOST_PIXELS = 800  # of the longer side


def _chunk(kind: bytes, data: bytes) -> bytes:
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def encode(picture: Any) -> bytes:
    """A PNG file of an array (height, width) or (height, width, 3) of uint8."""
    import numpy
    height, width = picture.shape[:2]
    # Each row begins with its filter: 0, none.
    rows = numpy.zeros((height, 1 + picture[0].size), numpy.uint8)
    rows[:, 1:] = picture.reshape(height, -1)
    head = struct.pack(">IIBBBBB", width, height, 8, 2 if picture.ndim == 3 else 0, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + _chunk(b"IHDR", head) + _chunk(b"IDAT", zlib.compress(rows.tobytes(), 1)) +
            _chunk(b"IEND", b""))


def preview(frame: Frame) -> bytes:
    """A PNG of at most 800 pixels a side.

    Grey frames are stretched from their 0.5th to their 99.5th percentile; color pictures are shown as they are.
    """
    import numpy
    picture = numpy.asarray(frame)
    step = max(1, -(-max(picture.shape[:2]) // _MOST_PIXELS))
    small = picture[::step, ::step]
    if small.ndim == 3:
        color = frame.color
        full = (1 << (color.output_bits if color else 16)) - 1
        return encode((small.astype(numpy.uint32) * 255 // full).clip(0, 255).astype(numpy.uint8))
    low, high = numpy.percentile(small, (0.5, 99.5))
    scaled = (small - low) * (255.0 / max(high - low, 1.0))
    return encode(scaled.clip(0, 255).astype(numpy.uint8))
