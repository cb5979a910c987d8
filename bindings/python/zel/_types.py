"""Small values of the package."""
from __future__ import annotations

from typing import TYPE_CHECKING, Any, Callable, Generic, NamedTuple, Optional, Tuple, TypeVar

from ._core import EventKind

if TYPE_CHECKING:
    Got = TypeVar("Got", covariant=True)
    Given = TypeVar("Given", contravariant=True)

    class Setting(Generic[Got, Given]):
        """A property that takes more than it answers: camera.roi = None."""

        def __init__(self, get: Callable[[Any], Got], set: Callable[[Any, Given], None]) -> None: ...
        def __get__(self, owner: object, kind: Any = None) -> Got: ...
        def __set__(self, owner: object, value: Given) -> None: ...
else:
    Setting = property


class CameraInfo(NamedTuple):
    """How the search describes a camera, without opening it."""

    number: int
    """0 to 7, what open() takes."""
    name: str
    """The name kept in the camera, or its model."""
    serial: str
    """Serial number; empty when the camera tells none. open() takes it, too."""
    interface_type: str
    """Kind of link: "Camera Link", "GigE", "USB 3.0", ..."""
    addresses: Tuple[str, ...]
    """Where it hangs, at most three texts; empty in hot-plug events."""


class Region(NamedTuple):
    """A rectangle of the sensor, in sensor pixels."""

    x: int
    """Left edge, counted from 0."""
    y: int
    """Upper edge, counted from 0."""
    width: int
    """Pixels of a row."""
    height: int
    """Rows."""


class Binning(NamedTuple):
    """So many sensor pixels become one."""

    x: int
    """Side by side."""
    y: int
    """Below each other."""


class RegionAndBinning(NamedTuple):
    """The value of ROI_BIN, in sensor pixels."""

    x: int
    """Left edge, counted from 0."""
    y: int
    """Upper edge, counted from 0."""
    width: int
    """Sensor pixels of a row."""
    height: int
    """Sensor rows."""
    xbin: int
    """Pixels side by side that become one."""
    ybin: int
    """Pixels below each other that become one."""


class ParameterRange(NamedTuple):
    """What a number accepts, both bounds included, in the parameter's unit."""

    minimum: int
    """Smallest value."""
    maximum: int
    """Largest value."""


class SetResult(NamedTuple):
    """What became of a write that the camera took."""

    requested: str
    """The value that was asked for, as text."""
    actual: object
    """The value as read back, of the parameter's type; None for what can't be read."""
    range: Optional[ParameterRange]
    """What the camera takes; None when it states nothing."""
    unit: str
    """Unit of value and range; empty without one."""


class Drops(NamedTuple):
    """Frames since the start that did not reach the program, by cause."""

    link: int
    """Lost on the link, as the camera's interface counts them."""
    no_buffer: int
    """Arrived while no image buffer was free."""
    skipped: int
    """Passed over on purpose for a newer frame."""

    @property
    def total(self) -> int:
        """All of them."""
        return self.link + self.no_buffer + self.skipped


class HotPlugEvent(NamedTuple):
    """A camera was plugged in or unplugged."""

    connected: bool
    """False: unplugged."""
    camera: CameraInfo
    """Which one; after a connect open(camera.number) opens it."""


class CameraEvent(NamedTuple):
    """What happened to an open camera."""

    kind: EventKind
    """Link lost, link back, or an event of the camera itself."""
    code: int
    """Of the camera's own event, 0 to 5."""
    value: int
    """Sent with it."""
    values: Tuple[int, ...]
    """Eight more, sent with it."""
