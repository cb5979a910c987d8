"""What a caller's arguments must be: whatever can't be meant raises InvalidArgument, before a camera hears of it."""
from __future__ import annotations

import math
import operator
from typing import Any, Optional, Tuple

from ._errors import InvalidArgument

_MOST_FRAMES = 1000000000
_LONGEST = 1e9


def choice(what: str, value: Any, choices: Tuple[str, ...]) -> str:
    """One of a few words."""
    if isinstance(value, str) and value in choices:
        return value
    raise InvalidArgument(f"{what}: {value!r}", "no such choice", "choose one of " + ", ".join(choices))


def whole_numbers(what: str, values: Any, count: int) -> Tuple[int, ...]:
    """So many whole numbers from 0 on, of anything that can be iterated."""
    try:
        numbers = tuple(operator.index(number) for number in values)
    except TypeError:
        numbers = ()
    if len(numbers) != count or any(not 0 <= number < 2**32 for number in numbers):
        raise InvalidArgument(f"{what}: {values!r}", f"not {count} whole numbers from 0 on")
    return numbers


def frame_count(what: str, value: Any, least: int) -> int:
    """A number of frames, from `least` on; 0 for None."""
    if value is None:
        return 0
    try:
        number = operator.index(value)
    except TypeError:
        number = -1
    if isinstance(value, bool) or not least <= number <= _MOST_FRAMES:
        raise InvalidArgument(f"{what}: {value!r}", "not a number of frames",
                              f"give a whole number from {least} on")
    return number


def _number(value: Any) -> float:
    """NaN for what is none, texts with a number in them included."""
    try:
        return math.nan if isinstance(value, (str, bytes)) else float(value)
    except (TypeError, ValueError, OverflowError):
        return math.nan


def positive(what: str, value: Any) -> float:
    """A number above 0; 0 for None."""
    if value is None:
        return 0.0
    number = _number(value)
    if not 0 < number <= _LONGEST:
        raise InvalidArgument(f"{what}: {value!r}", "not a number above 0")
    return number


def time_limit(value: Any) -> Optional[float]:
    """Seconds, which may be endless; None stays None."""
    if value is None:
        return None
    seconds = _number(value)
    if math.isnan(seconds):
        raise InvalidArgument(f"timeout: {value!r}", "not a time", "give seconds, or None")
    return seconds


def text(what: str, value: Any) -> str:
    """A text."""
    if isinstance(value, str):
        return value
    raise InvalidArgument(f"{what}: {value!r}", "not a text", "give a str")


def handler(value: Any) -> Any:
    """A function, or None."""
    if value is None or callable(value):
        return value
    raise InvalidArgument(f"handler: {value!r}", "not a function", "give a function, or None")
