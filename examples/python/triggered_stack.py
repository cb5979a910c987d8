#!/usr/bin/python3
"""A stack with one plane for each signal at the camera's trigger input, as a focus drive sends them.

The planes go into an OME-TIFF file that ImageJ and napari open. A plane that is missing would shift all those
behind it, so the frame numbers are looked at: the camera numbers its frames from 0, one for each signal. Then
the program says which plane is sharpest.

Simulated cameras get their signals from a script, here one in 100 ms, from half a second on:

    ZEL_SIM_FAULTS='@0.5+0.1 hwtrigger L2048-4M' triggered_stack.py --planes 10 --file stack.ome.tif
"""
from __future__ import annotations

import argparse
import os
import sys

import numpy as np
from numpy.typing import NDArray

import zel


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--camera", default="0", help="number or serial number (default: %(default)s)")
    parser.add_argument("--plugins", help="cameras of this set: sim, gige, or a folder (default: the SDK's)")
    parser.add_argument("--exposure", type=float, default=2e-3, help="seconds (default: %(default)s)")
    parser.add_argument("--planes", type=int, default=10,
                        help="how many signals will come (default: %(default)s)")
    parser.add_argument("--timeout", type=float, default=10.0,
                        help="longest pause between two signals, in seconds")
    parser.add_argument("--file", default="stack.ome.tif", help="the stack (default: %(default)s)")
    return parser.parse_args()


def sharpness(plane: NDArray[np.uint16]) -> float:
    """Mean squared difference of neighbours over the mean squared: largest where the picture is in focus."""
    samples = plane.astype(np.float32)
    return float(np.mean(np.diff(samples, axis=1) ** 2) / np.mean(samples) ** 2)


def take(camera: zel.Camera, options: argparse.Namespace) -> None:
    """Records the planes; with fewer signals than planes, those that came."""
    camera.exposure = options.exposure
    camera.trigger = "hardware"
    print(f"waiting for {options.planes} signals", flush=True)
    try:
        camera.record(options.file, frames=options.planes, timeout=options.timeout, allow_loss=True)
    except zel.TimeoutWithReason as error:
        if not os.path.exists(options.file):  # no plane at all
            raise
        print(error)
    finally:
        camera.trigger = "internal"  # the camera keeps it


def main() -> None:
    options = arguments()
    if options.plugins:
        zel.use_plugins(options.plugins)
    with zel.open(options.camera) as camera:
        take(camera, options)
    with zel.open_recording(options.file) as stack:
        numbers = stack.numbers.tolist()
        sharpest = max(range(len(stack)), key=lambda plane: sharpness(stack[plane]))
    missing = sorted(set(range(options.planes)) - set(numbers))
    print(f"{len(numbers)} planes in {options.file}; plane {sharpest} is sharpest")
    if missing:
        sys.exit(f"triggered_stack: planes are missing: {', '.join(map(str, missing))}")


if __name__ == "__main__":
    try:
        main()
    except zel.Error as error:
        sys.exit(f"triggered_stack: {error}")
