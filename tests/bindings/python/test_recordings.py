"""Recordings: read as arrays, and made of a camera's frames."""
import concurrent.futures
import json
import multiprocessing
import os
import pickle
import signal
import subprocess
import sys
import xml.etree.ElementTree as ElementTree

import numpy as np
import pytest
import zel
from conftest import PROGRAMS, child, run

FRAMES = 12
FRAME_TAG, RECORDING_TAG = 65201, 65200
OME = "{http://www.openmicroscopy.org/Schemas/OME/2016-06}"
REAL = {"ZEL_SIM_PACE": "real"}


@pytest.fixture(scope="module")
def recording(tmp_path_factory):
    """Twelve frames in files of five, compressed, and all their samples."""
    with zel.open("300101") as camera:
        name = tmp_path_factory.mktemp("recorded") / "run"
        camera.record(name, FRAMES, split_frames=5, compression="zstd", allow_loss=True)
    opened = zel.open_recording(name)
    return opened, np.asarray(opened)


@pytest.mark.parametrize("compression", ["none", "deflate"])
@pytest.mark.parametrize("serial, bits, color", [("300101", 14, False), ("400101", 12, False), ("500101", 14, True)])
def test_samples_and_facts_are_those_of_the_tool_and_of_other_programs(tmp_path, serial, bits, color, compression):
    def zelcam(command, *options):
        return json.loads(run(PROGRAMS / "zelcam", command, "-c", serial, "--gain", "3", "--json", *options))

    tifffile = pytest.importorskip("tifffile", reason="python3-tifffile is not installed")
    pictures = zelcam("capture", "-n", "12", "--buffers", "16", "--out", tmp_path)["pictures"]
    known = {picture["frame_number"]: tifffile.imread(picture["path"]) for picture in pictures}
    name = str(tmp_path / "tool.ome.tif")
    zelcam("record", "-n", "8", "--compress", compression, "--pixel-size", "0.5", name)
    with zel.open_recording(name) as told, tifffile.TiffFile(name) as tiff:
        assert tiff.is_ome and tiff.is_bigtiff and tiff.series[0].axes == "TYX"
        samples = tiff.series[0].asarray()
        assert np.array_equal(told, samples) and told.shape == samples.shape and told.dtype == samples.dtype
        assert (told.info.serial, told.info.bits, told.info.pixel_size) == (serial, bits, 0.5)
        assert told.info.roi == (0, 0, 64, 48) and told.gain.tolist() == [3] * 8
        for number, frame in zip(told.numbers, samples):
            assert np.array_equal(frame, known[number]), number
        recording = json.loads(tiff.pages[0].tags[RECORDING_TAG].value)
        frames = [json.loads(page.aspage().tags[FRAME_TAG].value) for page in tiff.pages]
        ome = ElementTree.fromstring(tiff.ome_metadata)
        pixels = ome.find(f"{OME}Image/{OME}Pixels").attrib
        assert [int(pixels[key]) for key in ("SizeX", "SizeY", "SizeT", "SignificantBits")] == [64, 48, 8, bits]
        assert (recording["bits"], recording["cfa_phase"] > 0, float(pixels["PhysicalSizeX"])) == (bits, color, 0.5)
        detector = ome.find(f"{OME}Instrument/{OME}Detector").attrib
        assert (detector["SerialNumber"], detector["Model"]) == (serial, recording["model"])
        assert [(round(float(plane.get("DeltaT")) * 1e9), round(float(plane.get("ExposureTime")) * 1e6))
                for plane in ome.findall(f"{OME}Image/{OME}Pixels/{OME}Plane")] == [
                    (frame["host_ns"], frame["exposure_us"]) for frame in frames]
        aligned = all(page.aspage().dataoffsets[0] % 4096 == 0 for page in tiff.pages)
        assert aligned or compression != "none"
    spare = os.stat(name).st_blocks * 512 - os.path.getsize(name)
    assert spare < 65536, f"{spare} bytes were not given back"


def test_a_camera_records_the_frames_that_it_gives(camera, tmp_path):
    given = {frame.number: np.array(frame) for frame in camera.stream(8)}
    summary = camera.record(tmp_path / "own", 8, compression="deflate", allow_loss=True)
    shared = [(given[own.number], own) for own in summary.open().frames if own.number in given]
    assert shared and all(np.array_equal(*pair) for pair in shared)
    assert summary.files == (tmp_path / "own.ome.tif",) and summary.frames == len(summary.open())
    assert summary.bytes == os.path.getsize(summary.files[0])


