"""Recordings: files of frames that are read as arrays."""
from __future__ import annotations

import bisect
import datetime
import json
import math
import operator
import os
import pathlib
import re
from types import TracebackType
from typing import (Any, Dict, Iterable, Iterator, List, NamedTuple, Optional, Sequence, Tuple, Type, Union,
                    overload)

import numpy
from numpy.typing import DTypeLike, NDArray

from . import _core
from ._errors import Closed, InvalidArgument
from ._types import Binning, Region

Path = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]

_EXTENSION = re.compile(r"(\.ome)?\.(tif|tiff|btf)$", re.IGNORECASE)


class Gap(NamedTuple):
    """Frames that are missing between two that are there."""

    frame: int
    """Index of the frame behind the gap."""
    after: int
    """Number of the frame before it."""
    missing: int
    """Frames."""
    arrival: float
    """When the frame behind came: seconds as in Recording.arrival."""


class Lost(NamedTuple):
    """Frames that are missing from a recording, by cause."""

    link: int
    """Lost on the link, as the camera's interface counts them."""
    no_buffer: int
    """Arrived while no image buffer was free."""
    disk: int
    """That the disk was too slow for."""

    @property
    def total(self) -> int:
        """All of them."""
        return self.link + self.no_buffer + self.disk


class RecordingInfo(NamedTuple):
    """What does not change during a recording; empty, 0 or None: another program's file does not tell."""

    camera: str
    """The name kept in the camera, or its model."""
    serial: str
    """Its serial number."""
    model: str
    """Its model."""
    firmware: str
    """Version of its firmware."""
    interface_type: str
    """Kind of link: "Camera Link", "GigE", "USB 3.0", ..."""
    bits: int
    """Significant bits of a sample: the largest value is 2**bits - 1."""
    cfa_phase: int
    """Color of the top-left sample: 0 monochrome, 1 red, 2 blue, 3 green beside red, 4 green beside blue."""
    roi: Region
    """Part of the sensor, in sensor pixels."""
    binning: Binning
    """So many sensor pixels are one."""
    averaged: int
    """Frames that each frame is the mean of; 1: it is one."""
    corrected: bool
    """Whether the correction of the sensor's taps was on."""
    pixel_size: Optional[float]
    """Micrometres from pixel to pixel in the object; None: not known."""
    frame_rate: Optional[float]
    """Frames per second by the camera's settings; None: not known."""
    software: str
    """What recorded it, with its version."""
    started: Optional[datetime.datetime]
    """UTC, by the host's clock on the wall; arrivals count from then on."""
    session: str
    """The same for all files that were recorded together."""


class RecordedFrame:
    """One frame of a recording: what is known about it, and its samples when they are asked for."""

    __slots__ = ("_recording", "_index")

    def __init__(self, recording: Recording, index: int) -> None:
        """Made by Recording.frames."""
        self._recording = recording
        self._index = index

    @property
    def index(self) -> int:
        """Its index in the recording, from 0 on."""
        return self._index

    @property
    def number(self) -> int:
        """Its number since the camera was started; a hole is a lost frame."""
        return int(self._recording.numbers[self._index])

    @property
    def exposure(self) -> float:
        """Exposure time in seconds; NaN: not known."""
        return float(self._recording.exposure[self._index])

    @property
    def gain(self) -> int:
        """Amplifier gain, in the camera's steps."""
        return int(self._recording.gain[self._index])

    @property
    def arrival(self) -> float:
        """When it came: seconds as in Recording.arrival."""
        return float(self._recording.arrival[self._index])

    @property
    def camera_ms(self) -> int:
        """Its own time stamp: milliseconds of a monotonic clock, modulo 2**32."""
        return int(self._recording.camera_ms[self._index])

    @property
    def pixels(self) -> NDArray[numpy.uint16]:
        """Its samples, (height, width) uint16, read anew each time."""
        return self._recording[self._index]

    def __array__(self, dtype: DTypeLike = None) -> NDArray[Any]:
        """Its samples, for numpy.asarray()."""
        return self.pixels if dtype is None else self.pixels.astype(dtype)

    def __repr__(self) -> str:
        """Which one it is."""
        return f"<zel.RecordedFrame {self._index}: number {self.number}, exposure {self.exposure:g} s>"


class RecordedFrames(Sequence[RecordedFrame]):
    """The frames of a recording one by one, without their samples."""

    def __init__(self, recording: Recording) -> None:
        """Made by Recording.frames."""
        self._recording = recording

    def __len__(self) -> int:
        """How many there are."""
        return len(self._recording)

    @overload
    def __getitem__(self, index: int) -> RecordedFrame: ...

    @overload
    def __getitem__(self, index: slice) -> List[RecordedFrame]: ...

    def __getitem__(self, index: Union[int, slice]) -> Union[RecordedFrame, List[RecordedFrame]]:
        """One of them, or a list."""
        chosen = range(len(self))[index]
        if isinstance(chosen, range):
            return [RecordedFrame(self._recording, i) for i in chosen]
        return RecordedFrame(self._recording, chosen)


