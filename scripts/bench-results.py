#!/usr/bin/env python3
"""Results of scripts/bench.sh: joined to one file, as a table, and beside those of another run.

    bench-results.py join COMMAND FOLDER     one file of the programs' parts in FOLDER
    bench-results.py markdown FILE           the tables of docs/performance.md
    bench-results.py page FILE PAGE          the same into PAGE, between its two comments "figures" and "end of figures"
    bench-results.py windows FILE            the Windows products' times beside Linux's
    bench-results.py compare OLD NEW         what moved beyond the spread of both runs
"""
import contextlib
import datetime
import glob
import io
import json
import os
import re
import sys

BEGIN, END = "<!-- figures -->", "<!-- end of figures -->"
PRODUCTS = {"windows-i686": "Windows, 32 bits", "windows-x86_64": "Windows, 64 bits"}
STAGES = [
    ("12-bit unpack", "frame.unpack"),
    ("two-tap reorder", "frame.two_taps"),
    ("four-tap reorder", "frame.four_taps"),
    ("crop to half width and height", "frame.crop_to_half"),
    ("2 × 2 binning", "frame.bin_2x2"),
    ("average of 8 (of the bytes moved)", "frame.average_8"),
    ("unpack + two taps in one go", "frame.unpack_two_taps"),
    ("unpack + four taps in one go", "frame.unpack_four_taps"),
    ("whole post-processing: 2 taps packed, crop, 2 × 2", "frame.whole"),
    ("correction of four taps", "taps.correction"),
    ("correction, samples without order", "taps.correction_scattered"),
    ("unpack + two taps + correction in one go", "taps.unpack_two_taps_correction"),
    ("demosaic into three planes", "color.demosaic"),
    ("color transform", "color.transform"),
    ("color transform with a table", "color.transform_table"),
    ("whole color path, 3 × 16 bits", "color.whole_16_bit"),
    ("whole color path, 4 × 8 bits", "color.whole_8_bit"),
]
PEERS = {
    "vs_scalar": "scalar",
    "vs_memmove": "memmove",
    "vs_opencv_area": "OpenCV INTER_AREA",
    "vs_opencv_accumulate_8": "OpenCV accumulate",
    "vs_separate": "separate steps",
    "vs_three_passes": "three passes",
    "vs_opencv": "OpenCV",
    "vs_libdc1394": "libdc1394",
    "vs_opencv_clamped": "OpenCV with clamp",
    "of_limit": "the limit",
}


def processor():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        match = re.search(r"model name\s*:\s*(.*)", file.read())
    return match[1] if match else "unknown processor"


def join(command, folder):
    figures = []
    for name in sorted(glob.glob(os.path.join(folder, "*.json"))):
        with open(name, encoding="utf-8") as file:
            part = json.load(file)
        product = os.path.basename(name).split(".")[0]
        for figure in part:
            figure["product"] = product if product in PRODUCTS else "linux"
        figures += part
    head = {
        "command": command.strip(),
        "date": datetime.date.today().isoformat(),
        "machine": f"{processor()}, {os.cpu_count()} cores",
        "load_at_end": round(os.getloadavg()[0], 1),
    }
    lines = ",\n  ".join(json.dumps(figure) for figure in figures)
    print(json.dumps(head)[:-1] + ', "figures": [\n  ' + lines + "\n]}")


def read(name):
    with open(name, encoding="utf-8") as file:
        return json.load(file)


def by_name(results, product="linux"):
    return {figure["name"]: figure for figure in results["figures"] if figure["product"] == product}


def met(figure, value=None):
    kind, _, number = figure["target"].partition(" ")
    value = figure["value"] if value is None else value
    if not kind or value is None:
        return True
    return value >= float(number) if kind == ">=" else value <= float(number)


def number(value):
    if value is None:
        return "–"
    size = abs(value)
    return f"{value:.0f}" if size >= 100 else f"{value:.1f}" if size >= 10 else f"{value:.2f}"


def cell(figure):
    """Median, spread and target; bold where it is missed, with the limit where the target is beyond it."""
    if not figure:
        return "–"
    text = number(figure["value"])
    if figure["low"] != figure["high"]:
        text += f" ({number(figure['low'])}–{number(figure['high'])})"
    if figure["target"]:
        text += f" {figure['target'].replace('>=', '≥').replace('<=', '≤')}"
        if not met(figure):
            text = f"**{text}**"
    if figure["limit"] is not None:
        text += f", limit {number(figure['limit'])}"
        if figure["target"] and not met(figure, figure["limit"]):
            text += " †"
    return text


def markdown(name):
    results = read(name)
    figures = by_name(results)
    print(f"One run of `{results['command']}` on {results['date']}: {results['machine']}, load {results['load_at_end']} "
          "at its end.\n")
    rows = [(title, stage) for title, stage in STAGES if f"{stage}.hot" in figures]
    if rows:
        print("| Stage | hot | pool | ms hot / pool | beside it, hot / pool |\n|---|---|---|---|---|")
    for title, stage in rows:
        beside = []
        for key, peer in PEERS.items():
            pair = [figures.get(f"{stage}.{mode}.{key}") for mode in ("hot", "pool")]
            if not pair[0]:
                continue
            texts = [f"**{number(f['value'])}**" if not met(f) else number(f["value"]) for f in pair]
            beside.append(f"{' / '.join(texts)} × {peer}")
        times = " / ".join(number(figures[f"{stage}.{mode}.time"]["value"]) for mode in ("hot", "pool"))
        print(f"| {title} | {cell(figures[stage + '.hot'])} | {cell(figures[stage + '.pool'])} | {times} | "
              f"{'; '.join(beside)} |")
    for area, title in (("stream", "Stream"), ("capture", "Capture"), ("unpaced", "Unpaced")):
        end_to_end(figures, area, title)
    shown = {f"{stage}.{mode}" for _, stage in STAGES for mode in ("hot", "pool")}
    rest = [figure for name, figure in figures.items()
            if not name.startswith(("stream.", "capture.", "unpaced.")) and name.rsplit(".vs_", 1)[0] not in shown
            and name.removesuffix(".time").removesuffix(".of_limit") not in shown]
    if rest:
        print("\n| Figure | measured | unit |\n|---|---|---|")
    for figure in rest:
        print(f"| `{figure['name']}` | {cell(figure)} | {figure['unit']} |")


    windows(name)


