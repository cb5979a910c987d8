#!/usr/bin/env python3
"""The table of scripts/coverage.sh: coverage-table.py LCOV UNCOVERED FOLDER..."""
import collections
import itertools
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def read(lcov):
    """Per file the counts of its lines and of its branches; what was compiled several times counts where it was reached."""
    lines, branches = collections.defaultdict(collections.Counter), collections.defaultdict(collections.Counter)
    file = None
    for entry in pathlib.Path(lcov).read_text().splitlines():
        what, _, rest = entry.partition(":")
        if what == "SF":
            file = str(pathlib.Path(rest).resolve().relative_to(ROOT))
        elif what == "DA":
            line, count = map(int, rest.split(","))
            lines[file][line] += count
        elif what == "BRDA":
            line, *place, count = rest.split(",")
            branches[file][int(line), *map(int, place)] += 0 if count == "-" else int(count)
    return lines, branches


def ranges(numbers):
    for _, group in itertools.groupby(enumerate(sorted(numbers)), lambda pair: pair[1] - pair[0]):
        group = [number for _, number in group]
        yield str(group[0]) if len(group) == 1 else f"{group[0]}-{group[-1]}"


def share(counts):
    reached = sum(count > 0 for count in counts)
    return f"{reached:>6} of {len(counts):>5} {100 * reached / max(len(counts), 1):6.1f} %"


def main(lcov, uncovered, *folders):
    lines, branches = read(lcov)
    print(f"{'folder':<12} {'lines reached':>23}   {'branches taken':>23}")
    for folder in [*folders, ""]:
        files = [file for file in lines if file.startswith(folder)]
        print(f"{folder or 'all':<12} {share([n for f in files for n in lines[f].values()])}   "
              f"{share([n for f in files for n in branches[f].values()])}")
    with open(uncovered, "w") as out:
        for file in sorted(lines):
            missed = [line for line, count in lines[file].items() if count == 0]
            half = {line for (line, *_), count in branches[file].items() if count == 0} - set(missed)
            for what, numbers in ("lines", missed), ("branches in", half):
                if numbers:
                    print(f"{file}: {what} {', '.join(ranges(numbers))}", file=out)


if __name__ == "__main__":
    main(*sys.argv[1:])