@pytest.mark.parametrize("key", [
    0, -1, np.int8(3), slice(None, None, -3), slice(5, 5), slice(3, 9, 2), [1, -5], [],
    np.array([[1, 2], [3, 4]]), np.arange(FRAMES) % 2 == 0, (3, 4), (3, 4, 5),
    (slice(2, 9, 2), slice(3, 20, 4), -1), ([4, 2], 5), (Ellipsis, 2), (1, Ellipsis, 3),
    Ellipsis, (), (slice(4, 6), Ellipsis, slice(None, None, -1))], ids=str)
def test_it_is_indexed_as_an_array(recording, key):
    opened, samples = recording
    chosen = opened[key]
    assert np.shape(chosen) == samples[key].shape and chosen.dtype == np.uint16
    assert np.array_equal(chosen, samples[key])


@pytest.mark.parametrize("key", [
    FRAMES, -FRAMES - 1, 1.5, None, True, "x", (1, 2, 3, 4), (0, [1, 2]), (0, None), [99], (0, 99),
    np.zeros((FRAMES, 48, 64), bool), np.ones(3, bool)], ids=str)
def test_what_is_not_there_is_an_index_error(recording, key):
    with pytest.raises(IndexError):
        recording[0][key]


def test_files_of_a_session_are_one_recording(recording, tmp_path):
    opened, samples = recording
    assert [file.name for file in opened.files] == [f"run_000{i}.ome.tif" for i in (1, 2, 3)]
    assert len(opened) == len(opened.frames) == FRAMES and opened.complete and opened.ended == "frames"
    assert zel.open_recording(reversed(opened.files)).numbers.tolist() == opened.numbers.tolist()
    assert np.array_equal(pickle.loads(pickle.dumps(opened))[::4], samples[::4])
    assert opened.size * 2 == opened.nbytes == samples.nbytes and len(list(opened)) == FRAMES
    for own, frame in zip(opened.frames, opened):
        assert np.array_equal(own, frame) and own.number == opened.numbers[own.index]
    assert np.all(np.diff(opened.arrival) > 0) and np.all(opened.exposure == opened.frames[-1].exposure)
    since = opened.arrival_utc - np.datetime64(opened.info.started.replace(tzinfo=None))
    assert np.allclose(since / np.timedelta64(1, "s"), opened.arrival, atol=1e-8)
    with zel.open("300101") as camera:
        other = camera.record(tmp_path / "other", 1).files
    with pytest.raises(zel.InvalidArgument, match="another session"):
        zel.open_recording(opened.files + other)


SHARED = []  # forked processes have it without a copy


def read_again():
    """Whether every frame is what it was."""
    recording, samples = SHARED
    return all(np.array_equal(recording[index], samples[index]) for index in list(range(FRAMES)) * 20)


def test_threads_and_forked_processes_read_at_once(recording):
    SHARED[:] = recording
    with concurrent.futures.ProcessPoolExecutor(2, multiprocessing.get_context("fork")) as processes, \
            concurrent.futures.ThreadPoolExecutor(4) as threads:
        jobs = [pool.submit(read_again) for pool in (processes, processes, *[threads] * 4)]
        assert all(job.result(60) for job in jobs)


def test_files_that_are_damaged_or_none(camera, tmp_path):
    whole = camera.record(tmp_path / "whole", 6, compression="deflate", allow_loss=True).files[0].read_bytes()
    place = whole.index(b"\x78", 4096)  # where the first frame's compressed samples begin
    bad = tmp_path / "bad.ome.tif"
    bad.write_bytes(whole[:place] + bytes(2000) + whole[place + 2000:])
    with zel.open_recording(bad) as opened, pytest.raises(zel.Error, match="frame 0 of '.*bad.ome.tif' can't be read: "):
        opened[0]
    for ask in (lambda: opened[0], lambda: np.asarray(opened), lambda: opened.frames[1].pixels):
        with pytest.raises(zel.Closed, match="bad.ome.tif"):
            ask()
    with pytest.raises(zel.Error, match="'.*nowhere' can't be read: .*no such file"):
        zel.open_recording(tmp_path / "nowhere")
    with pytest.raises(zel.InvalidArgument):
        zel.open_recording([])


def test_what_can_not_be_recorded_leaves_everything_as_it_was(camera, tmp_path):
    mine = tmp_path / "mine.ome.tif"
    mine.write_text("somebody else's")
    cases = [({"path": mine, "frames": 1}, zel.OutputError, "already"),
             ({"path": mine / "in" / "a", "frames": 1}, OSError, "folder"),
             ({"frames": 10**9}, zel.OutputError, "the disk can't hold"),
             ({"frames": 0}, zel.InvalidArgument, "frames"), ({"every": True}, zel.InvalidArgument, "every"),
             ({"seconds": -1}, ValueError, "seconds"), ({"timeout": np.nan}, ValueError, "timeout"),
             ({"compression": "zip"}, zel.InvalidArgument, "zstd"),
             ({"split_frames": 2, "overwrite": True}, zel.InvalidArgument, "one of them")]
    for options, error, match in cases:
        with pytest.raises(error, match=match):
            camera.record(**{"path": tmp_path / "new", **options})
    camera.on_frame(print)
    with pytest.raises(zel.Refused, match="handler"):
        camera.record(tmp_path / "new", 1)
    camera.on_frame(None)
    assert mine.read_text() == "somebody else's" and os.listdir(tmp_path) == [mine.name]
    assert camera.buffers == 8 and not camera.running
    assert camera.record(mine, 2, overwrite=True, allow_loss=True).open().shape == (2, 48, 64)


