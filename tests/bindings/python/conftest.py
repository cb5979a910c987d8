"""Small, fast simulated cameras for every test, and children that see the same."""
import gc
import os
import pathlib
import subprocess
import sys

import pytest

os.environ.update(ZEL_SIM_SIZE="64x48", ZEL_SIM_PACE="none", ZEL_SIM_FILL="noise", MPLBACKEND="Agg")

import zel  # noqa: E402  (the cameras are made as the environment says)


@pytest.fixture
def camera():
    """A monochrome camera with the settings that it wakes up with."""
    gc.collect()  # an error that was looked at keeps the frames of the test before
    with zel.open("300101") as opened:
        opened.trigger, opened.binning, opened.roi, opened.gain, opened.buffers = "internal", 1, None, 0, 8
        yield opened


@pytest.fixture
def child():
    """Runs a Python program in a process of its own; answers its standard output."""
    def run(code, status=0, **environment):
        done = subprocess.run([sys.executable, "-c", "import os, zel, numpy as np\n" + code], text=True,
                              capture_output=True, timeout=100, env={**os.environ, **environment})
        assert done.returncode == status, done.stdout + done.stderr
        return done.stdout
    return run


@pytest.fixture
def build():
    """The folder with the programs and libraries of this build."""
    return pathlib.Path(zel.__file__).parents[2]
