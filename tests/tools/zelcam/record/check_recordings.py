#!/usr/bin/env python3
"""Recordings in another program's eyes: tifffile reads what was recorded, and what was being recorded at a kill -9.

    check_recordings.py BIN     BIN: the folder with zelcam and its plug-ins
"""
import concurrent.futures
import json
import os
import subprocess
import sys
import tempfile
import time
import xml.etree.ElementTree as ElementTree

import numpy
import tifffile

KILLS = 100
FRAME_TAG = 65201
RECORDING_TAG = 65200
OME = "{http://www.openmicroscopy.org/Schemas/OME/2016-06}"
SIM = {"ZEL_SIM_CL_CAMERAS": "1", "ZEL_SIM_EBUS_CAMERAS": "1", "ZEL_SIM_USB_CAMERAS": "1"}
ONE_CAMERA = {"ZEL_SIM_EBUS_CAMERAS": "0", "ZEL_SIM_USB_CAMERAS": "0"}


def zelcam(arguments, **settings):
    """The command's JSON."""
    done = subprocess.run(["./zelcam", *arguments, "--json"], env={**os.environ, **SIM, **settings}, check=True,
                          capture_output=True)
    return json.loads(done.stdout)


def facts_of(page, tag):
    return json.loads(page.aspage().tags[tag].value)


def check_metadata(path, serial, bits, pixel):
    """The OME metadata say what the tool's own say."""
    with tifffile.TiffFile(path) as tiff:
        assert tiff.is_ome and tiff.is_bigtiff and tiff.series[0].axes == "TYX", path
        recording = facts_of(tiff.pages[0], RECORDING_TAG)
        frames = [facts_of(page, FRAME_TAG) for page in tiff.pages]
        image = ElementTree.fromstring(tiff.ome_metadata).find(f"{OME}Image")
        pixels = image.find(f"{OME}Pixels").attrib
        assert [int(pixels[k]) for k in ("SizeX", "SizeY", "SizeT", "SignificantBits")] == [
            recording["width"], recording["height"], len(frames), bits], (path, pixels)
        assert recording["bits"] == bits and float(pixels["PhysicalSizeX"]) == pixel, (path, pixels)
        detector = ElementTree.fromstring(tiff.ome_metadata).find(f"{OME}Instrument/{OME}Detector").attrib
        assert (detector["SerialNumber"], detector["Model"]) == (serial, recording["model"]), (path, detector)
        planes = image.findall(f"{OME}Pixels/{OME}Plane")
        told = [(round(float(p.get("DeltaT")) * 1e9), round(float(p.get("ExposureTime")) * 1e6)) for p in planes]
        assert told == [(f["host_ns"], f["exposure_us"]) for f in frames], (path, told, frames)
        offsets = [page.aspage().dataoffsets[0] for page in tiff.pages]
        assert tiff.pages[0].compression != 1 or all(offset % 4096 == 0 for offset in offsets), (path, offsets)
        return recording, frames, tiff.series[0].asarray()


def check_cameras(folder):
    """Each depth, mono and raw color: the samples are those of pictures of the same frames."""
    for serial, bits, color in (("300101", 14, False), ("400101", 12, False), ("500101", 14, True)):
        pictures = zelcam(["capture", "-c", serial, "-n", "12", "--buffers", "16", "--out", f"{folder}/{serial}"],
                          ZEL_SIM_SIZE="160x120")["pictures"]
        known = {p["frame_number"]: tifffile.imread(p["path"]) for p in pictures}
        for compression in ("none", "deflate"):
            path = f"{folder}/{serial}_{compression}.ome.tif"
            zelcam(["record", "-c", serial, "-n", "8", "--pixel-size", "0.325", "--compress", compression, path],
                   ZEL_SIM_SIZE="160x120")
            recording, frames, samples = check_metadata(path, serial, bits, 0.325)
            assert (recording["cfa_phase"] > 0) == color, recording
            for frame, picture in zip(frames, samples):
                assert numpy.array_equal(picture, known[frame["number"]]), (path, frame)
            spare = os.stat(path).st_blocks * 512 - os.path.getsize(path)
            assert spare < 65536, f"{path}: {spare} bytes were not given back"


def frames_after_kill(path, number):
    """Kills a recording when its file has some size; the number of frames that are left."""
    settings = {**os.environ, **SIM, **ONE_CAMERA, "ZEL_SIM_SIZE": "64x48", "ZEL_SIM_PACE": "none"}
    frame_bytes = 8192
    tool = subprocess.Popen(["./zelcam", "record", path], env=settings, stdout=subprocess.DEVNULL,
                            stderr=subprocess.DEVNULL)
    while not os.path.exists(path) or os.path.getsize(path) < (number % 25 + 1) * 3 * frame_bytes:
        assert tool.poll() is None, "zelcam ended by itself"
        time.sleep(0.0005)
    tool.kill()
    tool.wait()
    with tifffile.TiffFile(path) as tiff:
        written = os.path.getsize(path) // frame_bytes
        assert len(tiff.pages) >= written - 3, f"{path}: {len(tiff.pages)} of {written} frames"
        numbers = [facts_of(page, FRAME_TAG)["number"] for page in tiff.pages]
        assert numbers == sorted(set(numbers)), f"{path}: {numbers}"
        last = tiff.pages[len(tiff.pages) - 1].asarray()
        assert last.shape == (48, 64) and last.any(), f"{path}: the last frame is empty"
    os.remove(path)
    return len(numbers)


def check_kills(folder):
    """Killed at any moment, a file has every frame but the last few."""
    with concurrent.futures.ThreadPoolExecutor(8) as pool:
        left = list(pool.map(lambda n: frames_after_kill(f"{folder}/killed_{n}.ome.tif", n), range(KILLS)))
    assert min(left) > 1
    print(f"{KILLS} kills: every file opened; they have {min(left)} to {max(left)} frames")


os.chdir(sys.argv[1])
with tempfile.TemporaryDirectory() as temporary:
    check_cameras(temporary)
    check_kills(temporary)
