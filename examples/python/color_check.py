#!/usr/bin/python3
"""Compares a color camera's picture of a chart with the chart's colors: a table of ΔE, patch by patch.

The chart here is that of the simulated camera's scene: 24 patches, known in linear light. For a chart of your
own change PATCHES and the corners. The exposure is chosen so that the white patch is well below white; one
factor, from that patch, then makes picture and chart equally bright. ΔE is CIEDE2000 (CIE 142-2001; formulas
as in G. Sharma, W. Wu, E. N. Dalal, Color Research and Application 30, 2005): 1 is about what an eye can just
see side by side.

    color_check.py --camera 500101 --limit 1
"""
from __future__ import annotations

import argparse
import sys
from collections.abc import Sequence

import numpy as np
from numpy.typing import NDArray

import zel

Array = NDArray[np.float64]

# Linear light: red, green, blue of the CCIR 709 primaries, row by row from the top left.
PATCHES: Array = np.array([
    [.170, .085, .055], [.540, .300, .215], [.110, .195, .340], [.095, .150, .050], [.230, .215, .440],
    [.130, .510, .400], [.680, .200, .025], [.065, .105, .390], [.540, .085, .120], [.105, .045, .145],
    [.340, .500, .045], [.750, .360, .025], [.025, .045, .300], [.060, .300, .065], [.430, .030, .040],
    [.800, .570, .015], [.490, .090, .300], [.015, .240, .360], [.880, .880, .880], [.580, .580, .580],
    [.360, .360, .360], [.190, .190, .190], [.090, .090, .090], [.032, .032, .032]])
COLUMNS, ROWS, WHITE = 6, 4, 18
# ITU-R BT.709 to CIE XYZ with the white point D65.
TO_XYZ: Array = np.array([[.4124, .3576, .1805], [.2126, .7152, .0722], [.0193, .1192, .9505]])


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--camera", default="500101", help="number or serial number (default: %(default)s)")
    parser.add_argument("--plugins", help="cameras of this set: sim, gige, or a folder (default: the SDK's)")
    parser.add_argument("--frames", type=int, default=4,
                        help="frames that are averaged (default: %(default)s)")
    parser.add_argument("--corners", type=float, nargs=4, metavar=("LEFT", "TOP", "RIGHT", "BOTTOM"),
                        help="outer edges of the patches, in pixels (default: where the simulated one lies)")
    parser.add_argument("--limit", type=float, help="fail when the largest ΔE is above this")
    return parser.parse_args()


def simulated_corners(width: int, height: int) -> Sequence[float]:
    """Outer edges of the patches in the simulated scene, 1000 units high in a frame that is wider."""
    unit = height / 1000
    spread = 1 + (width / height - 1) * 0.8
    middle_x, middle_y = width / 2 + (222 - 500) * spread * unit, height / 2 + (840 - 500) * unit
    return (middle_x - 153 * unit, middle_y - 101 * unit, middle_x + 153 * unit, middle_y + 101 * unit)


def patch_means(picture: Array, corners: Sequence[float]) -> Array:
    """The mean color of the middle of each patch: (24, 3)."""
    left, top, right, bottom = corners
    means = []
    for y in range(ROWS):
        for x in range(COLUMNS):
            center_x = left + (right - left) * (x + 0.5) / COLUMNS
            center_y = top + (bottom - top) * (y + 0.5) / ROWS
            half = 0.28 * (right - left) / COLUMNS
            rows = slice(int(center_y - half), int(center_y + half))
            area = picture[rows, int(center_x - half):int(center_x + half)]
            means.append(area.reshape(-1, 3).mean(axis=0))
    return np.array(means)


def lab(linear: Array) -> Array:
    """CIE L*a*b* (D65) of linear light, (n, 3)."""
    ratio = linear @ TO_XYZ.T / TO_XYZ.sum(axis=1)
    f = np.where(ratio > (6 / 29) ** 3, np.cbrt(ratio), ratio * (29 / 6) ** 2 / 3 + 4 / 29)
    return np.stack([116 * f[:, 1] - 16, 500 * (f[:, 0] - f[:, 1]), 200 * (f[:, 1] - f[:, 2])], axis=1)


