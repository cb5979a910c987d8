"""The parameters of an open camera."""
from __future__ import annotations

import operator
from typing import Any, Iterator, List, Mapping, Optional, Tuple, Union

from . import _core
from ._errors import InvalidArgument
from ._types import ParameterRange, RegionAndBinning, SetResult


def text_to_write(name: str, kind: str, value: Any) -> str:
    """The text that the SDK takes for a value of this kind."""
    if isinstance(value, str):
        return value
    if isinstance(value, bytes):
        raise InvalidArgument(f"{name}: {value!r}", "bytes are no value", "decode() them")
    if kind == "region":
        try:
            return ",".join(str(operator.index(number)) for number in value)
        except TypeError:
            raise InvalidArgument(f"{name}: {value!r}", "not six whole numbers",
                                  "give (x, y, width, height, xbin, ybin)") from None
    if kind == "text":
        raise InvalidArgument(f"{name}: {value!r}", "not a text", "give a str") from None
    if isinstance(value, float) and value.is_integer():
        value = int(value)
    try:
        return str(operator.index(value))
    except TypeError:
        raise InvalidArgument(f"{name}: {value!r}", "not a whole number", "round() it first") from None


class Parameter:
    """One parameter of an open camera: camera.params["EXPOSURE_TIME_US"].

    Reading and writing talk to the camera where the value is kept there; any thread may do so.
    """

    __slots__ = ("_camera", "_facts")

    def __init__(self, camera: _core.Camera, facts: Tuple[str, int, str, str]) -> None:
        """Made by Params."""
        self._camera = camera
        self._facts = facts

    @property
    def name(self) -> str:
        """Its name: "GAIN"."""
        return self._facts[0]

    @property
    def id(self) -> int:
        """Its number in the SDK."""
        return self._facts[1]

    @property
    def about(self) -> str:
        """What it is, in one line."""
        return self._facts[2]

    @property
    def kind(self) -> str:
        """What its value is: "uint32", "int32", "uint64", "text", "region", "double[9]" or "selector"."""
        return self._facts[3]

    @property
    def value(self) -> Any:
        """The value, in the unit of .unit: int, str, RegionAndBinning or an array (3, 3) of float64.

        None stands for a 64-bit value that the model lacks. Setting it is a checked set, as set() is. Raises Refused
        when it can't be read, LinkLost when the camera is gone.
        """
        return self._typed(self._camera.read(self.id))

    @value.setter
    def value(self, value: Any) -> None:
        self.set(value)

    def set(self, value: Any) -> SetResult:
        """Writes a value, reads it back, and compares.

        value: a whole number in the unit of .unit, a str (numbers in decimal or 0x...), or six numbers for a region.
        Returns what became of it. Raises Refused with requested, actual and range when the camera did not take the
        value as it is; InvalidArgument for what is no value of this parameter.
        """
        requested, actual, value_range, unit = self._camera.write(
            self.id, text_to_write(self.name, self.kind, value))
        return SetResult(requested, self._typed(actual), None if value_range is None else
                         ParameterRange(*value_range[:2]), unit)

    @property
    def range(self) -> Optional[ParameterRange]:
        """Smallest and largest value in the unit of .unit, as the camera states them now; None when it does not."""
        found = self._camera.range(self.id)
        return None if found is None else ParameterRange(*found[:2])

    @property
    def default(self) -> Optional[int]:
        """The camera's default in the unit of .unit; None when it states none."""
        found = self._camera.range(self.id)
        return None if found is None else found[2]

    @property
    def unit(self) -> str:
        """Unit of the value with the camera's present settings: "us", "px"; empty without one."""
        return self._camera.unit(self.id)

    @property
    def access(self) -> str:
        """Whether it can be read and written: "rw", "ro" or "wo"."""
        return self._camera.access(self.id)

    def _typed(self, value: Any) -> Any:
        if isinstance(value, tuple):
            if len(value) == 6:
                return RegionAndBinning(*value)
            import numpy
            return numpy.array(value).reshape(3, 3)
        return value

    def __repr__(self) -> str:
        """Name, value and unit, as far as they can be had."""
        if self._camera.closed:
            return f"<zel.Parameter {self.name} of a closed camera>"
        if self.access == "wo" or self.kind == "selector":
            return f"<zel.Parameter {self.name}, write-only: {self.about}>"
        shown = self._typed(self._camera.try_read(self.id))
        limits = self.range
        return (f"<zel.Parameter {self.name} = {shown!r}{' ' + self.unit if self.unit else ''}"
                f"{f' ({limits.minimum}..{limits.maximum})' if limits else ''}, {self.access}: {self.about}>")


class Params(Mapping[str, Parameter]):
    """The parameters of a camera by name: params["GAIN"], params.GAIN; params["GAIN"] = 5 sets and checks.

    Names are found without regard to case, with or without the prefix ZEL_PARAM_, and by id. Unknown ones raise
    UnknownName, which is a KeyError and an AttributeError and names the nearest ones.
    """

    __slots__ = ("_camera",)
    _camera: _core.Camera

    def __init__(self, camera: _core.Camera) -> None:
        """Made by Camera."""
        object.__setattr__(self, "_camera", camera)

    def __getitem__(self, name: Union[str, int]) -> Parameter:
        """The parameter of this name or id."""
        if not isinstance(name, (str, int)):
            raise InvalidArgument(f"no parameter {name!r}", "neither a name nor an id", "give a str or an int")
        return Parameter(self._camera, _core.parameter_facts(str(name)))

    def __setitem__(self, name: Union[str, int], value: Any) -> None:
        """A checked set, as Parameter.set()."""
        self[name].set(value)

    def __getattr__(self, name: str) -> Parameter:
        """The parameter of this name."""
        if name.startswith("_"):
            raise AttributeError(name)
        return self[name]

    def __setattr__(self, name: str, value: Any) -> None:
        """A checked set, as Parameter.set()."""
        self[name].set(value)

    def __contains__(self, name: object) -> bool:
        """Whether there is a parameter of this name."""
        try:
            return bool(_core.parameter_facts(str(name)))
        except KeyError:
            return False

    def __iter__(self) -> Iterator[str]:
        """The names, in order of the ids."""
        return iter(_core.parameter_names())

    def __len__(self) -> int:
        """How many there are."""
        return len(_core.parameter_names())

    def __dir__(self) -> List[str]:
        """For completion."""
        return [*super().__dir__(), *_core.parameter_names()]

    def _ipython_key_completions_(self) -> List[str]:
        return _core.parameter_names()

    def __repr__(self) -> str:
        """How many there are, and of what."""
        return f"<zel.Params: {len(self)} parameters of {self._camera.label}>"
