#!/usr/bin/python3
"""A picture every few seconds, for as long as one likes.

Picture n is due n intervals after the first one, so the time that a picture takes does not add up. Files are
numbered on from what is in the folder and never overwritten; `times.csv` beside them says when each was
taken. A camera that is unplugged costs the pictures of that time: the program says so, looks for it when the
next one is due, and goes on.

    time_lapse.py --interval 10 --pictures 360 --folder growth
"""
from __future__ import annotations

import argparse
import csv
import sys
import time
from pathlib import Path

import zel


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--camera", default="0", help="number or serial number (default: %(default)s)")
    parser.add_argument("--plugins", help="cameras of this set: sim, gige, or a folder (default: the SDK's)")
    parser.add_argument("--exposure", type=float, default=0.02, help="seconds (default: %(default)s)")
    parser.add_argument("--interval", type=float, default=1.0, help="seconds (default: %(default)s)")
    parser.add_argument("--pictures", type=int, default=5, help="how many (default: %(default)s)")
    parser.add_argument("--folder", type=Path, default=Path("time_lapse"),
                        help="where to (default: %(default)s)")
    return parser.parse_args()


def next_file(folder: Path) -> Path:
    """A file that was not there; making it empty keeps it for this program."""
    number = max((int(path.stem) for path in folder.glob("*.tif") if path.stem.isdigit()), default=0)
    while True:
        number += 1
        path = folder / f"{number:05d}.tif"
        try:
            path.touch(exist_ok=False)
            return path
        except FileExistsError:
            continue


def take(camera: zel.Camera, exposure: float, folder: Path) -> Path:
    """Takes one picture, saves it, and notes its times."""
    camera.exposure = exposure  # each time: a camera that was switched off has lost its settings
    with camera.snap() as frame:
        path = next_file(folder)
        try:
            frame.save(path)
        except zel.Error:
            path.unlink()  # half a picture is none
            raise
        times = folder / "times.csv"
        is_new = not times.exists()
        with times.open("a", newline="") as file:
            writer = csv.writer(file)
            if is_new:
                writer.writerow(["file", "arrival (UTC)", "exposure (s)", "frame number"])
            writer.writerow([path.name, frame.arrival_utc.isoformat(), frame.exposure, frame.number])
    return path


def main() -> None:
    options = arguments()
    options.folder.mkdir(parents=True, exist_ok=True)
    if options.plugins:
        zel.use_plugins(options.plugins)
    first = zel.open(options.camera)
    first.exposure = options.exposure  # one that it does not take ends the program, not every picture
    camera: zel.Camera | None = first
    serial, taken = first.serial, 0
    start = time.monotonic()
    try:
        for number in range(options.pictures):
            time.sleep(max(start + number * options.interval - time.monotonic(), 0.0))
            late = time.monotonic() - start - number * options.interval
            try:
                camera = camera or zel.open(serial)
                path = take(camera, options.exposure, options.folder)
                print(f"{path}  {late * 1e3:.0f} ms late", flush=True)
                taken += 1
            except zel.OutputError:
                raise
            except zel.Error as error:
                print(f"picture {number + 1} is missing: {error}", flush=True)
                if camera:
                    camera.close()  # so that it is found when it comes back
                camera = None
    except KeyboardInterrupt:
        print()
    finally:
        if camera:
            camera.close()
    print(f"{taken} of {options.pictures} pictures are in {options.folder}")
    if taken < options.pictures:
        sys.exit(1)


if __name__ == "__main__":
    try:
        main()
    except zel.Error as error:
        sys.exit(f"time_lapse: {error}")
