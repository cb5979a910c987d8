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
SHAPE = r"\((\w+, )*h(eight)?, w(idth)?(, \w+)*\)"


def checked(*module: str) -> str:
    """What a checker finds in the sources; the stub of the compiled module lies among them."""
    pytest.importorskip("mypy", reason="mypy is not installed (Debian: mypy)")
    environment = {**os.environ, "MYPYPATH": str(SOURCES), "PYTHONPATH": str(BUILT)}
    done = subprocess.run([sys.executable, "-m", *module], env=environment, cwd=ROOT, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    return done.stdout


def test_mypy_has_nothing_against_package_and_examples(tmp_path: Path) -> None:
    examples = map(str, (ROOT / "examples" / "python").glob("*.py"))
    found = checked("mypy", "--config-file", CONFIGURATION, "--cache-dir", str(tmp_path),
                    str(SOURCES / "zel"), *examples)
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


def public_names() -> Iterator[Public]:
    """The classes and functions of zel, their methods, properties and fields."""
    def function(name: str, owner: object, node: ast.FunctionDef) -> Public:
        arguments = {argument.arg for argument in node.args.args + node.args.kwonlyargs}
        answer = ast.unparse(node.returns) if node.returns else ""
        return Public(name, getattr(owner, node.name).__doc__ or "", {node.name} | arguments, answer)

    for path in sorted((SOURCES / "zel").glob("_[a-z]*.py*")):
        module = importlib.import_module(f"zel.{path.stem}")
        for node in ast.parse(path.read_text()).body:
            if not isinstance(node, (ast.ClassDef, ast.FunctionDef)) or node.name not in zel.__all__:
                continue
            owner = getattr(zel, node.name)
            if owner is not getattr(module, node.name):
                continue  # of the same name, made comfortable by another file
            if isinstance(node, ast.FunctionDef):
                yield function(node.name, zel, node)
                continue
            yield Public(node.name, owner.__doc__ or "", set(), "")
            if hasattr(owner, "__members__"):
                continue  # an enumeration, whose members have no docstrings of their own
            for member, behind in zip(node.body, [*node.body[1:], ast.Pass()]):
                if isinstance(member, ast.FunctionDef) and not member.name.startswith("_"):
                    yield function(f"{node.name}.{member.name}", owner, member)
                elif isinstance(member, ast.AnnAssign) and "ClassVar" not in ast.unparse(member.annotation):
                    field = ast.unparse(member.target)
                    text = str(ast.literal_eval(behind.value)) if isinstance(behind, ast.Expr) else ""
                    yield Public(f"{node.name}.{field}", text, {field}, ast.unparse(member.annotation))


def test_every_public_name_says_what_it_is_in_which_unit_and_shape() -> None:
    names = list(public_names())
    assert {name.name for name in names} >= set(zel.__all__)
    without = [f"{name.name}: no docstring" for name in names if not name.doc.strip()]
    without += [f"{name.name}: the unit of {quantity} ({UNITS[quantity]})" for name in names
                for quantity in sorted(name.quantities & set(UNITS))
                if not re.search(UNITS[quantity], name.doc, re.IGNORECASE)]
    without += [f"{name.name}: the shape of the array" for name in names
                if re.search("NDArray|_Samples", name.answer) and not re.search(SHAPE, name.doc)]
    assert not without, "\n".join(without)
