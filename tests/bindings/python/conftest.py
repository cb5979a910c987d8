"""Small, fast simulated cameras for every test, and children that see the same."""
import gc
import os
import pathlib
import subprocess
import sys

import pytest

os.environ.update(ZEL_SIM_SIZE="64x48", ZEL_SIM_PACE="none", ZEL_SIM_FILL="noise", MPLBACKEND="Agg")

import zel  # noqa: E402  (the cameras are made as the environment says)


ROOT = pathlib.Path(__file__).resolve().parents[3]
SOURCES = ROOT / "bindings" / "python"
PROGRAMS = pathlib.Path(zel.__file__).parents[2]  # and libraries of this build


def run(*command, exit_code=0, without=(), cwd=None, stderr=subprocess.STDOUT, **settings):
    """Runs a program with these environment variables, and none that begins with one of `without`; answers both of its
    streams. exit_code: None when it may be any."""
    kept = {name: value for name, value in os.environ.items() if not name.startswith(tuple(without))}
    done = subprocess.run(list(map(str, command)), cwd=cwd, env={**kept, **settings}, text=True, timeout=200,
                          stdout=subprocess.PIPE, stderr=stderr, check=False)
    assert exit_code in (None, done.returncode), done.stdout
    return done.stdout


def child(code, stderr=None, **environment):
    """What a Python program prints that sees the same cameras."""
    return run(sys.executable, "-c", "import os, zel, numpy as np\n" + code, stderr=stderr, **environment)


@pytest.fixture
def camera():
    """A monochrome camera with the settings that it wakes up with."""
    gc.collect()  # an error that was looked at keeps the frames of the test before
    with zel.open("300101") as opened:
        opened.trigger, opened.binning, opened.roi, opened.gain, opened.buffers = "internal", 1, None, 0, 8
        yield opened
