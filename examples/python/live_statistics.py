#!/usr/bin/python3
"""Statistics of a running camera, a line every second: mean, spread, extremes, rate, drops by cause.

It looks at the newest frame each time, so it is never behind, however long its arithmetic takes. Ctrl-C ends
it.

    live_statistics.py --camera 0 --interval 0.5
"""
from __future__ import annotations

import argparse
import sys

import numpy as np

import zel


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--camera", default="0", help="number or serial number (default: %(default)s)")
    parser.add_argument("--plugins", help="cameras of this set: sim, gige, or a folder (default: the SDK's)")
    parser.add_argument("--exposure", type=float, help="exposure time in seconds")
    parser.add_argument("--interval", type=float, default=1.0,
                        help="seconds between lines (default: %(default)s)")
    parser.add_argument("--lines", type=int, help="end after so many lines")
    return parser.parse_args()


def show(camera: zel.Camera, frame: zel.Frame, rate: float) -> None:
    """Prints the line of a frame; rate: frames per second of the camera."""
    pixels = np.asarray(frame)
    drops = camera.drops
    print(f"frame {frame.number:6d}  mean {pixels.mean():8.2f} DN  σ {pixels.std():8.2f} DN  "
          f"{pixels.min():5d}..{pixels.max():5d}  {rate:6.1f} frames/s  lost on the link {drops.link}, "
          f"no buffer {drops.no_buffer}", flush=True)


def run(camera: zel.Camera, interval: float, lines: int | None) -> int:
    """Shows frames until `lines` are printed or Ctrl-C is pressed; answers how many lines there were."""
    shown = 0
    before: tuple[int, float] | None = None
    try:
        for frame in camera.stream(newest=True):
            now = (frame.number, frame.arrival)
            before = before or now
            if now[1] - before[1] >= interval and now[0] > before[0]:
                # Frames are numbered by the camera, so the rate counts those too that nobody looked at.
                show(camera, frame, (now[0] - before[0]) / (now[1] - before[1]))
                before = now
                shown += 1
                if shown == lines:
                    break
    except KeyboardInterrupt:
        print()
    return shown


def main() -> None:
    options = arguments()
    if options.plugins:
        zel.use_plugins(options.plugins)
    with zel.open(options.camera) as camera:
        if options.exposure is not None:
            camera.exposure = options.exposure
        shown = run(camera, options.interval, options.lines)
        drops = camera.drops
    print(f"{shown} lines; lost on the link {drops.link}, without a buffer {drops.no_buffer}, "
          f"skipped for a newer one {drops.skipped}")


if __name__ == "__main__":
    try:
        main()
    except zel.Error as error:
        sys.exit(f"live_statistics: {error}")
