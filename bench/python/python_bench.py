#!/usr/bin/python3
"""Measures the Python package beside the C++ layer and Aravis' bindings, in one run, and prints tables.

    python_bench.py PROGRAMS [--repetitions N] [--dry-run]      PROGRAMS: build/linux/bin

Every measurement runs in a process of its own, and the sides take turns; a figure is the median of the
repetitions. What needs the network (a fake GigE Vision camera of Aravis) is left out where there is no
private one: scripts/python-bench.sh makes it.
"""
from __future__ import annotations

import argparse
import json
import os
import statistics
import subprocess
import sys
import time
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from typing import Any

import numpy as np

Figures = dict[str, float]
SIZES = ("512x512", "2048x2048")
SIMULATED = "500102"
FAST = {"ZEL_SIM_PACE": "none", "ZEL_SIM_FILL": "none"}
ALONE = {"ZEL_SIM_CL_CAMERAS": "0", "ZEL_SIM_USB_CAMERAS": "0"}  # but for the one on the network


def usage() -> tuple[float, float, float]:
    """Clock on the wall, processor time of the program and of this thread, in µs."""
    return time.perf_counter() * 1e6, time.process_time() * 1e6, time.thread_time() * 1e6


def per_frame(begin: tuple[float, float, float], count: int) -> Figures:
    wall, process, thread = ((end - start) / count for end, start in zip(usage(), begin))
    return {"rate": 1e6 / wall, "process_us": process, "thread_us": thread}


def median_time(name: str, count: int, call: Callable[[], object]) -> Figures:
    """The median time on the clock of a call, in µs: other work of the machine does not show in it."""
    times = []
    for _ in range(count):
        begin = time.perf_counter()
        call()
        times.append(time.perf_counter() - begin)
    return {name: statistics.median(times) * 1e6}


# The jobs. FrameLoop.cpp has the same for C++.

def zel_camera(camera: str, plugins: str) -> Any:
    import zel
    if plugins:
        zel.use_plugins(plugins)
    opened = zel.open(camera)
    opened.exposure = 1e-3
    return opened


def zel_frames(count: int, camera: str, size: str, plugins: str = "") -> Figures:
    with zel_camera(camera, plugins) as opened:
        opened.buffers = 30
        opened.start()
        number = first = opened.wait(10).number
        arrays, begin = [], usage()
        for _ in range(count):
            frame = opened.wait(10)
            before = time.perf_counter()
            pixels = np.asarray(frame)
            arrays.append(time.perf_counter() - before)
            number = frame.number + 0 * int(pixels[0, 0])
        figures = per_frame(begin, count)
        copies = float(not np.shares_memory(np.asarray(frame), np.asarray(frame)))
        opened.stop()
    return {**figures, "lost": number - first - count, "array_us": statistics.median(arrays) * 1e6,
            "copies": copies}


def zel_drain(count: int, camera: str, size: str, plugins: str = "") -> Figures:
    with zel_camera(camera, plugins) as opened:
        opened.buffers = count + 2
        opened.start(count)
        opened.wait(10)
        time.sleep(0.5 if count > 10 else 0.0)

        def take() -> int:
            frame = opened.wait(10)
            return int(frame.number + np.asarray(frame)[0, 0])

        return median_time("wall_us", count - 1, take)


def zel_reads(count: int, camera: str, size: str, plugins: str = "") -> Figures:
    with zel_camera(camera, plugins) as opened:
        parameter = opened.params["EXPOSURE_TIME_US"]
        return median_time("read_us", count, lambda: parameter.value)


def aravis_camera(size: str) -> Any:
    import gi  # type: ignore[import]
    gi.require_version("Aravis", "0.8")
    from gi.repository import Aravis  # type: ignore[import]
    camera = Aravis.Camera.new("127.0.0.1")
    camera.gv_set_stream_options(Aravis.GvStreamOption.PACKET_SOCKET_DISABLED)
    camera.gv_auto_packet_size()
    camera.set_region(0, 0, *map(int, size.split("x")))
    camera.set_pixel_format_from_string("Mono16")
    return Aravis, camera


