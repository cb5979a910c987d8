#!/usr/bin/env python3
"""What is on the disk is whole or not there: zelcam is killed at random moments, and works on disks that fail.

    check_disk.py BIN [KILLS] [SEED]     BIN: the folder with zelcam and its plug-ins; KILLS: 12 without
"""
import collections
import concurrent.futures
import json
import logging
import os
import pathlib
import random
import subprocess
import sys
import tempfile
import time

import matplotlib.image
import tifffile

FRAME_TAG = 65201
ONE_CAMERA = {"ZEL_SIM_CL_CAMERAS": "1", "ZEL_SIM_EBUS_CAMERAS": "0", "ZEL_SIM_USB_CAMERAS": "0", "ZEL_SIM_SIZE": "64x48"}
COMMANDS = {
    "capture TIFF": ["capture", "-n", "FRAMES", "--allow-loss", "--out", "."],
    "capture PNG": ["capture", "-n", "FRAMES", "--allow-loss", "--format", "png", "--out", "."],
    "record": ["record", "-n", "FRAMES", "--allow-loss", "run.ome.tif"],
    "record deflate": ["record", "-n", "FRAMES", "--allow-loss", "--compress", "deflate", "run.ome.tif"],
    "download": ["calibrate", "download", "--again"],
}
LONG, SHORT = 1000, 100  # frames
OUTPUT = 7  # zelcam's exit code: it could not write


def settings(folder):
    # The download at the pace of a camera, or it would be over before it could be killed.
    return {**os.environ, **ONE_CAMERA, "ZEL_SIM_PACE": "none", "XDG_DATA_HOME": str(folder)}


def words_of(command, frames):
    return [f"{BIN}/zelcam", *(word.replace("FRAMES", str(frames)) for word in COMMANDS[command])]


def start(command, folder, frames, **more):
    return subprocess.Popen(words_of(command, frames), cwd=folder, env={**settings(folder), **more},
                            stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)


def whole_files(folder, tables):
    """Looks at every file that has its final name; how many there are of each kind."""
    found = collections.Counter()
    for path in pathlib.Path(folder).rglob("*"):
        if not path.is_file() or path.suffix not in (".tif", ".png", ".json", ".txt"):
            continue
        if path.name.endswith(".ome.tif"):
            with tifffile.TiffFile(path) as tiff:
                numbers = [json.loads(page.aspage().tags[FRAME_TAG].value)["number"] for page in tiff.pages]
                assert numbers == sorted(set(numbers)), f"{path}: {numbers}"
                assert all(page.asarray().shape == (48, 64) and page.asarray().any() for page in tiff.pages), path
                found["frames"] += len(numbers)
        elif path.suffix == ".tif":
            assert tifffile.imread(path).shape == (48, 64), path
        elif path.suffix == ".png":
            assert matplotlib.image.imread(path).shape == (48, 64), path
        elif path.suffix == ".json":
            json.loads(path.read_text())
        elif path.suffix == ".txt":
            assert path.read_bytes() == tables[path.name], path
        found[path.suffix] += 1
    return found


def run_whole(command, tables):
    """How long it takes; `tables` gets the calibration files."""
    with tempfile.TemporaryDirectory() as folder:
        begin = time.monotonic()
        tool = start(command, folder, LONG)
        assert tool.wait(100) == 0, tool.stderr.read()
        seconds = time.monotonic() - begin
        tables.update({path.name: path.read_bytes() for path in pathlib.Path(folder, "ZEL").glob("*.txt")})
        assert whole_files(folder, tables).total() > 0
        return seconds


def kill_once(command, wait, tables):
    with tempfile.TemporaryDirectory() as folder:
        tool = start(command, folder, LONG)
        time.sleep(wait)
        tool.kill()
        tool.wait()
        found = whole_files(folder, tables)
        # The next run takes over what is left.
        for path in pathlib.Path(folder).glob("*.ome.tif"):
            path.unlink()
        tool = start(command, folder, SHORT)
        assert tool.wait(100) == 0, f"after a kill: {tool.stderr.read()}"
        whole_files(folder, tables)
        return command, found


