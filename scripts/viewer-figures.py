#!/usr/bin/env python3
"""What the viewer costs: scripts/viewer-figures.py [--seconds S] [ZELCAM]

Runs `zelcam view` with the simulated camera of 2048 x 2048 pixels for some seconds with no page, with one, and with eight, one
of which stopped listening. The first page is Chromium without a screen, which draws with the processor; the others take
pictures and answer at once. Prints a row for each run.
"""

import argparse
import glob
import os
import pathlib
import sys
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests/tools/zelcam/view"))
sys.dont_write_bytecode = True
from browser import Browser  # noqa: E402
from viewer_client import Page, Viewer  # noqa: E402

TICKS = os.sysconf("SC_CLK_TCK")


class Listener(Page):
    """A page without a screen, of half the frame's width: shows what comes, or stops reading after its first picture."""

    def __init__(self, viewer, stops):
        super().__init__(viewer, columns=1024, rows=1024)
        self.stops = stops
        self.wait_picture()
        if not stops:
            threading.Thread(target=self.listen, daemon=True).start()

    def listen(self):
        try:
            while True:
                self.next()
        except (EOFError, OSError):
            pass  # the viewer ended


def processor_time(pids):
    total = 0
    for pid in pids:
        try:
            fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
        except OSError:
            continue
        total += int(fields[11]) + int(fields[12])
    return total / TICKS


def children(pid):
    found = [pid]
    for name in glob.glob(f"/proc/{pid}/task/*/children"):
        for child in pathlib.Path(name).read_text().split():
            found += children(int(child))
    return found


def facts(page):
    rows = page.run("return [...document.querySelectorAll('#count-facts > div')].map((row) => [...row.children].map((one) => one.textContent))")
    return dict(rows)


def number(text):
    return float("".join(c for c in text.split(" ")[0] if c.isdigit() or c == ".") or "nan")


def measure(zelcam, pages, seconds):
    viewer = Viewer([zelcam], MOTION="all")
    browser = Browser() if pages else None
    try:
        if browser:
            browser.size(1280, 800)
            browser.open(viewer.address)
        others = [Listener(viewer, stops=index == 0) for index in range(pages - 1)]
        time.sleep(2)
        programs = [[viewer.process.pid], children(browser.driver.service.process.pid) if browser else []]
        first = facts(browser) if browser else {}
        start, used, shown = time.monotonic(), [processor_time(pids) for pids in programs], [one.pictures for one in others]
        latencies = []
        while time.monotonic() - start < seconds:
            time.sleep(0.5)
            if browser:
                latencies.append(number(facts(browser)["Latency to this screen"]))
        passed = time.monotonic() - start
        load = [f"{(processor_time(pids) - before) / passed * 100:.0f} %" for pids, before in zip(programs, used)]
        last = facts(browser) if browser else {}
        each = [(one.pictures - before) / passed for one, before in zip(others, shown) if not one.stops]
        frames = Page(viewer).wait_state()["frames"]
    finally:
        if browser:
            browser.end()
        viewer.end()
    row = [str(pages), load[0], "", "", "", "", ""]
    if browser:
        rates = [f"{(number(last[name]) - number(first[name])) / passed:.1f}" for name in ("Delivered", "Shown here")]
        row[2:6] = [load[1], *rates, f"{sorted(latencies)[len(latencies) // 2]:.0f} ms"]
    if each:
        row[6] = f"{sum(each) / len(each):.1f}"
    return row + [f"{frames['lost_link']} + {frames['lost_buffer']} of {frames['delivered']}"]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seconds", type=float, default=10)
    parser.add_argument("zelcam", nargs="?", default="build/linux/bin/zelcam")
    arguments = parser.parse_args()
    rows = [["Pages", "zelcam: processor", "browser: processor", "frames/s delivered", "frames/s on the screen",
             "hand-over to screen, median", "frames/s of each other page", "lost on the link + without a buffer"], ["---"] * 8]
    rows += [measure(os.path.abspath(arguments.zelcam), pages, arguments.seconds) for pages in (0, 1, 8)]
    for row in rows:
        print("| " + " | ".join(row) + " |")
    print(f"\n{os.cpu_count()} cores, load {os.getloadavg()[0]:.1f} at the end")


main()
