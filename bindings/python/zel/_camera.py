"""An open camera."""
from __future__ import annotations

import datetime
import math
import threading
from types import TracebackType
from typing import Any, Callable, Optional, Tuple, Type, TypeVar, Union

from . import _checks, _core
from ._core import ColorSetting, Frame
from ._errors import InvalidArgument
from ._params import Params
from ._record import RecordingProgress, RecordingSummary, record
from ._recording import Path
from ._stream import FrameStream
from ._types import Binning, CameraEvent, CameraInfo, Drops, Region, Setting

FrameHandler = TypeVar("FrameHandler", bound=Callable[[Frame], Any])
EventHandler = TypeVar("EventHandler", bound=Callable[[CameraEvent], Any])

_TRIGGERS = ("internal", "software", "hardware")


class Camera:
    """An open camera: zel.open(). It is closed at the end of its `with` block, by close(), or with its last reference.

    Any thread may call its operations, also inside handlers; what talks to the camera blocks for the exchange, without
    the interpreter's lock (a camera that falls silent costs up to 20 s). Operations of a closed camera raise Closed;
    settings that can't be had raise Refused, or LinkLost while the link is lost.
    """

    def __init__(self, core: _core.Camera) -> None:
        """Made by open()."""
        self._core = core
        self._info = CameraInfo(*core.info)
        self._params = Params(core)
        self._trigger: Optional[str] = None
        self._averaged = 1
        self._handles_frames = False
        self._being_recorded = threading.Lock()

    # ---- what it is ----

    @property
    def info(self) -> CameraInfo:
        """Number, name, serial number and link, as they were when it was opened."""
        return self._info

    @property
    def label(self) -> str:
        """A name for messages: "camera 0"."""
        return self._core.label

    @property
    def serial(self) -> str:
        """Its serial number; empty when the camera tells none."""
        return self._info.serial

    @property
    def params(self) -> Params:
        """All its parameters by name: params["EXPOSURE_TIME_US"], params.GAIN."""
        return self._params

    @property
    def is_color(self) -> bool:
        """Whether its sensor has a color filter."""
        return self._core.is_color

    @property
    def sensor_size(self) -> Tuple[int, int]:
        """Columns and rows of the sensor, in pixels."""
        return self._number("HSIZE"), self._number("VSIZE")

    @property
    def bits(self) -> int:
        """Significant bits of a sample: the largest value is 2**bits - 1."""
        return self._number("BITS_PER_PIXEL")

    @property
    def temperature(self) -> float:
        """Temperature of the sensor, in degrees Celsius."""
        return self._number("TEMPERATURE") / 10

    @property
    def frame_time(self) -> float:
        """Time from frame to frame, in seconds."""
        return self._number("FRAME_TIME") / 1e6

    # ---- settings ----

    def _get_exposure(self) -> float:
        """Exposure time in seconds. Set a number or a timedelta; it is rounded to whole microseconds and checked."""
        return self._number("EXPOSURE_TIME_US") / 1e6

    def _set_exposure(self, seconds: Union[float, datetime.timedelta]) -> None:
        if isinstance(seconds, datetime.timedelta):
            seconds = seconds.total_seconds()
        try:
            finite = math.isfinite(seconds)
        except TypeError:
            finite = False
        if not finite:
            raise InvalidArgument(f"exposure: {seconds!r}", "not a time", "give seconds: 0.02")
        self._params["EXPOSURE_TIME_US"].set(round(seconds * 1e6))

    exposure = Setting(_get_exposure, _set_exposure)

    @property
    def gain(self) -> int:
        """Amplifier gain, in the camera's steps. Setting it is checked."""
        return self._number("GAIN")

    @gain.setter
    def gain(self, steps: int) -> None:
        self._params["GAIN"].set(steps)

    @property
    def black_level(self) -> int:
        """Counts of a sample in the dark. Setting it is checked."""
        return self._number("OPTICAL_BLACK_LEVEL")

    @black_level.setter
    def black_level(self, counts: int) -> None:
        self._params["OPTICAL_BLACK_LEVEL"].set(counts)

    @property
    def buffers(self) -> int:
        """Image buffers of the pool, for the next start: so many frames can be held or wait."""
        return self._number("NUM_IMAGE_BUFFERS")

    @buffers.setter
    def buffers(self, count: int) -> None:
        self._params["NUM_IMAGE_BUFFERS"].set(count)

    def _get_roi(self) -> Region:
        """Region(x, y, width, height) that frames show from the next start on, in sensor pixels.

        Set four numbers; None: the whole sensor.
        """
        return Region(*self._params["ROI_BIN"].value[:4])

    def _set_roi(self, region: Optional[Tuple[int, int, int, int]]) -> None:
        if region is None:
            region = (0, 0, *self.sensor_size)
        x, y, width, height = _checks.whole_numbers("roi", region, 4)
        self._core.write_region((x, y, width, height), None)

    roi = Setting(_get_roi, _set_roi)

    def _get_binning(self) -> Binning:
        """Binning(x, y): so many sensor pixels become one, from the next start on. Set a pair, or one number."""
        return Binning(*self._params["ROI_BIN"].value[4:])

    def _set_binning(self, factors: Union[int, Tuple[int, int]]) -> None:
        if isinstance(factors, int):
            factors = (factors, factors)
        x, y = _checks.whole_numbers("binning", factors, 2)
        self._core.write_region(None, (x, y))

    binning = Setting(_get_binning, _set_binning)

    @property
    def trigger(self) -> str:
        """What starts a frame, from the next start on.

        "internal": the camera itself; "software": software_trigger(); "hardware": a signal at its trigger input
        (parameters HW_TRIG_SOURCE and HW_TRIG_POLARITY choose it).
        """
        if self._trigger == "software":
            return "software"
        return "hardware" if self._number("HW_TRIGGER_ACTIVE") else "internal"

    @trigger.setter
    def trigger(self, source: str) -> None:
        _checks.choice("trigger", source, _TRIGGERS)
        self._params["HW_TRIGGER_ACTIVE"].set(int(source == "hardware"))
        self._trigger = source

    def use_color(self, space: str = "srgb", format: str = "rgb16") -> ColorSetting:
        """Color pictures (height, width, 3) from now on.

        space: "srgb" as picture files have it, "linear" (CCIR 709 primaries, linear light), "xyz" (CIE XYZ), "sensor"
        (the sensor's channels, black level included). format: "rgb16" (uint16), "rgb8" (uint8) or "rgba8". Returns how
        they are made. Raises Refused for a monochrome camera and with binning.
        """
        _checks.choice("space", space, ("srgb", "linear", "xyz", "sensor"))
        _checks.choice("format", format, ("rgb16", "rgb8", "rgba8"))
        return self._core.use_color(_core.ColorSpace.__members__[space], _core.ColorFormat.__members__[format])

    def use_grey(self) -> None:
        """Grey samples (height, width) alone from now on."""
        self._core.use_grey()

    def set_averaging(self, frames: int) -> None:
        """From the next start on each frame is the mean of the last `frames`; 0 or 1 switches it off."""
        frames = _checks.frame_count("frames", frames, 0)
        self._core.set_averaging(frames)
        self._averaged = max(frames, 1)

    def set_calibration(self, on: bool) -> bool:
        """Switches the correction of the sensor's taps on or off.

        Returns False while the camera has nothing to correct with: open it with calibrated=True.
        """
        return self._core.set_calibration(on)

    def command(self, text: str) -> str:
        """Sends a text command and returns the reply. Raises TimeoutWithReason when none comes within 5 s."""
        return self._core.command(_checks.text("command", text))

    # ---- running ----

    def start(self, frames: int = 0) -> None:
        """Starts an acquisition of so many frames, 0: until stop(). Frames that still wait are dropped."""
        frames = _checks.frame_count("frames", frames, 0)
        self._core.start(frames, self._trigger if self._trigger == "software" else "")

    def stop(self) -> bool:
        """Stops it; True also when it was not running. False when the camera did not answer."""
        return self._core.stop()

    @property
    def running(self) -> bool:
        """Between start() and stop(), also when a sequence is over."""
        return self._core.running

    def software_trigger(self) -> None:
        """Takes one frame of an acquisition that was started with trigger "software"."""
        self._core.software_trigger()

    def wait(self, timeout: Optional[float] = None) -> Frame:
        """The next frame: every frame in order.

        timeout: seconds; None: as long as a frame may take by the camera's own figures, and ten seconds. Raises
        TimeoutWithReason, at once where no frame can come, or LinkLost. Ctrl-C ends the wait.
        """
        return self._core.wait(_checks.time_limit(timeout), False, False)  # type: ignore[return-value]

    def newest(self, timeout: Optional[float] = None) -> Frame:
        """As wait(), the newest frame that waits; older ones are passed over and counted. timeout: seconds."""
        return self._core.wait(_checks.time_limit(timeout), True, False)  # type: ignore[return-value]

    def snap(self, timeout: Optional[float] = None) -> Frame:
        """One frame; the camera is started (and triggered) and stopped for it when it is not running.

        timeout: seconds, as for wait().
        """
        if self.running:
            return self.wait(timeout)
        self.start()
        try:
            if self._trigger == "software":
                self.software_trigger()
            return self.wait(timeout)
        finally:
            if not self.closed:
                self.stop()

    def stream(self, frames: Optional[int] = None, *, newest: bool = False,
               timeout: Optional[float] = None) -> FrameStream:
        """An iterator of frames that starts the camera when it is not running and stops it at its end.

        frames: so many, None: as many as come. newest: the newest frame whenever the program is ready for one, instead
        of each. timeout: seconds for each frame, as in wait().
        """
        if frames is not None:
            frames = _checks.frame_count("frames", frames, 0)
        return FrameStream(self, frames, newest, _checks.time_limit(timeout))

    def interrupt(self) -> None:
        """Ends the wait for a frame that another thread is in, else the next one."""
        self._core.interrupt()

    def record(self, path: Path, frames: Optional[int] = None, *, seconds: Optional[float] = None,
               compression: str = "none", every: int = 1, split_frames: Optional[int] = None,
               pixel_size: Optional[float] = None, timeout: Optional[float] = None, overwrite: bool = False,
               force: bool = False, allow_loss: bool = False,
               progress: Optional[Callable[[RecordingProgress], Any]] = None) -> RecordingSummary:
        """Records every frame into an OME-TIFF file, which open_recording() reads.

        path: a name without the extension of a TIFF file gets ".ome.tif"; folders are made.
        frames, seconds: where it ends, whichever comes first; without them with Ctrl-C, interrupt() or the
        camera's own end. compression: "none", "zstd" (fast) or "deflate" (read by more programs), lossless, on as
        many threads as there are cores beside one. every: one frame of so many. split_frames: a new, numbered file
        after so many. pixel_size: micrometres from pixel to pixel in the object. timeout: seconds for each frame,
        as in wait(). progress: a function that is called about ten times a second.

        A camera that does not run is started and stopped for it, with a pool of up to 256 MB for what waits for the
        disk; one that runs goes on. A file that is there is left alone unless overwrite is True; a run that the
        disk is too small for does not begin unless force is True. However it ends, also by Ctrl-C, the file is
        complete with what came. Raises OutputError, LinkLost, TimeoutWithReason, and FramesLost where frames are
        missing and allow_loss is False.
        """
        return record(self, path, frames, seconds, compression, every, split_frames, pixel_size, timeout, overwrite,
                      force, allow_loss, progress)

    # ---- handlers ----

    def on_frame(self, handler: Optional[FrameHandler]) -> Optional[FrameHandler]:
        """Frames go to this function instead of wait(), from the next start on; None switches it off.

        It is called on a thread of the camera, which delivers nothing else meanwhile. What it raises is reported
        (sys.unraisablehook), and the next frames come all the same. Returns the function: usable as a decorator.
        """
        self._core.on_frame(_checks.handler(handler))
        self._handles_frames = handler is not None
        return handler

    def on_event(self, handler: Optional[EventHandler]) -> Optional[EventHandler]:
        """Calls a function with a CameraEvent: link lost and back, and the camera's own events; None switches it off.

        It is called on a thread of the camera. Returns the function: usable as a decorator.
        """
        if handler is None:
            self._core.on_event(None)
        else:
            called = _checks.handler(handler)
            self._core.on_event(lambda *event: called(CameraEvent(*event)))
        return handler

    # ---- counting ----

    @property
    def link_lost(self) -> bool:
        """Whether it was unplugged or switched off since it was opened, and is not back."""
        return self._core.link_lost

    @property
    def frames_held(self) -> int:
        """Frames of the pool that this program holds, arrays that show them included."""
        return self._core.frames_held

    @property
    def drops(self) -> Drops:
        """Frames since the start that did not reach the program, by cause."""
        return Drops(*self._core.drops)

    # ---- the end ----

    @property
    def closed(self) -> bool:
        """Whether close() was called."""
        return self._core.closed

    def close(self) -> None:
        """Stops the camera and closes it; waits of other threads end. Closing twice is no mistake.

        Frames that are still held stay valid; the camera can be opened again when the last of them is gone.
        """
        self._core.close()

    def __enter__(self) -> Camera:
        """Itself."""
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 traceback: Optional[TracebackType]) -> None:
        """Closes it."""
        self.close()

    def __repr__(self) -> str:
        """Which one it is, and what it does."""
        state = "closed" if self.closed else "running" if self.running else "stopped"
        return (f"<zel.Camera {self._info.number}: {self._info.name}, serial {self._info.serial}, "
                f"{self._info.interface_type}, {state}>")

    def _number(self, name: str) -> int:
        return int(self._params[name].value)
