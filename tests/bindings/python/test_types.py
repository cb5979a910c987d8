"""Annotations, stub and docstrings of the package."""
from __future__ import annotations

import ast
import importlib
import re
import sys
from collections.abc import Iterator
from pathlib import Path

import pytest
import zel
from conftest import PROGRAMS, ROOT, SOURCES, run

BUILT = PROGRAMS / "python"
CONFIGURATION = str(SOURCES / "pyproject.toml")

# A quantity says what it is measured in, where it is given as well as where it is answered.
UNITS = {"timeout": "second", "exposure": "second", "frame_time": "second", "arrival": "second",
         "hand_over": "second", "temperature": "degrees Celsius", "sensor_size": "pixel", "roi": "pixel",
         "width": "pixel|column", "height": "pixel|row", "nbytes": "byte"}


def checked(*module: str) -> str:
    """What a checker finds in the sources, among which the stub lies; it keeps notes in the build folder."""
    pytest.importorskip("mypy", reason="mypy is not installed (Debian: mypy)")
    return run(sys.executable, "-m", *module, exit_code=None, cwd=BUILT, MYPYPATH=str(SOURCES), PYTHONPATH=str(BUILT))


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


def documented(path: Path) -> Iterator[tuple[ast.stmt, str]]:
    """The public functions, classes and methods that a file declares, and their docstrings."""
    module = importlib.import_module(f"zel.{path.stem}")
    for node in ast.parse(path.read_text()).body:
        name = getattr(node, "name", "")
        if name in zel.__all__ and getattr(zel, name) is getattr(module, name):
            owner = getattr(zel, name)
            yield node, owner.__doc__ or ""
            for member in [] if hasattr(owner, "__members__") else getattr(node, "body"):
                if isinstance(node, ast.ClassDef) and isinstance(member, ast.FunctionDef) and member.name[0] != "_":
                    yield member, getattr(owner, member.name).__doc__ or ""


def test_every_public_name_says_what_it_is_and_in_which_unit() -> None:
    without = []
    for path in (SOURCES / "zel").glob("_[a-z]*.py*"):
        for node, doc in documented(path):
            arguments = node.args.args + node.args.kwonlyargs if isinstance(node, ast.FunctionDef) else []
            quantities = {getattr(node, "name"), *(one.arg for one in arguments)} & set(UNITS)
            if not doc.strip() or not all(re.search(UNITS[one], doc, re.IGNORECASE) for one in quantities):
                without.append(f"{path.name}:{node.lineno} {quantities}")
    assert not without, "\n".join(without)
