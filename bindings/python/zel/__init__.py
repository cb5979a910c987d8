"""Scientific cameras: find them, set them, take frames as NumPy arrays.

    import numpy as np
    import zel

    with zel.open() as camera:
        camera.exposure = 0.02                      # seconds
        for frame in camera.stream(100):
            print(frame.number, np.asarray(frame).mean())

All names are here; times are in seconds, lengths in pixels. Errors are zel.Error and the classes made from it.
"""
from __future__ import annotations

import atexit as _atexit
import os as _os

from . import _core
from ._camera import Camera
from ._core import ColorSetting, EventKind, Frame, Reason
from ._errors import (Closed, Error, Forked, InvalidArgument, LinkLost, NoCamera, OutputError, Refused,
                      TimeoutWithReason, UnknownName)
from ._params import Parameter, Params
from ._record import FramesLost, RecordingProgress, RecordingSummary
from ._recording import (Gap, Lost, RecordedFrame, RecordedFrames, Recording, RecordingInfo, open_recording)
from ._sdk import Sdk, cameras, open, use_plugins
from ._stream import FrameStream
from ._types import (Binning, CameraEvent, CameraInfo, Drops, HotPlugEvent, ParameterRange, Region,
                     RegionAndBinning, SetResult)

__version__ = _core.__version__

__all__ = [
    "Binning", "Camera", "CameraEvent", "CameraInfo", "Closed", "ColorSetting", "Drops", "Error", "EventKind", "Forked",
    "Frame", "FrameStream", "FramesLost", "Gap", "HotPlugEvent", "InvalidArgument", "LinkLost", "Lost", "NoCamera",
    "OutputError", "Parameter", "ParameterRange", "Params", "Reason", "RecordedFrame", "RecordedFrames", "Recording",
    "RecordingInfo", "RecordingProgress", "RecordingSummary", "Refused", "Region", "RegionAndBinning", "Sdk", "SetResult",
    "TimeoutWithReason", "UnknownName", "cameras", "open", "open_recording", "use_plugins",
]

for _name in __all__:
    globals()[_name].__module__ = "zel"
del _name

# Cameras are stopped while there is an interpreter that their handlers can run in.
_atexit.register(_core._leave)
_os.register_at_fork(after_in_child=_core._after_fork)
