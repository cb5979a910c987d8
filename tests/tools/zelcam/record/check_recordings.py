#!/usr/bin/env python3
"""Recordings in another program's eyes: tifffile reads what was recorded.

    check_recordings.py BIN     BIN: the folder with zelcam and its plug-ins
"""
import json
import os
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

import numpy
import tifffile

FRAME_TAG = 65201
RECORDING_TAG = 65200
OME = "{http://www.openmicroscopy.org/Schemas/OME/2016-06}"
SIM = {"ZEL_SIM_CL_CAMERAS": "1", "ZEL_SIM_EBUS_CAMERAS": "1", "ZEL_SIM_USB_CAMERAS": "1"}


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


os.chdir(sys.argv[1])
with tempfile.TemporaryDirectory() as temporary:
    check_cameras(temporary)
