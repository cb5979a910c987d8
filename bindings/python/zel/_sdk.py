"""Finding cameras and opening them."""
from __future__ import annotations

import threading
from os import PathLike, fspath
from types import TracebackType
from typing import Any, Callable, List, Optional, Tuple, Type, TypeVar, Union

from . import _checks, _core
from ._camera import Camera
from ._errors import InvalidArgument
from ._types import CameraInfo, HotPlugEvent

HotPlugHandler = TypeVar("HotPlugHandler", bound=Callable[[HotPlugEvent], Any])


class Sdk:
    """The opened SDK. Several may exist, and cameras keep it open, too; most programs do without: see open().

    Any thread may call its operations.
    """

    def __init__(self) -> None:
        """Opens the SDK."""
        self._core = _core.Sdk()

    @property
    def cameras(self) -> List[CameraInfo]:
        """The cameras that a search finds now, at most 8. Running ones are not disturbed."""
        return [CameraInfo(*facts) for facts in self._core.cameras()]

    def open(self, wanted: Union[int, str, CameraInfo] = 0, *, calibrated: bool = False) -> Camera:
        """Opens a camera, by default the first one.

        wanted: its number, its serial number, or its description. calibrated: with the tables that even out its taps,
        which takes a while. Raises NoCamera, which names the cameras there are, and Refused when this program has it
        open.
        """
        if isinstance(wanted, CameraInfo):
            wanted = wanted.number
        if isinstance(wanted, bool) or not isinstance(wanted, (int, str)):
            raise InvalidArgument(f"no camera {wanted!r}", "neither a number nor a serial number",
                                  "give an int or a str")
        return Camera(self._core.open(str(wanted), calibrated))

    def on_hot_plug(self, handler: Optional[HotPlugHandler]) -> Optional[HotPlugHandler]:
        """Calls a function with a HotPlugEvent when a camera is plugged in or unplugged; None switches it off.

        There is one for the whole program, the one set last, and it goes with its Sdk. It is called on a thread of the
        SDK; what it raises is reported (sys.unraisablehook). Returns the function: usable as a decorator.
        """
        if handler is None:
            self._core.on_hot_plug(None)
        else:
            called = _checks.handler(handler)

            def event(connected: bool, facts: Tuple[int, str, str, str, Tuple[str, ...]]) -> None:
                called(HotPlugEvent(connected, CameraInfo(*facts)))
            self._core.on_hot_plug(event)
        return handler

    @property
    def version(self) -> str:
        """One line for the SDK and one for each interface library."""
        return self._core.version

    @property
    def closed(self) -> bool:
        """Whether close() was called."""
        return self._core.closed

    def close(self) -> None:
        """Lets go of the SDK, which ends with its last camera. Closing twice is no mistake."""
        self._core.close()

    def __enter__(self) -> Sdk:
        """Itself."""
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 traceback: Optional[TracebackType]) -> None:
        """Closes it."""
        self.close()

    def __repr__(self) -> str:
        """Whether it is open."""
        return f"<zel.Sdk, {'closed' if self.closed else 'open'}>"


_lock = threading.Lock()
_shared: Optional[Sdk] = None


def _sdk() -> Sdk:
    """The SDK of open() and cameras(), kept for good: opening it loads the interface libraries."""
    global _shared
    with _lock:
        if _shared is None:
            _shared = Sdk()
        return _shared


def cameras() -> List[CameraInfo]:
    """The cameras that a search finds now, at most 8. Running ones are not disturbed."""
    return _sdk().cameras


def open(wanted: Union[int, str, CameraInfo] = 0, *, calibrated: bool = False) -> Camera:
    """Opens a camera, by default the first one.

    wanted: its number, its serial number, or its description. calibrated: with the tables that even out its taps,
    which takes a while. Raises NoCamera, which names the cameras there are, and Refused when this program has it open.
    """
    return _sdk().open(wanted, calibrated=calibrated)


def use_plugins(folder: Union[str, PathLike[str]]) -> str:
    """Has the cameras of this program come from the interface libraries of a folder, before the first one is looked for.

    folder: a path from the root on, or the name of an installed set: "sim", the simulated cameras, or "gige", GigE
    Vision cameras on the network. Returns the folder's path. Raises InvalidArgument for what is no such folder, Refused
    when it is too late, Error when a library of it can't be loaded.
    """
    return _core.use_plugins(fspath(folder))