class Recording:
    """A recording: an array (frames, height, width) of uint16, whose frames are read when they are asked for.

    recording[3] is one frame, recording[10:20, 100:200, ::2] a part of ten of them, recording[[1, 5]] and
    recording[recording.exposure > 0.01] are chosen ones; numpy.asarray(recording) reads all. Only what is
    asked for is in memory. Any thread may read; the interpreter's lock is not held meanwhile. Made by
    open_recording().
    """

    def __init__(self, paths: Sequence[Path]) -> None:
        """Of one file, or of several of one camera and one session, in any order."""
        self._open([os.fsencode(path) for path in paths])

    def _open(self, names: List[bytes]) -> None:
        parts = []
        for name in names:
            file = _core.RecordingFile(name)
            parts.append((file.metadata(), name, file))
        _require_one_recording([(name, file) for _, name, file in parts])
        parts.sort(key=lambda part: int(part[0][0]["host_ns"]))
        self._process = os.getpid()
        self._names = [name for _, name, _ in parts]
        self._cores = [file for _, _, file in parts]
        self._table = numpy.concatenate([table for table, _, _ in parts])
        self._table.flags.writeable = False
        self._begins = numpy.cumsum([0] + [len(table) for table, _, _ in parts]).tolist()
        self._facts: Dict[str, Any] = json.loads(self._cores[0].facts)
        self._recorded = self._cores[0].is_recording
        self._ends = [json.loads(file.end) if file.end else None for file in self._cores]
        self._cut_off = [file.cut_off for file in self._cores]
        self._closed = False

    def _files(self) -> List[_core.RecordingFile]:
        """The open files; in a forked process files of its own, since these share their position with it."""
        if self._process != os.getpid():
            self._left_behind = self._cores
            self._cores = [_core.RecordingFile(name) for name in self._names]
            self._process = os.getpid()
        return self._cores

    # ---- the array ----

    def __len__(self) -> int:
        """Frames."""
        return len(self._table)

    @property
    def shape(self) -> Tuple[int, int, int]:
        """(frames, height, width)."""
        return len(self._table), self._facts["height"], self._facts["width"]

    @property
    def ndim(self) -> int:
        """3."""
        return 3

    @property
    def dtype(self) -> numpy.dtype[numpy.uint16]:
        """uint16; `info.bits` of them are used."""
        return numpy.dtype(numpy.uint16)

    @property
    def size(self) -> int:
        """Samples of all frames."""
        return math.prod(self.shape)

    @property
    def nbytes(self) -> int:
        """Bytes that all frames take in memory."""
        return self.size * 2

    @overload
    def __getitem__(self, key: int) -> NDArray[numpy.uint16]: ...

    @overload
    def __getitem__(self, key: Any) -> Any: ...

    def __getitem__(self, key: Any) -> Any:
        """Reads frames: recording[frames, rows, columns].

        Frames are chosen by a whole number, a slice, a list or an array of indices or booleans, rows and
        columns by whole numbers and slices; the rules are NumPy's. The result has the samples, uint16.
        """
        if type(key) is int:
            return self._read(self._index_of(key), self._picture())
        first, rest = _split_key(key)
        if not isinstance(first, slice) and numpy.ndim(first) == 0:
            return self._read(self._index_of(first), self._picture())[rest]
        if not isinstance(first, slice) and numpy.asarray(first).dtype == bool and numpy.ndim(first) > 1:
            raise IndexError("a mask of samples needs all frames: numpy.asarray(recording)[mask]")
        chosen = numpy.arange(len(self))[first]
        picture = self._picture()
        parts = numpy.empty((chosen.size, *picture[rest].shape), numpy.uint16)
        whole = all(item == slice(None) for item in rest)
        for place, index in enumerate(chosen.flat):
            if whole:
                self._read(int(index), parts[place])
            else:
                parts[place] = self._read(int(index), picture)[rest]
        return parts.reshape(chosen.shape + parts.shape[1:])

    def _index_of(self, index: Any) -> int:
        try:
            if isinstance(index, (bool, numpy.bool_)):
                raise TypeError
            place = operator.index(index)
        except TypeError:
            raise IndexError(f"frames are chosen by number, slice, list or array: {index!r}") from None
        if not -len(self) <= place < len(self):
            raise IndexError(f"there is no frame {place}: the recording has {len(self)}")
        return place % len(self)

    def _picture(self) -> NDArray[numpy.uint16]:
        return numpy.empty(self.shape[1:], numpy.uint16)

    def __iter__(self) -> Iterator[NDArray[numpy.uint16]]:
        """One frame after the other, (height, width) each."""
        return (self[index] for index in range(len(self)))

    def __array__(self, dtype: DTypeLike = None) -> NDArray[Any]:
        """All of it in memory, for numpy.asarray()."""
        samples: NDArray[numpy.uint16] = self[:]
        return samples if dtype is None else samples.astype(dtype)

    def _read(self, index: int, into: NDArray[numpy.uint16]) -> NDArray[numpy.uint16]:
        self._require_open()
        file = bisect.bisect_right(self._begins, index) - 1
        self._files()[file].read(index - self._begins[file], into)
        return into

    # ---- what is known about the frames ----

    @property
    def frames(self) -> RecordedFrames:
        """The frames one by one: frames[3].exposure, frames[3].pixels."""
        return RecordedFrames(self)

    @property
    def numbers(self) -> NDArray[numpy.uint32]:
        """(frames,) uint32: the frames' numbers since the camera was started; a hole is a lost frame."""
        return self._column("number")

    @property
    def exposure(self) -> NDArray[numpy.float64]:
        """(frames,) float64: exposure times in seconds; NaN where another program's file does not tell."""
        return self._known(self._column("exposure_us") / 1e6)

    @property
    def gain(self) -> NDArray[numpy.int32]:
        """(frames,) int32: amplifier gains, in the camera's steps."""
        return self._column("gain")

    @property
    def arrival(self) -> NDArray[numpy.float64]:
        """(frames,) float64: arrival by the host's steady clock, in seconds from `info.started` on.

        It is one clock for all recordings of one session. NaN where another program's file does not tell.
        """
        return self._known(self._column("host_ns") / 1e9)

    @property
    def arrival_utc(self) -> NDArray[numpy.datetime64]:
        """(frames,) datetime64[ns]: the same as UTC, by the wall's clock when it began; NaT: not known."""
        begin = "NaT" if self.info.started is None else self.info.started.replace(tzinfo=None).isoformat()
        since: NDArray[numpy.timedelta64] = self._column("host_ns").astype("m8[ns]")
        return numpy.datetime64(begin, "ns") + since

    @property
    def camera_ms(self) -> NDArray[numpy.uint32]:
        """(frames,) uint32: the frames' own time stamps, milliseconds of a monotonic clock, modulo 2**32."""
        return self._column("arrival_ms")

    def _column(self, name: str) -> NDArray[Any]:
        column: NDArray[Any] = self._table[name]
        return column

    def _known(self, values: NDArray[numpy.float64]) -> NDArray[numpy.float64]:
        return values if self._recorded else numpy.full(len(self), numpy.nan)

    @property
    def gaps(self) -> Tuple[Gap, ...]:
        """Where frames are missing; those that were left out on purpose (`every`) are not."""
        numbers = self.numbers
        passes_over = any(end is None or end["passed_over"] > 0 for end in self._ends)
        found = _core.find_gaps(numbers, passes_over)[1] if self._recorded else []
        return tuple(Gap(frame, int(numbers[frame - 1]), missing, float(self.arrival[frame]))
                     for frame, missing in found)

    @property
    def missing(self) -> int:
        """Frames that are missing in all gaps."""
        return sum(gap.missing for gap in self.gaps)

    # ---- what is known about all of it ----

    @property
    def files(self) -> Tuple[pathlib.Path, ...]:
        """Its files, in the order of time."""
        return tuple(pathlib.Path(os.fsdecode(name)) for name in self._names)

    @property
    def info(self) -> RecordingInfo:
        """Camera, settings, session."""
        facts = self._facts
        binning = Binning(facts["x_bin"], facts["y_bin"])
        region = Region(facts["x_origin"], facts["y_origin"], facts["width"] * binning.x,
                        facts["height"] * binning.y)
        return RecordingInfo(facts["camera"], facts["serial"], facts["model"], facts["firmware"],
                             facts["link"], facts["bits"], facts["cfa_phase"], region, binning,
                             max(facts["averaged"], 1), facts["corrected"],
                             facts["pixel_um"] if facts["pixel_um"] > 0 else None,
                             facts["frames_per_second"] or None, facts["software"], _moment(facts["started"]),
                             facts["session"])

    @property
    def complete(self) -> bool:
        """Whether every file has all the frames that it says it has: none was cut off, as by a crash."""
        return not self.cut_off

    @property
    def cut_off(self) -> str:
        """Why it is not complete; empty when it is."""
        for begin, end, file_end, cut_off in zip(self._begins, self._begins[1:], self._ends, self._cut_off):
            if cut_off:
                return cut_off
            if self._recorded and file_end is None:
                return "it was not ended"
            if file_end is not None and file_end["frames"] != end - begin:
                return f"it says that it has {file_end['frames']} frames"
        return ""

    @property
    def ended(self) -> Optional[str]:
        """Why it ended: "frames", "seconds", "interrupted", "disk full", "link lost", ...; None: cut off."""
        last = self._ends[-1]
        return None if last is None else str(last["reason"])

    @property
    def lost(self) -> Optional[Lost]:
        """Frames lost between the first and the last one, by cause; None: not known (`missing` is)."""
        ends = [end for end in self._ends if end is not None]
        return lost_of(ends) if len(ends) == len(self._ends) else None

    # ---- the end ----

    @property
    def closed(self) -> bool:
        """Whether close() was called."""
        return self._closed

    def close(self) -> None:
        """Closes its files, as soon as nobody reads. What was read stays. Closing twice is no mistake."""
        self._closed = True
        for file in self._files():
            file.close()

    def __enter__(self) -> Recording:
        """Itself."""
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 traceback: Optional[TracebackType]) -> None:
        """Closes it."""
        self.close()

    def __reduce__(self) -> Tuple[Any, ...]:
        """Another process opens the files itself."""
        return Recording, (self._names,)

    def __repr__(self) -> str:
        """What it is."""
        count, height, width = self.shape
        name = os.path.basename(os.fsdecode(self._names[0])) + (" ..." if len(self._names) > 1 else "")
        state = "closed" if self.closed else "complete" if self.complete else f"cut off: {self.cut_off}"
        bits = self._facts["bits"]
        return f"<zel.Recording {name}: {count} frames of {width} x {height}, {bits} bits, {state}>"

    def _require_open(self) -> None:
        if self._closed:
            raise Closed(f"the recording '{os.fsdecode(self._names[0])}' is closed", "", "open it again")


