#!/usr/bin/env python3
"""Prints how many lines and branches of some files were reached, from what `llvm-cov export -summary-only` writes.

    llvm-cov-14 export -summary-only ... | scripts/fuzz-coverage.py FILE|FOLDER...
"""
import json
import os
import sys

wanted = [os.path.realpath(name) for name in sys.argv[1:]]
total = {"lines": [0, 0], "branches": [0, 0]}


def line(name, reached):
    (lines, of), (branches, of_branches) = reached["lines"], reached["branches"]
    print(f"    {name:44} {lines:5} of {of:5} lines, {100 * lines / max(of, 1):5.1f} %;"
          f" {100 * branches / max(of_branches, 1):5.1f} % of the branches")


for file in json.load(sys.stdin)["data"][0]["files"]:
    path = os.path.realpath(file["filename"])
    if not any(path == name or path.startswith(name + os.sep) for name in wanted):
        continue
    reached = {kind: [file["summary"][kind]["covered"], file["summary"][kind]["count"]] for kind in total}
    for kind in total:
        total[kind] = [sum(pair) for pair in zip(total[kind], reached[kind])]
    line(os.path.relpath(path), reached)
line("all", total)
