#!/usr/bin/env python3
"""What the viewer costs: scripts/viewer-figures.py [--seconds S] [ZELCAM]

Runs `zelcam view` with the simulated camera of 2048 x 2048 pixels for some seconds with no page, with one, and with eight, one
of which stopped listening. The first page is Chromium without a screen, which draws with the processor; the others take
pictures and answer at once. Prints a row for each run.
"""

import argparse
import base64
import glob
import json
import os
import pathlib
import socket
import struct
import sys
import threading
import time
import urllib.parse

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests/tools/zelcam/view"))
sys.dont_write_bytecode = True
from browser import Page, Viewer, wait  # noqa: E402

TICKS = os.sysconf("SC_CLK_TCK")


class Listener:
    """A page without a screen: asks for all of the frame, answers `shown`; or stops reading after its first picture."""

    def __init__(self, address, stops=False):
        url = urllib.parse.urlparse(address)
        self.shown, self.stops = 0, stops
        self.socket = socket.create_connection((url.hostname, url.port))
        key = base64.b64encode(os.urandom(16)).decode()
        self.socket.sendall((f"GET {url.path}socket HTTP/1.1\r\nHost: {url.netloc}\r\nOrigin: http://{url.netloc}\r\n"
                             f"Upgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
                             f"Sec-WebSocket-Key: {key}\r\n\r\n").encode())
        self.file = self.socket.makefile("rb")
        while self.file.readline().strip():
            pass
        self.say(type="view", view=1, x=0, y=0, width=2048, height=2048, columns=1024, rows=1024)
        threading.Thread(target=self.listen, daemon=True).start()

    def say(self, **message):
        text = json.dumps(message).encode()
        size = bytes([0x80 | len(text)]) if len(text) < 126 else b"\xfe" + struct.pack(">H", len(text))
        self.socket.sendall(b"\x81" + size + bytes(4) + text)  # masked with zeros

    def listen(self):
        try:
            while True:
                kind, size = self.file.read(2)
                size = struct.unpack(">H", self.file.read(2))[0] if size == 126 else size
                size = struct.unpack(">Q", self.file.read(8))[0] if size == 127 else size
                data = self.file.read(size)
                if kind & 15 != 2:
                    continue
                if self.stops:
                    return
                self.shown += 1
                self.say(type="shown", frame=struct.unpack_from("<I", data, 8)[0], at=time.time() * 1000)
        except (OSError, ValueError, struct.error):
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
    page = None
    try:
        if pages:
            page = Page()
            page.size(1280, 800)
            page.open(viewer.address)
        others = [Listener(viewer.address, stops=index == 0) for index in range(pages - 1)]
        time.sleep(2)
        browser = children(page.driver.service.process.pid) if page else []
        first = facts(page) if page else {}
        used, drawing, shown, start = processor_time([viewer.process.pid]), processor_time(browser), [o.shown for o in others], time.monotonic()
        latencies = []
        while time.monotonic() - start < seconds:
            time.sleep(0.5)
            if page:
                latencies.append(number(facts(page)["Latency to this screen"]))
        passed = time.monotonic() - start
        used, drawing = processor_time([viewer.process.pid]) - used, processor_time(browser) - drawing
        last = facts(page) if page else {}
        rate = lambda name: (number(last[name]) - number(first[name])) / passed
        row = [str(pages), f"{used / passed * 100:.0f} %"]
        if page:
            row += [f"{drawing / passed * 100:.0f} %", f"{rate('Delivered'):.1f}", f"{rate('Shown here'):.1f}",
                    f"{sorted(latencies)[len(latencies) // 2]:.0f} ms"]
        else:
            row += ["", "", "", ""]
        each = [(o.shown - before) / passed for o, before in zip(others, shown) if not o.stops]
        row.append(f"{sum(each) / len(each):.1f}" if each else "")
    finally:
        viewer.process.terminate()
        printed = viewer.end().strip().splitlines()[-1]
        if page:
            page.end()
    return row + [printed]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seconds", type=float, default=10)
    parser.add_argument("zelcam", nargs="?", default="build/linux/bin/zelcam")
    arguments = parser.parse_args()
    rows = [["Pages", "zelcam: processor", "browser: processor", "frames/s delivered", "frames/s on the screen",
             "hand-over to screen, median", "frames/s of each other page", "at the end"], ["---"] * 8]
    rows += [measure(os.path.abspath(arguments.zelcam), pages, arguments.seconds) for pages in (0, 1, 8)]
    for row in rows:
        print("| " + " | ".join(row) + " |")
    print(f"\n{os.cpu_count()} cores, load {os.getloadavg()[0]:.1f} at the end")


main()
