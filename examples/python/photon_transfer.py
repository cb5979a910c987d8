#!/usr/bin/python3
"""Photon-transfer curve of a camera: gain, read noise, full scale.

Pairs of evenly lit frames are taken at a series of exposures, and a pair at the shortest one. Half the
variance of a pair's difference is the temporal noise alone: what stands still (vignetting, dust, pixels that
differ) cancels. Shot noise makes the variance grow with the mean, and the slope is the gain K. The dark
variance, less that of rounding to whole counts, is the read noise.

Method and names: EMVA Standard 1288, release 4.0 linear, sections on the photon transfer method, temporal
dark noise and saturation: K from the points below 70 % of saturation, saturation where the variance is
largest, rounding 1/12 DN².

    photon_transfer.py --simulate --plot photon_transfer.png
"""
from __future__ import annotations

import argparse
import os
import sys
import tempfile
from dataclasses import dataclass

import matplotlib  # type: ignore[import]

matplotlib.use("Agg")  # writes files, needs no screen

import matplotlib.pyplot as plt  # type: ignore[import]  # noqa: E402
import numpy as np  # noqa: E402
from numpy.typing import NDArray  # noqa: E402

import zel  # noqa: E402

ROUNDING = 1.0 / 12.0  # variance of rounding to whole counts, DN²


@dataclass
class Curve:
    """Of the pairs: exposures (s), means (DN above dark), temporal variances (DN²); dark mean, variance."""

    exposures: NDArray[np.float64]
    means: NDArray[np.float64]
    variances: NDArray[np.float64]
    dark_mean: float
    dark_variance: float


@dataclass
class Result:
    """What the curve says: gain (DN/e-), its standard error, read noise (e-), saturation (DN above dark)."""

    gain: float
    gain_error: float
    read_noise: float
    saturation: float
    in_fit: NDArray[np.bool_]


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--camera", default="500102", help="number or serial number (default: %(default)s)")
    parser.add_argument("--plugins", help="cameras of this set: sim, gige, or a folder (default: the SDK's)")
    parser.add_argument("--points", type=int, default=16, help="exposures (default: %(default)s)")
    parser.add_argument("--gain", type=int, help="amplifier gain, in the camera's steps")
    parser.add_argument("--size", type=int, default=512,
                        help="side of the square in the middle that is looked at")
    parser.add_argument("--cap", action="store_true",
                        help="wait until the lens is covered before the dark pair")
    parser.add_argument("--simulate", action="store_true",
                        help="let simulated cameras look at an even grey picture")
    parser.add_argument("--plot", default="photon_transfer.png", help="the picture (default: %(default)s)")
    return parser.parse_args()


def look_at_grey(folder: str) -> None:
    """Puts an even picture before the simulated cameras; they read their settings when looked for."""
    path = os.path.join(folder, "grey.png")
    plt.imsave(path, np.full((16, 16, 3), 230, np.uint8))
    os.environ["ZEL_SIM_SCENE"] = path


def take_pair(camera: zel.Camera, exposure: float) -> tuple[float, float]:
    """Mean (DN) and temporal variance (DN²) of two frames of one exposure (s)."""
    camera.exposure = exposure
    with camera.stream(2) as frames:
        first, second = (np.asarray(frame).astype(np.float64) for frame in frames)
    return float((first.mean() + second.mean()) / 2), float(np.var(first - second) / 2)


def full_scale_exposure(camera: zel.Camera, dark: float) -> float:
    """The exposure (s) at which the light reaches the largest count."""
    exposure, largest = 1e-3, float(2**camera.bits - 1)
    for _ in range(8):
        camera.exposure = exposure
        mean = float(np.mean(np.asarray(camera.snap())))
        if mean > 0.9 * largest:
            exposure /= 10
        elif mean - dark < 0.05 * largest:
            exposure *= 4
        else:
            return exposure * (largest - dark) / (mean - dark)
    raise SystemExit("photon_transfer: no exposure gives a usable picture; is there light, and not too much?")


def measure(camera: zel.Camera, points: int, wait_for_cap: bool) -> Curve:
    """Takes all pairs. Without a cap the camera's shortest exposure counts as dark."""
    shortest = camera.params["EXPOSURE_TIME_US"].range
    dark_exposure = max(shortest.minimum, 1) * 1e-6 if shortest else 1e-6
    if wait_for_cap:
        input("cover the lens, then press Enter ")
    dark_mean, dark_variance = take_pair(camera, dark_exposure)
    if wait_for_cap:
        input("uncover it, then press Enter ")
    longest = full_scale_exposure(camera, dark_mean)
    # A third close to the dark, where read noise goes over into shot noise; the last one beyond full scale.
    low = points // 3
    shares = np.concatenate([np.geomspace(0.0003, 0.03, low), np.linspace(0.1, 1.08, points - low)])
    exposures = shares * longest
    pairs = []
    for exposure in exposures:
        mean, variance = take_pair(camera, float(exposure))
        print(f"{exposure * 1e3:9.3f} ms  mean {mean:9.2f} DN  variance {variance:10.2f} DN²", flush=True)
        pairs.append((mean, variance))
    means, variances = np.array(pairs).T
    return Curve(exposures, means - dark_mean, variances, dark_mean, dark_variance)