def aravis_frames(count: int, camera: str, size: str) -> Figures:
    Aravis, opened = aravis_camera(size)
    width, height = map(int, size.split("x"))
    stream = opened.create_stream(None, None)
    # As large a socket as the GigE plug-in asks for: with Aravis' own the fake camera's bursts get lost.
    stream.set_property("socket-buffer", Aravis.GvStreamSocketBuffer.FIXED)
    stream.set_property("socket-buffer-size", min(max(2 * opened.get_payload(), 8 << 20), 64 << 20))
    for _ in range(30):
        stream.push_buffer(Aravis.Buffer.new_allocate(opened.get_payload()))
    opened.start_acquisition()
    arrays, lost, taken, begin = [], 0, -1, usage()
    while taken < count:
        buffer = stream.timeout_pop_buffer(10_000_000)
        if buffer is None:
            raise SystemExit("no frame within 10 s")
        if buffer.get_status() != Aravis.BufferStatus.SUCCESS:
            lost += taken >= 0
        else:
            before = time.perf_counter()
            pixels = np.frombuffer(buffer.get_data(), np.uint16).reshape(height, width)
            arrays.append(time.perf_counter() - before)
            pixels[0, 0]
            if taken < 0:
                begin = usage()
            taken += 1
            if taken == count:
                figures = per_frame(begin, count)
                again = np.frombuffer(buffer.get_data(), np.uint16).reshape(height, width)
                copies = float(not np.shares_memory(pixels, again))
        stream.push_buffer(buffer)
    opened.stop_acquisition()
    return {**figures, "lost": lost, "array_us": statistics.median(arrays) * 1e6, "copies": copies}


def aravis_reads(count: int, camera: str, size: str) -> Figures:
    _, opened = aravis_camera(size)
    return median_time("read_us", count, opened.get_exposure_time)


def python_sleeps(count: int, camera: str, size: str) -> Figures:
    """What it costs the interpreter to wake up after a millisecond, whatever it waits for."""
    begin = usage()
    for _ in range(count):
        time.sleep(1e-3)
    return per_frame(begin, count)


JOBS: list[Callable[..., Figures]] = [zel_frames, zel_drain, zel_reads, aravis_frames, aravis_reads,
                                      python_sleeps]


# The run.

class Bench:
    def __init__(self, programs: str, repetitions: int, short: bool) -> None:
        self.programs, self.repetitions, self.short = os.path.abspath(programs), repetitions, short

    def once(self, job: str, count: int, camera: str, size: str, plugins: str = "",
             **settings: str) -> Figures:
        """Runs a job in a process of its own; cpp_... is FrameLoop's."""
        if job.startswith("cpp_"):
            command = [os.path.join(self.programs, "bench", "frame_loop"), job[4:]]
        else:
            command = [sys.executable, os.path.abspath(__file__), "job", job]
        command += [str(5 if self.short else count), camera, size, *([plugins] if plugins else [])]
        environment = {**os.environ, **settings, "ZEL_SIM_SIZE": size,
                       "PYTHONPATH": os.path.join(self.programs, "python")}
        done = subprocess.run(command, env=environment, stdout=subprocess.PIPE, check=True, text=True,
                              timeout=120)
        figures: Figures = json.loads(done.stdout)
        return figures

    def sides(self, jobs: list[tuple[str, str, str]], count: int, size: str,
              **settings: str) -> list[Figures]:
        """Medians of jobs (name, camera, plug-ins) that take turns."""
        runs: list[list[Figures]] = [[] for _ in jobs]
        for _ in range(self.repetitions):
            for side, (job, camera, plugins) in zip(runs, jobs):
                side.append(self.once(job, count, camera, size, plugins, **settings))
        return [{name: statistics.median(run[name] for run in side) for name in side[0]} for side in runs]


@contextmanager
def fake_camera(programs: str, size: str, rate: float) -> Iterator[None]:
    """Aravis' GigE Vision camera on the loopback, sending Mono16."""
    command = [os.path.join(programs, "fake_gige_camera"), "--size", size, "--period", str(round(1e6 / rate)),
               "--replace", 'Name="Bayer=>Name="Other']
    with subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE) as camera:
        assert camera.stdout
        camera.stdout.readline()
        try:
            yield
        finally:
            camera.kill()


