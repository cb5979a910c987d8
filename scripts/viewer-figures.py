#!/usr/bin/env python3
<<<<<<< HEAD
"""What viewing costs: a camera of 2048 x 2048 on loopback with no page, one, and eight of which one is stopped.

    scripts/viewer-figures.py [BIN] [SECONDS]     (default: build/linux/bin 10)

Prints a table in Markdown. A page here takes pictures of 1000 x 1000 samples and answers them at once, as a browser does that
keeps up; it is a process of its own. Latency: from the hand-over of a frame to its picture in the page's hand, half of them
below the first number and 99 % below the second. CPU: of the viewer alone, 100 % is one core."""

import multiprocessing
import os
import pathlib
import statistics
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/tools/zelcam/view"))
from viewer_client import Page, Picture, Viewer  # noqa: E402

SIDE = 1000  # samples of a picture


def look(viewer, seconds, results):
    page = Page(viewer, SIDE, SIDE)
    page.wait_picture()
    latencies = []
    start = time.monotonic()
    while time.monotonic() - start < seconds:
        message = page.next()
        if isinstance(message, Picture):
            latencies.append(time.time() * 1000 - message.hand_over)
    results.put((len(latencies) / (time.monotonic() - start), latencies))


def cpu_seconds(process):
    fields = pathlib.Path(f"/proc/{process.pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def measure(command, pages, stopped, seconds):
    viewer = Viewer(command)
    idle = [Page(viewer, 2048, 2048, receive_buffer=4096, shows=False) for _ in range(stopped)]
    results = multiprocessing.Queue()
    readers = [multiprocessing.Process(target=look, args=(viewer, seconds, results)) for _ in range(pages - stopped)]
    for reader in readers:
        reader.start()
    before, start = cpu_seconds(viewer.process), time.monotonic()
    if not readers:
        time.sleep(seconds)
    answers = [results.get() for _ in readers]
    cpu = (cpu_seconds(viewer.process) - before) / (time.monotonic() - start)
    for reader in readers:
        reader.join()
    for page in idle:
        page.socket.close()
    frames = Page(viewer).wait_state()["frames"]
    viewer.end()
    rates = [rate for rate, _ in answers]
    latencies = sorted(latency for _, list in answers for latency in list)
    shown = f"{min(rates):.1f} to {max(rates):.1f}" if rates else "-"
    waited = f"{statistics.median(latencies):.0f} / {latencies[int(0.99 * (len(latencies) - 1))]:.0f}" if rates else "-"
    return (f"{pages}{f', {stopped} stopped' if stopped else ''}", shown, waited, f"{100 * cpu:.0f} %",
            frames["delivered"], frames["lost_link"], frames["lost_buffer"])


def main():
    folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build/linux/bin")
    seconds = float(sys.argv[2]) if len(sys.argv) > 2 else 10.0
    print("| pages | pictures/s of a page | latency, ms | CPU | frames delivered | lost on the link | without a buffer |")
    print("|---|---|---|---|---|---|---|")
    try:
        for pages, stopped in ((0, 0), (1, 0), (8, 1)):
            row = measure([str(folder / "zelcam")], pages, stopped, seconds)
            print("| " + " | ".join(map(str, row)) + " |", flush=True)
    finally:
        Viewer.end_all()
=======
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
>>>>>>> page


main()