def test_options_of_a_recording(camera, tmp_path):
    camera.set_averaging(3)
    told = []

    def progress(status):
        with pytest.raises(zel.Refused, match="another thread"):
            camera.record(tmp_path / "second", 1)
        told.append(status)
        if status.frames >= 5:
            camera.interrupt()

    camera.start()
    held = camera.wait()
    summary = camera.record(tmp_path / "run", every=2, allow_loss=True, progress=progress)
    assert camera.running and camera.wait().number > held.number
    camera.stop()
    camera.set_averaging(0)
    opened = summary.open()
    assert summary.ended == opened.ended == "interrupted" and told and summary.frames == len(opened) >= 5
    assert summary.passed_over + summary.lost.total > 0 and np.all(np.diff(opened.numbers) >= 2)
    assert opened.info.averaged == 3
    assert opened.missing == sum(gap.missing for gap in opened.gaps) and opened.lost == summary.lost


@pytest.mark.parametrize("faults, before, options, error, ended", [
    ("fault 0 lose after=3 times=2", "", "frames=8", "FramesLost", "frames"),
    ("fault 0 unplug-frame after=3", "", "frames=8", "LinkLost", "link lost"),
    ("", "camera.params.FRAME_COUNT = 4", "frames=8", "TimeoutWithReason", "sequence over"),
    ("", "", "seconds=1", "None", "seconds"),
    ("", "", "progress=lambda status: status.frames and camera.stop()", "None", "stopped"),
    ("", "", "progress=lambda status: status.frames and camera.close()", "Closed", "interrupted"),
    ("", "", "progress=lambda status: status.frames and 1 / 0", "ZeroDivisionError", "ended"),
    ("", "import resource; resource.setrlimit(resource.RLIMIT_FSIZE, (200_000,) * 2)", "", "OutputError",
     "disk full"),
])
def test_however_it_ends_the_file_is_complete(tmp_path, faults, before, options, error, ended):
    out = child(f"""
camera = zel.open("300101")
{before}
error = None
try:
    camera.record("run", {options})
except Exception as thrown:
    error = thrown
print(type(error).__name__ if error else None, os.chdir("/"))
""".replace('"run"', repr(str(tmp_path / "run"))), ZEL_SIM_FAULTS=faults, **REAL)
    opened = zel.open_recording(tmp_path / "run")
    assert out.split()[0] == error and (opened.ended, opened.complete) == (ended, True)
    if error == "FramesLost":
        assert opened.lost == (2, 0, 0) and opened.missing == 2
        assert opened.gaps[0][:3] == (3, opened.numbers[2], 2)


# A child that tells when frames have come, and is then ended from outside or leaves by itself.
RECORDS = """
import sys, threading, zel
camera = zel.open("300101")
came = threading.Event()
def progress(status):
    if status.written > 2 and not came.is_set():
        print("going", flush=True)
        came.set()
"""


@pytest.mark.parametrize("code, status, ended", [
    ("camera.record(sys.argv[1], progress=progress)", -signal.SIGINT, "interrupted"),
    ("threading.Thread(target=lambda: camera.record(sys.argv[1], progress=progress), daemon=True).start()\n"
     "came.wait()", 0, "ended"),
    ("camera.record(sys.argv[1], progress=progress)", -signal.SIGKILL, None)])
def test_ctrl_c_and_the_interpreters_end_complete_the_file_and_a_kill_leaves_it_readable(
        tmp_path, code, status, ended):
    name = str(tmp_path / "run")
    with subprocess.Popen([sys.executable, "-c", RECORDS + code, name], stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, env={**os.environ, **REAL}, text=True) as process:
        assert process.stdout.readline() == "going\n"
        if status:
            process.send_signal(-status)
        err = process.communicate(timeout=100)[1]
    opened = zel.open_recording(name)
    assert process.returncode == status, err
    note = "KeyboardInterrupt" in err and f"{len(opened)} frames were recorded" in err
    assert note == (ended == "interrupted"), err
    assert opened.ended == ended and len(opened) > 2
    assert opened.complete == (opened.lost is not None) == ("cut off" not in repr(opened)) == bool(ended)