def evaluate(curve: Curve) -> Result:
    """The line through the points below 70 % of saturation, each weighed by how well it is known."""
    saturation = float(curve.means[np.argmax(curve.variances)])
    in_fit = curve.means <= 0.7 * saturation
    if in_fit.sum() < 4:
        raise SystemExit("photon_transfer: too few points below 70 % of saturation; take more with --points")
    (gain, _), covariance = np.polyfit(curve.means[in_fit], curve.variances[in_fit] - curve.dark_variance, 1,
                                       w=1.0 / curve.variances[in_fit], cov=True)
    read_noise = np.sqrt(max(curve.dark_variance - ROUNDING, 0.0)) / gain
    return Result(float(gain), float(np.sqrt(covariance[0, 0])), float(read_noise), saturation, in_fit)


def plot(curve: Curve, result: Result, title: str, path: str) -> None:
    """Left: variance against mean, with the line. Right: noise against signal in electrons, and its parts."""
    figure, (left, right) = plt.subplots(1, 2, figsize=(11.0, 4.6), layout="constrained")
    figure.suptitle(title)
    used, unused = result.in_fit, ~result.in_fit
    line = np.array([0.0, curve.means.max()])
    left.plot(line, result.gain * line, color="tab:orange", label=f"slope K = {result.gain:.4f} DN/e⁻")
    above_dark = curve.variances - curve.dark_variance
    left.plot(curve.means[used], above_dark[used], "o", color="tab:blue", label="in the fit")
    left.plot(curve.means[unused], above_dark[unused], "o", mfc="none", color="tab:blue",
              label="above 70 % of saturation")
    left.set(xlabel="mean signal above dark (DN)", ylabel="temporal variance above dark (DN²)")
    left.legend(loc="upper left")

    signal = np.geomspace(0.2, curve.means.max() / result.gain, 200)
    rounding = np.sqrt(ROUNDING) / result.gain
    right.loglog(signal, np.sqrt(result.read_noise**2 + rounding**2 + signal), color="tab:orange",
                 label="read noise, shot noise and rounding")
    right.loglog(signal, np.sqrt(signal), "--", color="tab:green", label="shot noise")
    right.axhline(result.read_noise, linestyle=":", color="tab:red",
                  label=f"read noise {result.read_noise:.2f} e⁻")
    right.loglog(curve.means / result.gain, np.sqrt(curve.variances) / result.gain, "o", color="tab:blue",
                 label="measured")
    right.loglog([signal[0]], [np.sqrt(curve.dark_variance) / result.gain], "s", color="tab:blue",
                 label="dark pair")
    right.set(xlabel="mean signal (e⁻)", ylabel="temporal noise (e⁻)", ylim=(0.3, None))
    right.legend(loc="upper left")
    for axes in (left, right):
        axes.grid(alpha=0.3)
    figure.savefig(path, dpi=100)


def main() -> None:
    options = arguments()
    with tempfile.TemporaryDirectory() as folder:
        if options.simulate:
            look_at_grey(folder)
        if options.plugins:
            zel.use_plugins(options.plugins)
        with zel.open(options.camera) as camera:
            if options.gain is not None:
                camera.gain = options.gain
            width, height = camera.sensor_size
            side = min(options.size, width, height)
            camera.roi = zel.Region((width - side) // 2, (height - side) // 2, side, side)
            curve = measure(camera, options.points, options.cap)
            title = f"{camera.info.name}, serial number {camera.info.serial}, gain setting {camera.gain}"
    result = evaluate(curve)
    print(f"gain K       {result.gain:.4f} DN/e- (standard error {result.gain_error:.4f}), "
          f"{1 / result.gain:.4f} e-/DN")
    print(f"read noise   {result.read_noise:.3f} e-")
    print(f"saturation   {result.saturation:.0f} DN above dark, {result.saturation / result.gain:.0f} e-")
    print(f"dynamic range {20 * np.log10(result.saturation / result.gain / result.read_noise):.1f} dB")
    plot(curve, result, title, options.plot)
    print(f"{options.plot} is written")


if __name__ == "__main__":
    try:
        main()
    except zel.Error as error:
        sys.exit(f"photon_transfer: {error}")
