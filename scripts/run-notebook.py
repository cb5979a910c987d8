#!/usr/bin/python3
"""Runs the code cells of a notebook one after the other, as Jupyter does and without it.

    scripts/run-notebook.py NOTEBOOK            compares what they print with what the notebook shows
    scripts/run-notebook.py NOTEBOOK --update   writes it into the notebook

What has a decimal point counts as measured and may differ. A cell whose metadata say {"needs": MODULE} is
left out where the module is not installed, and a line says so.
"""
from __future__ import annotations

import argparse
import ast
import base64
import contextlib
import importlib.util
import io
import json
import re
import sys
from typing import Any


def show(value: object) -> dict[str, Any]:
    """The output of a cell whose last line is this value."""
    data: dict[str, Any] = {"text/plain": repr(value).splitlines(keepends=True)}
    if hasattr(value, "_repr_png_"):
        data["image/png"] = base64.b64encode(value._repr_png_()).decode()
    return {"output_type": "execute_result", "metadata": {}, "data": data}


def run(source: str, names: dict[str, Any]) -> list[dict[str, Any]]:
    """Runs a cell; answers its outputs."""
    outputs, printed = [], io.StringIO()
    tree = ast.parse(source)
    last = tree.body[-1] if tree.body else None
    value = None
    with contextlib.redirect_stdout(printed):
        if isinstance(last, ast.Expr):
            tree.body.pop()
        exec(compile(tree, "<cell>", "exec"), names)
        if isinstance(last, ast.Expr):
            value = eval(compile(ast.Expression(last.value), "<cell>", "eval"), names)
    if printed.getvalue():
        outputs.append({"output_type": "stream", "name": "stdout",
                        "text": printed.getvalue().splitlines(keepends=True)})
    if value is not None:
        outputs.append(show(value))
    return outputs


def text_of(outputs: list[dict[str, Any]]) -> str:
    """What is compared: the text, without what is measured."""
    text = "".join("".join(output.get("text") or output["data"]["text/plain"]) for output in outputs)
    return re.sub(r" +", " ", re.sub(r"\d+\.\d+", "#", text))


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("notebook")
    parser.add_argument("--update", action="store_true")
    options = parser.parse_args()
    with open(options.notebook, encoding="utf-8") as file:
        notebook = json.load(file)
    names: dict[str, Any] = {"__name__": "__main__"}
    ran, differ = 0, 0
    for cell in (cell for cell in notebook["cells"] if cell["cell_type"] == "code"):
        needed = cell["metadata"].get("needs")
        if needed and importlib.util.find_spec(needed) is None:
            print(f"a cell is not run: the module {needed} is not installed")
            continue
        ran += 1
        outputs = run("".join(cell["source"]), names)
        if options.update:
            cell["execution_count"] = ran
            for output in outputs:
                if output["output_type"] == "execute_result":
                    output["execution_count"] = ran
            cell["outputs"] = outputs
        elif text_of(outputs) != text_of(cell["outputs"]):
            differ += 1
            print(f"cell {ran} says\n{text_of(outputs)}\nand not\n{text_of(cell['outputs'])}")
    if options.update:
        with open(options.notebook, "w", encoding="utf-8") as file:
            json.dump(notebook, file, indent=1, ensure_ascii=False)
            file.write("\n")
    print(f"{ran} cells run, {differ} of them say something else")
    return 1 if differ or not ran else 0


if __name__ == "__main__":
    sys.exit(main())
