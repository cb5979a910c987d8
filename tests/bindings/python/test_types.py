"""Annotations, stub and docstrings of the package."""
from __future__ import annotations

import ast
import importlib
import os
import re
import subprocess
import sys
from collections.abc import Iterator
from pathlib import Path
from typing import NamedTuple

import pytest

import zel

ROOT = Path(__file__).resolve().parents[3]
SOURCES = ROOT / "bindings" / "python"
BUILT = Path(zel.__file__).parents[1]
CONFIGURATION = str(SOURCES / "pyproject.toml")

# A quantity says what it is measured in, where it is given as well as where it is answered.
UNITS = {"timeout": "second", "exposure": "second", "frame_time": "second", "arrival": "second",
         "hand_over": "second", "temperature": "degrees Celsius", "sensor_size": "pixel", "roi": "pixel",
         "width": "pixel|column", "height": "pixel|row", "nbytes": "byte"}
SHAPE = r"\((\w+, )*h(eight)?, w(idth)?(, \w+)*\)|\(\w+,\)"


def checked(*module: str) -> str:
    """What a checker finds in the sources, among which the stub lies; it keeps notes in the build folder."""
    pytest.importorskip("mypy", reason="mypy is not installed (Debian: mypy)")
    environment = {**os.environ, "MYPYPATH": str(SOURCES), "PYTHONPATH": str(BUILT)}
    done = subprocess.run([sys.executable, "-m", *module], env=environment, cwd=BUILT, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    return done.stdout


def test_mypy_has_nothing_against_package_and_examples() -> None:
    examples = map(str, (ROOT / "examples" / "python").glob("*.py"))
    found = checked("mypy", "--config-file", CONFIGURATION, str(SOURCES / "zel"), *examples)
    assert found.startswith("Success"), found


def test_stub_says_what_the_compiled_module_has() -> None:
    found = checked("mypy.stubtest", "--concise", "--mypy-config-file", CONFIGURATION, "zel._core")
    # What every class of pybind11 has, and no stub can say.
    known = r"zel._core.\w+(.__init__ is inconsistent, stub does not have \*args.*| is .*, metaclass differs)"
    differences = [line for line in found.splitlines() if not re.fullmatch(known, line)]
    assert "metaclass differs" in found and not differences, found


class Public(NamedTuple):
    """A public name, and what its declaration and its docstring say."""

    name: str
    doc: str
    quantities: set[str]
    answer: str


def declared(owner: object, node: ast.stmt, behind: ast.stmt) -> Public:
    """The function, property or field that a statement declares; a field is described by the text behind."""
    quantities, answer = set(), ""
    if isinstance(node, ast.FunctionDef):
        name = node.name
        quantities = {argument.arg for argument in node.args.args + node.args.kwonlyargs}
        answer = ast.unparse(node.returns) if node.returns else ""
    else:
        name = ast.unparse(node).partition("=")[0].partition(":")[0].strip()
    if isinstance(node, ast.AnnAssign):
        doc = ast.literal_eval(behind.value) if isinstance(behind, ast.Expr) else ""
    else:
        doc = getattr(owner, name).__doc__
    return Public(f"{getattr(owner, '__name__')}.{name}", doc or "", quantities | {name}, answer)


def public_names() -> Iterator[Public]:
    """The classes and functions of zel, their methods, properties and fields."""
    for path in sorted((SOURCES / "zel").glob("_[a-z]*.py*")):
        module = importlib.import_module(f"zel.{path.stem}")
        for node in ast.parse(path.read_text()).body:
            name = getattr(node, "name", "")
            if name not in zel.__all__ or getattr(zel, name) is not getattr(module, name):
                continue
            if isinstance(node, ast.FunctionDef):
                yield declared(zel, node, node)
            if isinstance(node, ast.ClassDef):
                owner = getattr(zel, name)
                yield Public(f"zel.{name}", owner.__doc__ or "", set(), "")
                # Members of an enumeration have no docstrings of their own.
                members = [] if hasattr(owner, "__members__") else node.body
                for member, behind in zip(members, [*members[1:], ast.Pass()]):
                    if isinstance(member, (ast.FunctionDef, ast.Assign, ast.AnnAssign)):
                        public = declared(owner, member, behind)
                        if "._" not in public.name:
                            yield public


def test_every_public_name_says_what_it_is_in_which_unit_and_shape() -> None:
    names = list(public_names())
    assert {name.name for name in names} >= {f"zel.{name}" for name in zel.__all__}
    without = [f"{name.name}: no docstring" for name in names if not name.doc.strip()]
    without += [f"{name.name}: the unit of {quantity} ({UNITS[quantity]})" for name in names
                for quantity in sorted(name.quantities & set(UNITS))
                if not re.search(UNITS[quantity], name.doc, re.IGNORECASE)]
    without += [f"{name.name}: the shape of the array" for name in names
                if re.search("NDArray|_Samples", name.answer) and not re.search(SHAPE, name.doc)]
    assert not without, "\n".join(without)