def delta_e(first: Array, second: Array) -> Array:
    """CIEDE2000 of colors in L*a*b*, (n, 3) each: (n,)."""
    (l1, a1, b1), (l2, a2, b2) = first.T, second.T
    c7 = ((np.hypot(a1, b1) + np.hypot(a2, b2)) / 2) ** 7
    stretch = 1.5 - 0.5 * np.sqrt(c7 / (c7 + 25.0**7))
    c1, c2 = np.hypot(stretch * a1, b1), np.hypot(stretch * a2, b2)
    h1 = np.degrees(np.arctan2(b1, stretch * a1)) % 360
    h2 = np.degrees(np.arctan2(b2, stretch * a2)) % 360
    colored = c1 * c2 > 0
    dh = np.where(colored, (h2 - h1 + 180) % 360 - 180, 0.0)
    mean_h = np.where(colored, (h1 + dh / 2) % 360, h1 + h2)
    mean_l, mean_c = (l1 + l2) / 2, (c1 + c2) / 2
    t = (1 - 0.17 * np.cos(np.radians(mean_h - 30)) + 0.24 * np.cos(np.radians(2 * mean_h))
         + 0.32 * np.cos(np.radians(3 * mean_h + 6)) - 0.20 * np.cos(np.radians(4 * mean_h - 63)))
    s_l = 1 + 0.015 * (mean_l - 50) ** 2 / np.sqrt(20 + (mean_l - 50) ** 2)
    s_c, s_h = 1 + 0.045 * mean_c, 1 + 0.015 * mean_c * t
    turn = np.sin(np.radians(60 * np.exp(-(((mean_h - 275) / 25) ** 2))))
    rotation = -2 * np.sqrt(mean_c**7 / (mean_c**7 + 25.0**7)) * turn
    d_l, d_c = (l2 - l1) / s_l, (c2 - c1) / s_c
    d_h = 2 * np.sqrt(c1 * c2) * np.sin(np.radians(dh / 2)) / s_h
    result: Array = np.sqrt(d_l**2 + d_c**2 + d_h**2 + rotation * d_c * d_h)
    return result


def take(camera: zel.Camera, frames: int) -> Array:
    """Linear light of the scene, mean of some frames: (height, width, 3), 1.0 where the channel is full."""
    camera.use_color(space="linear", format="rgb16")
    full = 2**camera.bits - 1 - camera.black_level
    with camera.stream(frames) as stream:
        total = sum(np.asarray(frame).astype(np.float64) for frame in stream)
    return np.asarray(total / frames / full)


def main() -> None:
    options = arguments()
    if options.plugins:
        zel.use_plugins(options.plugins)
    with zel.open(options.camera) as camera:
        if not camera.is_color:
            sys.exit(f"color_check: {camera.info.name} is no color camera")
        corners = options.corners or simulated_corners(*camera.sensor_size)
        camera.exposure = 2e-3
        brightest = float(patch_means(take(camera, 1), corners)[WHITE].max())
        camera.exposure = 2e-3 * 0.7 / brightest
        seen = patch_means(take(camera, options.frames), corners)
    seen *= PATCHES[WHITE].mean() / seen[WHITE].mean()
    errors = delta_e(lab(PATCHES), lab(seen))
    print("patch     L*      a*      b*  of the chart     L*      a*      b*  seen     ΔE")
    for number, (wanted, found, error) in enumerate(zip(lab(PATCHES), lab(seen), errors), 1):
        print(f"{number:5d} " + " ".join(f"{value:7.2f}" for value in wanted) + "          "
              + " ".join(f"{value:7.2f}" for value in found) + f"    {error:7.2f}")
    worst = errors.argmax()
    print(f"ΔE (CIEDE2000): mean {errors.mean():.2f}, largest {errors[worst]:.2f} at patch {worst + 1}")
    if options.limit is not None and errors[worst] > options.limit:
        sys.exit(f"color_check: the largest ΔE is above {options.limit}")


if __name__ == "__main__":
    try:
        main()
    except zel.Error as error:
        sys.exit(f"color_check: {error}")
