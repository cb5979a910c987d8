"""Examples, the sessions of docs/python.md, the notebook and the benchmark, run as a user runs them."""
from __future__ import annotations

import os
import re
import runpy
import signal
import subprocess
import sys
import warnings
from pathlib import Path

import conftest
import numpy as np
import pytest
import tifffile  # type: ignore[import]
from conftest import PROGRAMS, ROOT

EXAMPLES = ROOT / "examples" / "python"
FAST = "ZEL_SIM_PACE=none ZEL_SIM_SIZE=640x512"


def environment(settings: str, faults: str = "") -> dict[str, str]:
    given = dict(setting.split("=") for setting in settings.split())
    return {"PYTHONPATH": str(PROGRAMS / "python"), "PYTHONDONTWRITEBYTECODE": "1", "ZEL_SIM_FAULTS": faults, **given}


def run(*command: object, settings: str = FAST, faults: str = "", **more):
    """Runs a Python program that sees nothing of these tests' cameras."""
    return conftest.run(sys.executable, *command, without=["ZEL_"], **environment(settings, faults), **more)


def number(text: str, output: str) -> float:
    found = re.search(text + r"\s+([\d.]+)", output)
    assert found, output
    return float(found.group(1))


@pytest.mark.parametrize("program", sorted(EXAMPLES.glob("*.py")), ids=lambda path: str(path.stem))
def test_help_tells_what_a_program_is_for(program: Path, tmp_path: Path) -> None:
    first_line = program.read_text().split('"""')[1].split("\n")[0]
    assert first_line in run(program, "--help", cwd=tmp_path)


def test_photon_transfer_finds_the_simulated_sensors_gain_and_read_noise(tmp_path: Path) -> None:
    output = run(EXAMPLES / "photon_transfer.py", "--simulate", "--gain", "168", "--points", "10",
                 "--plot", "plot.png", cwd=tmp_path)
    # devices/sim/sensor: 0.05 mV an electron, 5.5 dB and 0.0358 dB a step, 14 bits for 2000 mV.
    expected = 0.05 * 10 ** ((5.5 + 0.0358 * 168) / 20) * (2**14 - 1) / 2000
    assert number("gain K", output) == pytest.approx(expected, rel=0.02)
    assert number("read noise", output) == pytest.approx(6.0, rel=0.05)
    assert number("saturation", output) == pytest.approx(2**14 - 65, rel=0.1)
    assert (tmp_path / "plot.png").read_bytes().startswith(b"\x89PNG")


def test_live_statistics_prints_lines_and_ends_with_ctrl_c(tmp_path: Path) -> None:
    output = run(EXAMPLES / "live_statistics.py", "--lines", "3", "--interval", "0.05", cwd=tmp_path)
    means = [float(mean) for mean in re.findall(r"mean +([\d.]+) DN", output)]
    assert len(means) == 3 and max(means) - min(means) < 0.01 * means[0]

    command = [sys.executable, str(EXAMPLES / "live_statistics.py"), "--interval", "0.01"]
    with subprocess.Popen(command, cwd=tmp_path, text=True, env={**os.environ, **environment(FAST)},
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT) as endless:
        assert endless.stdout
        assert "mean" in endless.stdout.readline()
        endless.send_signal(signal.SIGINT)
        rest = endless.stdout.read()
    assert endless.returncode == 0 and "Traceback" not in rest and "lines; lost on the link" in rest


def test_time_lapse_numbers_on_and_outlives_a_lost_link(tmp_path: Path) -> None:
    command = (EXAMPLES / "time_lapse.py", "--camera", "500102", "--interval", "0.25", "--folder", "run",
               "--pictures")
    run(*command, "1", cwd=tmp_path)
    first = (tmp_path / "run" / "00001.tif").read_bytes()
    output = run(*command, "12", cwd=tmp_path, exit_code=1,
                 faults="fault 500102 unplug-start after=1; @0.3+0.3 plug 500102")
    assert re.search(r"00002.tif.*\npicture 2 is missing: camera 3 can.t be started(.*\n)+.*00003.tif", output)
    assert (tmp_path / "run" / "00001.tif").read_bytes() == first
    rows = (tmp_path / "run" / "times.csv").read_text().splitlines()
    files = sorted(path.name for path in (tmp_path / "run").glob("*.tif"))
    assert [row.split(",")[0] for row in rows[1:]] == files
    assert tifffile.imread(tmp_path / "run" / files[-1]).shape == (512, 640)