def page(name, page_name):
    text = io.StringIO()
    with contextlib.redirect_stdout(text):
        markdown(name)
    with open(page_name, encoding="utf-8") as file:
        before, _, rest = file.read().partition(BEGIN)
    _, end, after = rest.partition(END)
    if not end:
        sys.exit(f"{page_name}: has no place for figures")
    with open(page_name, "w", encoding="utf-8") as file:
        file.write(f"{before}{BEGIN}\n\n{text.getvalue().strip()}\n\n{END}{after}")


def end_to_end(figures, area, title):
    runs = {}
    for name, figure in figures.items():
        parts = name.split(".")
        if parts[0] == area:
            runs.setdefault(parts[1], {})[parts[2]] = figure
    columns = list(dict.fromkeys(column for run in runs.values() for column in run))
    if not runs:
        return
    heads = []
    for column in columns:
        unit = next(run[column]["unit"] for run in runs.values() if column in run)
        heads.append(f"{column.replace('_', ' ')}, {unit}")
    print(f"\n| {title} | {' | '.join(heads)} |\n|{'---|' * (len(heads) + 1)}")
    for run, values in runs.items():
        print(f"| {run.replace('_', ' ')} | {' | '.join(cell(values.get(column)) for column in columns)} |")


def windows(name):
    results = read(name)
    linux = by_name(results)
    others = {product: by_name(results, product) for product in PRODUCTS}
    if not any(others.values()):
        return
    print(f"\n| Time beside Linux's, hot / pool | {' | '.join(PRODUCTS.values())} |\n|---|{'---|' * len(PRODUCTS)}")
    for title, stage in STAGES:
        cells = []
        for figures in others.values():
            names = [f"{stage}.{mode}.time" for mode in ("hot", "pool")]
            there = all(name in figures and name in linux for name in names)
            # The clock on the wall counts what other programs take: the fastest tenth on both sides.
            cells.append(" / ".join(number(figures[n]["low"] / linux[n]["low"]) for n in names) if there else "–")
        if any(text != "–" for text in cells):
            print(f"| {title} | {' | '.join(cells)} |")


def better(figure):
    """1 where more is better, -1 where less is, 0 where that is not known."""
    if figure["target"]:
        return 1 if figure["target"].startswith(">") else -1
    return {"x": 1, "x memcpy": 1, "x limit": 1, "MB/s": 1, "frames/s": 1, "ms": -1, "us": -1, "ns": -1, "s": -1,
            "ms/frame": -1, "pages": -1, "per frame": -1, "frames": -1}.get(figure["unit"], 0)


def spread(figure):
    """What was measured once may be off by a twentieth."""
    low, high = figure["low"], figure["high"]
    return (low, high) if low != high else (low - abs(low) / 20, high + abs(high) / 20)


def compare(old_name, new_name):
    old, new = read(old_name), read(new_name)
    if isinstance(old, list):
        sys.exit(f"{old_name}: has no spread; make it anew with scripts/bench.sh --json")
    print(f"\n{old['date']}, {old['machine']}: {old['command']}\n{new['date']}, {new['machine']}: {new['command']}")
    moved = same = 0
    for product in ["linux", *PRODUCTS]:
        before, after = by_name(old, product), by_name(new, product)
        for name, now in after.items():
            then = before.get(name)
            if not then or then["value"] is None or now["value"] is None:
                continue
            # The ranges of four in five repetitions lie apart by so much.
            low, high = zip(spread(then), spread(now))
            gap = max(low[1] - high[0], low[0] - high[1])
            if gap <= 0:
                same += 1
                continue
            moved += 1
            share = now["value"] / then["value"] - 1 if then["value"] else 0
            beyond = gap / abs(then["value"]) if then["value"] else 0
            good = better(now) * (1 if now["value"] > then["value"] else -1)
            print(f"{name if product == 'linux' else product + ': ' + name:44} "
                  f"{number(then['value']):>8} -> {number(now['value']):>8} {now['unit']:10} {100 * share:+6.1f} %, "
                  f"{100 * beyond:.1f} % beyond the spread"
                  + {1: "  better", -1: "  WORSE", 0: ""}[good])
        for name in sorted(before.keys() ^ after.keys()):
            print(f"{name:44} {'is gone' if name in before else 'is new'}")
    print(f"{moved} moved, {same} within the spread")


def main():
    commands = {"join": join, "markdown": markdown, "page": page, "windows": windows, "compare": compare}
    if len(sys.argv) < 3 or sys.argv[1] not in commands:
        sys.exit(__doc__)
    commands[sys.argv[1]](*sys.argv[2:])


main()
