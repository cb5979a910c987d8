"""Recording a camera's frames into files."""
from __future__ import annotations

import json
import os
import pathlib
import time
from typing import TYPE_CHECKING, Any, Callable, NamedTuple, Optional, Tuple

from . import _checks, _core
from ._errors import Error, InvalidArgument, Refused
from ._recording import Lost, Path, Recording, lost_of

if TYPE_CHECKING:
    from ._camera import Camera

_COMPRESSIONS = ("none", "zstd", "deflate")
_LOOK = 0.05  # seconds from one look for signals to the next
_BETWEEN_PROGRESS = 0.1
# Memory of the pool; what waits for the disk lies in it.
_POOL_BYTES = 256 << 20
_LEAST_BUFFERS, _MOST_BUFFERS = 16, 256
# A camera that waits for its trigger input may wait long.
_TRIGGER_WAIT = 86400.0


class RecordingProgress(NamedTuple):
    """How far a recording is."""

    frames: int
    """Frames that came and are kept."""
    written: int
    """Of these, frames in the file."""
    waiting: int
    """Frames in memory."""
    bytes: int
    """Size of the files so far."""
    lost_disk: int
    """Frames that the disk was too slow for."""
    passed_over: int
    """Frames left out on purpose (every)."""
    seconds: float
    """From the first frame to the last one."""


class RecordingSummary(NamedTuple):
    """What became of a recording."""

    files: Tuple[pathlib.Path, ...]
    """Its files, in the order of time; none when no frame came."""
    frames: int
    """Frames in them."""
    bytes: int
    """Size of all files."""
    seconds: float
    """From the first frame to the last one."""
    lost: Lost
    """Frames missing between the first and the last one, by cause."""
    passed_over: int
    """Frames left out on purpose (every)."""
    ended: str
    """Why: "frames", "seconds", "interrupted", "sequence over", "stopped", "disk full", "link lost", ..."""

    @property
    def frame_rate(self) -> float:
        """Frames per second that were kept; 0: not known."""
        return (self.frames - 1) / self.seconds if self.seconds > 0 else 0.0

    @property
    def complete(self) -> bool:
        """Whether no frame between the first and the last one was lost."""
        return self.lost.total == 0

    def open(self) -> Recording:
        """Opens it for reading."""
        return Recording(self.files)


class FramesLost(Error):
    """Frames between the recorded ones went missing."""

    summary: Optional[RecordingSummary] = None
    """What was recorded; its files are complete."""


def record(camera: Camera, path: Path, frames: Optional[int], seconds: Optional[float], compression: str,
           every: int, split_frames: Optional[int], pixel_size: Optional[float], timeout: Optional[float],
           overwrite: bool, force: bool, allow_loss: bool,
           progress: Optional[Callable[[RecordingProgress], Any]]) -> RecordingSummary:
    """Camera.record()."""
    _checks.choice("compression", compression, _COMPRESSIONS)
    _checks.handler(progress)
    if overwrite and split_frames is not None:
        raise InvalidArgument("overwrite with split_frames", "numbered files begin past those that are there",
                              "use one of them")
    if camera._handles_frames:
        raise Refused(f"{camera.label} can't be recorded", "its frames go to a handler",
                      "call on_frame(None) before")
    if timeout is None and camera.trigger == "hardware":
        timeout = _TRIGGER_WAIT
    run = _core.RecordingRun(camera._core, os.fsencode(path), frames=_checks.frame_count("frames", frames, 1),
                             seconds=_checks.positive("seconds", seconds), compression=compression,
                             every=_checks.frame_count("every", every, 1),
                             split_frames=_checks.frame_count("split_frames", split_frames, 1),
                             pixel_um=_checks.positive("pixel_size", pixel_size), averaged=camera._averaged,
                             timeout=_checks.positive("timeout", timeout), overwrite=bool(overwrite),
                             force=bool(force))
    if not camera._being_recorded.acquire(blocking=False):
        raise Refused(f"{camera.label} can't be recorded", "another thread records it", "wait for that one")
    try:
        _record(camera, run, progress)
        summary = _summary_of(run)
        run.check()
    except BaseException as error:
        error.add_note(_note(_summary_of(run)))
        raise
    finally:
        camera._being_recorded.release()
    if summary.complete or allow_loss:
        return summary
    lost = FramesLost(f"{summary.lost.total} frames went missing between those recorded",
                      f"{summary.lost.link} on the link, {summary.lost.no_buffer} without a free buffer, "
                      f"{summary.lost.disk} to the disk",
                      "use a faster disk, more buffers, a longer exposure or `every`, or accept it with "
                      "allow_loss=True")
    lost.summary = summary
    raise lost


def _record(camera: Camera, run: _core.RecordingRun,
            progress: Optional[Callable[[RecordingProgress], Any]]) -> None:
    """Until it is over, and its files are complete."""
    buffers: Optional[int] = None
    started = False
    reason = "ended"
    try:
        if not camera.running:
            buffers = _widen_pool(camera)
            started = True
            camera.start()
        run.begin()
        told = time.monotonic()
        while not run.wait(_LOOK):
            if progress is not None and time.monotonic() - told >= _BETWEEN_PROGRESS:
                told = time.monotonic()
                progress(RecordingProgress(*run.status()))
    except KeyboardInterrupt:
        reason = "interrupted"
        raise
    finally:
        run.end(reason)
        run.finish()
        if not camera.closed:
            if started:
                camera.stop()
            if buffers is not None and not camera.link_lost:
                camera.buffers = buffers


def _widen_pool(camera: Camera) -> Optional[int]:
    """Buffers for what shall wait in memory. Returns how many there were; None when that was not changed."""
    width, height = camera.sensor_size
    wanted = min(max(_POOL_BYTES // max(width * height * 2, 1), _LEAST_BUFFERS), _MOST_BUFFERS)
    before = camera.buffers
    # Frames that are held lie in the pool as it is.
    if before >= wanted or camera.frames_held > 0:
        return None
    camera.buffers = wanted
    return before


def _summary_of(run: _core.RecordingRun) -> RecordingSummary:
    told = [(pathlib.Path(os.fsdecode(name)), size, json.loads(end)) for name, size, end in run.files()]
    ends = [end for _, _, end in told]
    status = RecordingProgress(*run.status())
    return RecordingSummary(tuple(name for name, _, _ in told), sum(end["frames"] for end in ends),
                            sum(size for _, size, _ in told), status.seconds, lost_of(ends),
                            sum(end["passed_over"] for end in ends), str(ends[-1]["reason"]) if ends else "")


def _note(summary: RecordingSummary) -> str:
    if not summary.files:
        return "nothing was recorded"
    return f"{summary.frames} frames were recorded: {', '.join(map(str, summary.files))}"
