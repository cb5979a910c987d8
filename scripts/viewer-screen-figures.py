#!/usr/bin/env python3
"""What arrives on the screen: scripts/viewer-screen-figures.py [--seconds S] [--size WIDTHxHEIGHT] [ZELCAM]

Runs `zelcam view` with the simulated camera of 2048 x 2048 pixels and looks with Chromium, which has no screen and no graphics
card here: the processor does their work. Prints a row of a table. Latency is what the page draws: from the hand-over of a frame
to the moment when it has been drawn, the median of one reading every half a second.
"""

import argparse
import glob
import os
import pathlib
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/tools/zelcam/view"))
sys.dont_write_bytecode = True
from browser import Browser  # noqa: E402
from viewer_client import Viewer  # noqa: E402

TICKS = os.sysconf("SC_CLK_TCK")


def processor_time(pids):
    total = 0
    for pid in pids:
        fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
        total += int(fields[11]) + int(fields[12])
    return total / TICKS


def with_children(pid):
    found = [pid]
    for name in glob.glob(f"/proc/{pid}/task/*/children"):
        for child in pathlib.Path(name).read_text().split():
            found += with_children(int(child))
    return found


def facts(browser):
    return dict(browser.run("return [...document.querySelectorAll('#count-facts > div')]"
                            ".map((row) => [...row.children].map((one) => one.textContent))"))


def number(text):
    return float("".join(c for c in text.split(" ")[0] if c.isdigit() or c == ".") or "nan")


def measure(zelcam, size, seconds):
    viewer, browser = Viewer([zelcam], MOTION="all"), Browser()
    try:
        browser.size(*size)
        browser.open(viewer.address)
        time.sleep(2)
        programs = [[viewer.process.pid], with_children(browser.driver.service.process.pid)]
        first, start = facts(browser), time.monotonic()
        used = [processor_time(pids) for pids in programs]
        latencies = []
        while time.monotonic() - start < seconds:
            time.sleep(0.5)
            latencies.append(number(browser.text("read-latency")))
        passed, last = time.monotonic() - start, facts(browser)
        load = [f"{(processor_time(pids) - before) / passed * 100:.0f} %" for pids, before in zip(programs, used)]
    finally:
        browser.end()
        viewer.end()
    rates = [f"{(number(last[name]) - number(first[name])) / passed:.1f}" for name in ("Delivered", "Shown here")]
    lost = [f"{number(last[name]) - number(first[name]):.0f}" for name in ("Lost on the link", "Lost, no free buffer")]
    return [f"{size[0]} × {size[1]}", *rates, f"{sorted(latencies)[len(latencies) // 2]:.0f} ms", *load, *lost]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seconds", type=float, default=10)
    parser.add_argument("--size", default="1280x800", help="of the browser's window")
    parser.add_argument("zelcam", nargs="?", default=ROOT / "build/linux/bin/zelcam")
    arguments = parser.parse_args()
    row = measure(os.path.abspath(arguments.zelcam), [int(length) for length in arguments.size.split("x")], arguments.seconds)
    print("| Window | frames/s delivered | frames/s on the screen | hand-over to screen | zelcam | browser | lost on the link | "
          "no free buffer |")
    print("|---" * len(row) + "|")
    print("| " + " | ".join(row) + " |")
    print(f"\n{os.cpu_count()} cores, load {os.getloadavg()[0]:.1f} at the end")


main()
