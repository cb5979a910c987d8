"""The errors of the package: one base class, and a class for each thing a program may react to."""
from __future__ import annotations

from typing import Any, Optional, Tuple

from ._core import Reason


class Error(Exception):
    """Something that was asked for could not be had.

    Its text is one line, "problem: why; hint"; empty parts are left out.
    """

    def __init__(self, problem: str, why: str = "", hint: str = "") -> None:
        """Made of its parts."""
        super().__init__(problem + (": " + why if why else "") + ("; " + hint if hint else ""))
        self.problem = problem
        self.why = why
        self.hint = hint

    def __str__(self) -> str:
        """All of it in one line."""
        return str(self.args[0]) if self.args else ""


class InvalidArgument(Error, ValueError):
    """A name, number or text that can't be meant; nothing was sent to a camera."""


class UnknownName(InvalidArgument, KeyError, AttributeError):
    """No parameter has this name; the hint has the nearest ones."""


class NoCamera(Error):
    """There is no such camera, or it can't be opened."""


class _Unset(Error):
    """What may have been a parameter that was to be set."""

    parameter: Optional[str] = None
    """Name of the parameter that was to be set; None where it was none."""
    requested: Optional[str] = None
    """The value that was asked for, as text."""
    actual: Any = None
    """The value that the camera has now, or that was read last; None when it can't be read."""
    range: Optional[Tuple[int, int]] = None
    """Smallest and largest value, in the parameter's unit; None when the camera states none."""
    unit: str = ""
    """Unit of value and range; empty without one."""


class Refused(_Unset):
    """The camera or the SDK refused a value, a command or the start."""


class TimeoutWithReason(Error, TimeoutError):
    """No frame came in time."""

    reason: Reason = Reason.SILENT
    """Why."""


class LinkLost(_Unset, ConnectionError):
    """The camera was unplugged or switched off."""

    reason: Reason = Reason.LINK_LOST
    """Why no frame came."""


class OutputError(Error, OSError):
    """A file can't be written."""


class Closed(Error):
    """What was used has been closed or released before."""


class Forked(Error):
    """This process was forked from one that uses the SDK, whose threads did not come along."""
