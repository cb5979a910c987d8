"""Frames of a running camera, one after the other."""
from __future__ import annotations

from types import TracebackType
from typing import TYPE_CHECKING, Iterator, Optional, Type

from ._core import Frame

if TYPE_CHECKING:
    from ._camera import Camera


class FrameStream(Iterator[Frame]):
    """An iterator of frames that starts the camera when it is not running, and stops it again at its end.

    It ends after its frames, at the end of a sequence, and when Camera.interrupt() is called. Where no frame comes for
    another reason it raises TimeoutWithReason or LinkLost. A stream that is left half-way stops the camera when it is
    closed, at the end of its `with` block, or when nobody refers to it any more.
    """

    def __init__(self, camera: Camera, frames: Optional[int], newest: bool, timeout: Optional[float]) -> None:
        """Made by Camera.stream(); nothing is started before the first frame is asked for."""
        self._camera = camera
        self._core = camera._core
        self._frames = frames
        self._newest = newest
        self._timeout = timeout
        self._count = 0
        self._begun = False
        self._started = False

    @property
    def count(self) -> int:
        """Frames handed over so far."""
        return self._count

    def __iter__(self) -> FrameStream:
        """Itself."""
        return self

    def __next__(self) -> Frame:
        """The next frame."""
        if not self._begun:
            self._begin()
        if self._frames is not None and self._count >= self._frames:
            self.close()
            raise StopIteration
        try:
            frame = self._core.wait(self._timeout, self._newest, True)
        except BaseException:
            self.close()
            raise
        if frame is None:
            self.close()
            raise StopIteration
        self._count += 1
        if self._count == self._frames:
            self.close()
        return frame

    def _begin(self) -> None:
        self._begun = True
        if self._frames != 0 and not self._core.running:
            self._camera.start()
            self._started = True

    def close(self) -> None:
        """Ends the stream; stops the camera when the stream started it."""
        self._begun = True
        self._frames = self._count
        if self._started:
            self._started = False
            if not self._core.closed:
                self._core.stop()

    def __enter__(self) -> FrameStream:
        """Itself."""
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 traceback: Optional[TracebackType]) -> None:
        """Closes it."""
        self.close()

    def __del__(self) -> None:
        """Closes it."""
        try:
            self.close()
        except Exception:  # it can't be told anybody
            pass