def open_recording(path: Union[Path, Iterable[Path]]) -> Recording:
    """Opens what `zelcam record` or Camera.record() wrote, or another program's stack of grey TIFF pictures.

    path: a file, or the name that was recorded into, whose extension and numbered files are found; or several
    files of one camera and one session, which are joined in the order of time. A recording that was cut off
    opens with the frames that are whole. Raises Error with the file's name and what is wrong with it.
    """
    if isinstance(path, (str, bytes, os.PathLike)):
        return Recording(_files_of(os.fsdecode(path)))
    names = list(path)
    if not names:
        raise InvalidArgument("no files to open", "", "give the name of a recording")
    return Recording(names)


def _files_of(name: str) -> List[str]:
    """The file of this name, or those that a recording into it made."""
    whole = name if _EXTENSION.search(name) else name + ".ome.tif"
    for there in (name, whole):
        if os.path.exists(there):
            return [there]
    folder, base = os.path.split(whole)
    extension = _EXTENSION.search(base)
    assert extension is not None
    numbered = re.compile(re.escape(base[:extension.start()]) + r"_\d{4,}" + re.escape(extension.group()))
    try:
        found = sorted(entry for entry in os.listdir(folder or ".") if numbered.fullmatch(entry))
    except OSError:
        found = []
    return [os.path.join(folder, entry) for entry in found] or [name]


