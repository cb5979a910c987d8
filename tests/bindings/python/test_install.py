"""The package as pip builds, installs and removes it."""
from __future__ import annotations

import sys
import venv
import zipfile
from pathlib import Path

import conftest
import pytest
import zel
from conftest import PROGRAMS, SOURCES

BUILD = PROGRAMS.parent
PLATFORM = f"cp{sys.version_info.major}{sys.version_info.minor}"


def run(*command: object, **more):
    """Runs a program that sees nothing of the build."""
    return conftest.run(*command, without=("PYTHON", "LD_", "ZEL_"), **{"cwd": SOURCES, **more})


@pytest.fixture(scope="module")
def wheel(tmp_path_factory: pytest.TempPathFactory) -> Path:
    folder = tmp_path_factory.mktemp("wheel")
    run(sys.executable, "-m", "pip", "wheel", ".", "--no-build-isolation", "--no-deps", "--no-index",
        "-w", folder, ZEL_BUILD_DIR=str(BUILD))
    [file] = folder.iterdir()
    return file


def test_wheel_has_version_platform_types_and_notices(wheel: Path) -> None:
    assert wheel.name == f"zel-{zel.__version__}-{PLATFORM}-{PLATFORM}-linux_x86_64.whl"
    names = zipfile.ZipFile(wheel).namelist()
    assert {name.partition("/")[0] for name in names} == {"zel", f"zel-{zel.__version__}.dist-info"}
    files = {name.rpartition("/")[2] for name in names}
    assert {"py.typed", "_core.pyi", "LICENSE", "THIRD-PARTY.md"} <= files
    assert {file.name for file in (SOURCES / "zel").glob("*.py")} <= files


FRAME_AND_LIBRARIES = """
import zel
zel.use_plugins("sim")
print(len(zel.cameras()), zel.open().snap().shape)
print(*{line.split()[-1] for line in open("/proc/self/maps") if "zel_" in line or "_core.cpython" in line})
"""


def test_installed_wheel_takes_a_frame_with_its_own_libraries_and_leaves_nothing(
        wheel: Path, tmp_path: Path) -> None:
    venv.create(tmp_path, system_site_packages=True)
    python = tmp_path / "bin" / "python"
    before = sorted(tmp_path.rglob("*"))
    run(python, "-m", "pip", "install", "--no-index", wheel)
    frame, libraries = run(python, "-c", FRAME_AND_LIBRARIES, cwd=tmp_path,
                           ZEL_SIM_SIZE="64x48").splitlines()
    assert frame == "4 (48, 64)"
    assert "libzel_sdk.so.3" in libraries
    assert [file for file in libraries.split() if not Path(file).is_relative_to(tmp_path)] == []
    run(python, "-m", "pip", "uninstall", "-y", "zel")
    assert sorted(tmp_path.rglob("*")) == before


@pytest.mark.parametrize("command, folder, why", [
    ("sdist", str(BUILD), "zel has no source archive of its own"),
    ("build_ext", "/nowhere", "ZEL_BUILD_DIR: /nowhere is not a build folder of the tree"),
    ("build_ext --inplace", str(BUILD), "PYTHONPATH=build/linux/bin/python"),
])
def test_what_setup_can_not_do_it_says(command: str, folder: str, why: str) -> None:
    assert why in run(sys.executable, "setup.py", "-q", *command.split(), exit_code=1, ZEL_BUILD_DIR=folder)
