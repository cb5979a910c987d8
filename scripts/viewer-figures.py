#!/usr/bin/env python3
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
sys.dont_write_bytecode = True
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
    folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build/linux/bin").resolve()
    seconds = float(sys.argv[2]) if len(sys.argv) > 2 else 10.0
    print("| pages | pictures/s of a page | latency, ms | CPU | frames delivered | lost on the link | without a buffer |")
    print("|---|---|---|---|---|---|---|")
    try:
        for pages, stopped in ((0, 0), (1, 0), (8, 1)):
            row = measure([str(folder / "zelcam")], pages, stopped, seconds)
            print("| " + " | ".join(map(str, row)) + " |", flush=True)
        print(f"\n{os.cpu_count()} cores, load {os.getloadavg()[0]:.1f} at the end")
    finally:
        Viewer.end_all()


main()