def gige(bench: Bench) -> None:
    jobs = [("zel_frames", "0", "gige"), ("aravis_frames", "0", "")]
    print("| GigE, fake camera | | frames/s | lost | processor, ms/frame | to NumPy, µs | copies to NumPy |")
    print("|---|---|---|---|---|---|---|")
    small, large = SIZES
    for size, rate, count in ((small, 50, 150), (small, 100, 300), (large, 4, 20), (large, 10, 30)):
        with fake_camera(bench.programs, size, rate):
            for name, side in zip(("zel", "Aravis"), bench.sides(jobs, count, size, **ALONE)):
                print(f"| {size}, {rate} frames/s | {name} | {side['rate']:.1f} | {side['lost']:.0f} "
                      f"| {side['process_us'] / 1000:.2f} | {side['array_us']:.1f} | {side['copies']:.0f} |",
                      flush=True)
    with fake_camera(bench.programs, "512x512", 1):
        ours, theirs, cpp = bench.sides([("zel_reads", "0", "gige"), ("aravis_reads", "0", ""),
                                         ("cpp_reads", "0", "gige")], 300, "512x512", **ALONE)
    print(f"\nA read of the exposure time over GigE Vision: zel {ours['read_us']:.1f} µs, "
          f"C++ layer {cpp['read_us']:.1f} µs, Aravis {theirs['read_us']:.1f} µs.\n")


def simulated(bench: Bench) -> None:
    print("| Simulated camera, unpaced | frames/s | processor, ms/frame | to NumPy, µs | copies to NumPy |")
    print("|---|---|---|---|---|")
    for size, count in list(zip(SIZES, (2000, 300)))[:1 if bench.short else None]:
        jobs = [("cpp_frames", SIMULATED, ""), ("zel_frames", SIMULATED, "")]
        cpp, ours = bench.sides(jobs, count, size, ZEL_SIM_PACE="none", ZEL_SIM_FILL="static")
        print(f"| {size}, C++ layer | {cpp['rate']:.0f} | {cpp['process_us'] / 1000:.3f} | – | – |")
        print(f"| {size}, zel | {ours['rate']:.0f} | {ours['process_us'] / 1000:.3f} "
              f"| {ours['array_us']:.2f} | {ours['copies']:.0f} |", flush=True)
    print("\n| The package over the C++ layer, µs | C++ | zel | difference |\n|---|---|---|---|")
    jobs = [("cpp_frames", SIMULATED, ""), ("zel_frames", SIMULATED, ""), ("python_sleeps", SIMULATED, "")]
    # A real camera of this size sends 70 frames/s.
    cpp, ours, sleeps = bench.sides(jobs, 2000, "512x512", ZEL_SIM_PACE="14.3", ZEL_SIM_FILL="none")
    figures = {"this thread's processor time": "thread_us", "the program's processor time": "process_us"}
    for name, figure in figures.items():
        print(f"| frame at {ours['rate']:.0f} frames/s, {name} | {cpp[figure]:.1f} | {ours[figure]:.1f} "
              f"| {ours[figure] - cpp[figure]:.1f} |")
    print(f"| `time.sleep(0.001)` instead of a frame, this thread's processor time | – "
          f"| {sleeps['thread_us']:.1f} | – |")
    jobs = [("cpp_drain", SIMULATED, ""), ("zel_drain", SIMULATED, "")]
    cpp, ours = bench.sides(jobs, 200, "512x512", **FAST)
    print(f"| frame that waits already, on the clock | {cpp['wall_us']:.2f} | {ours['wall_us']:.2f} "
          f"| {ours['wall_us'] - cpp['wall_us']:.2f} |")
    jobs = [("cpp_reads", SIMULATED, ""), ("zel_reads", SIMULATED, "")]
    cpp, ours = bench.sides(jobs, 20000, "512x512", **FAST)
    print(f"| parameter read, on the clock | {cpp['read_us']:.2f} | {ours['read_us']:.2f} "
          f"| {ours['read_us'] - cpp['read_us']:.2f} |", flush=True)


def main() -> None:
    if sys.argv[1:2] == ["job"]:
        job, count, *rest = sys.argv[2:]
        called = next(function for function in JOBS if function.__name__ == job)
        print(json.dumps(called(int(count), *rest)))
        return
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("programs")
    parser.add_argument("--repetitions", type=int, default=5)
    parser.add_argument("--network", action="store_true",
                        help="there is a private network: measure GigE Vision, too")
    parser.add_argument("--dry-run", action="store_true", help="everything once, with few frames")
    options = parser.parse_args()
    bench = Bench(options.programs, 1 if options.dry_run else options.repetitions, options.dry_run)
    if options.network:
        gige(bench)
    simulated(bench)


if __name__ == "__main__":
    main()