def _require_one_recording(files: List[Tuple[bytes, _core.RecordingFile]]) -> None:
    """Whether several files may be read as one."""
    shared = ("session", "serial", "width", "height", "bits")
    facts = [json.loads(file.facts) for _, file in files]
    for (name, file), own in zip(files[1:], facts[1:]):
        other = next((key for key in shared if own[key] != facts[0][key]), None)
        if other is None and file.is_recording:
            continue
        raise InvalidArgument(
            "the files are not one recording",
            f"'{os.fsdecode(name)}' has another {other or 'kind'} than '{os.fsdecode(files[0][0])}'",
            "open them one by one")


def _split_key(key: Any) -> Tuple[Any, Tuple[Any, ...]]:
    """What is chosen of the frames, and of each picture."""
    items = list(key) if isinstance(key, tuple) else [key]
    dots = [place for place, item in enumerate(items) if item is Ellipsis]
    if len(dots) > 1 or len(items) - len(dots) > 3:
        raise IndexError("a recording has three axes: frames, rows, columns")
    for place in dots:
        items[place:place + 1] = [slice(None)] * (4 - len(items))
    if any(not isinstance(item, slice) and (item is None or numpy.ndim(item) > 0) for item in items[1:]):
        raise IndexError("rows and columns take whole numbers and slices; choose more from what was read")
    return items[0] if items else slice(None), tuple(items[1:])


def _moment(text: str) -> Optional[datetime.datetime]:
    try:
        return datetime.datetime.fromisoformat(text.replace("Z", "+00:00"))
    except ValueError:
        return None


def lost_of(ends: List[Dict[str, Any]]) -> Lost:
    """The sum of what the ends of several files tell."""
    return Lost(*(sum(int(end[key]) for end in ends) for key in ("lost_link", "lost_buffer", "lost_disk")))