@pytest.mark.parametrize("lost", [0, 1])
def test_triggered_stack_has_a_plane_for_each_signal_or_tells_the_missing(lost: int, tmp_path: Path) -> None:
    faults = "@0.2+0.02 hwtrigger 500102" + "; fault 500102 lose after=2" * lost
    output = run(EXAMPLES / "triggered_stack.py", "--camera", "500102", "--planes", "5", "--timeout", "2",
                 cwd=tmp_path, exit_code=lost, faults=faults)
    assert ("planes are missing: 2" in output) == bool(lost)
    assert tifffile.imread(tmp_path / "stack.ome.tif").shape == (5, 512, 640)


def test_color_check_sees_the_charts_colors(tmp_path: Path) -> None:
    output = run(EXAMPLES / "color_check.py", "--limit", "1", cwd=tmp_path, settings="ZEL_SIM_PACE=none")
    assert len(re.findall(r"^ +\d+ +[\d.-]+ ", output, re.MULTILINE)) == 24
    assert "above 0.01" in run(EXAMPLES / "color_check.py", "--limit", "0.01", cwd=tmp_path, exit_code=1,
                               settings="ZEL_SIM_PACE=none")


def test_color_check_calculates_ciede2000_as_it_is_published() -> None:
    delta_e = runpy.run_path(str(EXAMPLES / "color_check.py"))["delta_e"]
    # G. Sharma, W. Wu, E. N. Dalal (2005), table 1, pairs 1, 7, 14, 17, 25, 34.
    pairs = np.array([[50, 2.6772, -79.7751, 50, 0, -82.7485], [50, 0, 0, 50, -1, 2],
                      [50, 2.49, -0.001, 50, -2.49, 0.0011], [50, 2.5, 0, 73, 25, -18],
                      [60.2574, -34.0099, 36.2677, 60.4626, -34.1751, 39.4387],
                      [2.0776, 0.0795, -1.135, 0.9033, -0.0636, -0.5514]])
    published = [2.0425, 2.3669, 7.2195, 27.1492, 1.2644, 0.9082]
    assert delta_e(pairs[:, :3], pairs[:, 3:]) == pytest.approx(published, abs=1e-4)


def test_the_sessions_of_the_guide_run_as_shown(tmp_path: Path) -> None:
    page = str(ROOT / "docs" / "python.md")
    program = f"import doctest; print(doctest.testfile({page!r}, module_relative=False))"
    output = run("-c", program, cwd=tmp_path, settings="ZEL_SIM_PACE=20")
    result = re.search(r"TestResults\(failed=0, attempted=(\d+)\)", output)
    assert result and int(result.group(1)) > 50, output


def test_the_notebook_runs_as_shown(tmp_path: Path) -> None:
    output = run(ROOT / "scripts" / "run-notebook.py", ROOT / "docs" / "python-tour.ipynb", cwd=tmp_path, settings="")
    assert " 0 of them say something else" in output
    for line in re.findall("a cell is not run: .*", output):
        warnings.warn(line)  # pytest prints it


def test_the_benchmark_runs(tmp_path: Path) -> None:
    if not (PROGRAMS / "bench" / "frame_loop").exists():
        pytest.skip("bench/frame_loop is not built")
    output = run(ROOT / "bench" / "python" / "python_bench.py", PROGRAMS, "--dry-run", cwd=tmp_path, settings="")
    assert re.search(r"^\| parameter read, on the clock \| [\d.]+ \| [\d.]+ \|", output, re.MULTILINE), output