def check_kills(count, seed):
    tables = {}
    seconds = {command: run_whole(command, tables) for command in COMMANDS}
    chance = random.Random(seed)
    jobs = [(command, chance.uniform(0, seconds[command]), tables)
            for command in chance.choices(list(COMMANDS), k=count)]
    kills, found = collections.Counter(), collections.Counter()
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        for command, files in pool.map(lambda job: kill_once(*job), jobs):
            kills[command] += 1
            found += files
    print(f"{count} kills (seed {seed}): {dict(kills)}; found whole: {dict(found)}")
    return tables


def on_disk(mount, command, tables):
    """Runs the command in a folder that `mount` (a shell line, the folder is $1) makes what it says; its exit code and
    words. What is on the disk afterwards is looked at."""
    with tempfile.TemporaryDirectory() as folder, tempfile.TemporaryDirectory() as copy:
        done = subprocess.run(
            ["unshare", "-rm", "sh", "-c", f'{mount} || exit 99; cd "$1"; folder=$1 copy=$2; shift 2; "$@"; code=$?; '
             'cp -r "$folder"/. "$copy"; exit $code', "sh", folder, copy, *words_of(command, SHORT)],
            cwd="/", env=settings(folder), stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, timeout=100)
        whole_files(copy, tables)
        return done.returncode, done.stderr


def check_failing_disks(tables):
    if subprocess.run(["unshare", "-rm", "true"], stderr=subprocess.DEVNULL).returncode != 0:
        print("not tried: full and read-only disks, which this user can't mount")
        return
    full = 'mount -t tmpfs -o size=%s none "$1"'
    disks = {"full at once": full % "4k", "full": full % "28k", "full later": full % "200k",
             "read-only": f'{full % "1m"} && mkdir "$1/ZEL" && mount -o remount,ro "$1"'}
    for disk, mount in disks.items():
        for command in COMMANDS:
            code, words = on_disk(mount, command, tables)
            # The tables fit where most pictures do not.
            fits = code == 0 and command == "download" and disk in ("full", "full later")
            assert fits or code == OUTPUT and words.startswith("zelcam: "), f"{disk}, {command}: {code} {words}"
    print(f"{len(disks)} failing disks x {len(COMMANDS)} commands: told, and nothing is torn")


def check_loops(tables):
    for command in (c for c in COMMANDS if c != "download"):
        with tempfile.TemporaryDirectory() as folder:
            for name in ("run.ome.tif", "camera0_0001.json", "camera0_0001.tif", "camera0_0001.png"):
                os.symlink(name, f"{folder}/{name}")
            tool = start(command, folder, SHORT)
            words = tool.communicate(timeout=100)[1]
            # Numbering of pictures goes on behind what is there.
            assert tool.returncode == 0 if "capture" in command else words.startswith("zelcam: "), (command, words)
            assert os.path.islink(f"{folder}/camera0_0001.json") and os.path.islink(f"{folder}/run.ome.tif")
            whole_files(folder, tables)
    print("names that lead round in circles: told, and left alone")


def check_slow_disk(tables):
    """Writes of 5 ms, and everything arrives."""
    for command in COMMANDS:
        with tempfile.TemporaryDirectory() as folder:
            tool = start(command, folder, SHORT, LD_PRELOAD=f"{BIN}/slow_disk.so")
            words = tool.communicate(timeout=300)[1]
            assert tool.returncode in ((0, 8) if command != "download" else (0,)), f"{command}: {words}"
            assert whole_files(folder, tables).total() > 0
    print("a slow disk: nothing is torn")


logging.disable()  # tifffile tells of a recording without frames
BIN = os.path.abspath(sys.argv[1])
tables_whole = check_kills(int(sys.argv[2]) if len(sys.argv) > 2 else 12, int(sys.argv[3]) if len(sys.argv) > 3 else 1)
check_failing_disks(tables_whole)
check_loops(tables_whole)
if os.path.exists(f"{BIN}/slow_disk.so"):
    check_slow_disk(tables_whole)
