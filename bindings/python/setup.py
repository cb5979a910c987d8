"""Builds the Python package, with the SDK's libraries inside.

The compiled module needs the C++ of the tree that this folder lies in: CMake builds it there, in
build/python, with the SDK's library and plug-ins, which go into the folder zel/lib of the package.
ZEL_BUILD_DIR names a folder that the tree is built in already (build/linux, from the root of the tree);
what is there is not compiled again.
"""

import os
import re
import shlex
import shutil
import subprocess
import sys
import sysconfig
from pathlib import Path
from typing import NoReturn

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext
from setuptools.command.sdist import sdist
from setuptools.errors import ExecError, SetupError

HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[1]
BUILD = ROOT / "build" / "python"
PACKAGES = f"what is needed is installed by {ROOT}/scripts/setup.sh build"


def version() -> str:
    """The version of the SDK, from the tree's CMakeLists.txt."""
    project = ROOT / "CMakeLists.txt"
    found = re.search(r"project\(ZelCameraSDK VERSION ([0-9.]+)", project.read_text("utf-8"))
    if not found:
        raise SetupError(f"{project} has no version of the project")
    return found.group(1)


def run(*command: str | Path) -> str:
    """Runs a program, and answers what it printed; when it fails, that is the error."""
    words = [str(word) for word in command]
    print(shlex.join(words), flush=True)
    try:
        done = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    except FileNotFoundError as error:
        raise ExecError(f"{words[0]} is missing; {PACKAGES}") from error
    if done.returncode != 0:
        raise ExecError(f"{shlex.join(words)} failed:\n{done.stdout[-6000:]}")
    return done.stdout


class BuildWithCMake(build_ext):
    """Has CMake build the module, and puts it with the SDK's libraries into the package."""

    def run(self) -> None:
        if self.editable_mode or self.inplace:
            raise SetupError("zel can't be installed to be edited; put the build folder into PYTHONPATH "
                             "instead, as PYTHONPATH=build/linux/bin/python")
        folder = self.built_before() or self.configured()
        run("cmake", "--build", folder, "--target", "zel_python_wheel")
        library = Path(self.build_lib).resolve()
        run("cmake", "--install", folder, "--component", "python-wheel", "--prefix", library, "--strip")
        suffix = sysconfig.get_config_var("EXT_SUFFIX")
        if not (library / "zel" / f"_core{suffix}").is_file():
            raise SetupError(f"{folder} is built for another Python than {sys.executable}")

    def built_before(self) -> Path | None:
        """The folder that ZEL_BUILD_DIR names, as seen from the root of the tree."""
        name = os.environ.get("ZEL_BUILD_DIR")
        if not name:
            return None
        folder = ROOT / name
        if not (folder / "CMakeCache.txt").is_file():
            raise SetupError(f"ZEL_BUILD_DIR: {folder} is not a build folder of the tree")
        return folder

    def configured(self) -> Path:
        """A build folder for the package alone."""
        folder = BUILD / "cmake"
        said = run("cmake", "-S", ROOT, "-B", folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
                   "-DZEL_BATCHES=ON", "-DBUILD_TESTING=OFF", "-DZEL_GSTREAMER=OFF",
                   "-DZEL_PYTHON_PACKAGE=ON", f"-DZEL_PYTHON_EXECUTABLE={sys.executable}")
        without = re.search(r"Without the Python package zel: (.*)", said)
        if without:
            raise SetupError(f"{without.group(1)}; {PACKAGES}")
        return folder


class NoSourceArchive(sdist):
    """The sources of the module are the whole tree's."""

    def run(self) -> NoReturn:
        raise SetupError("zel has no source archive of its own: its C++ is that of the whole tree. Build a "
                         "wheel (pip wheel . --no-build-isolation --no-deps), or hand on the tree")


# What setuptools leaves behind lies in the tree's build folder, and does not go into the next wheel.
shutil.rmtree(BUILD / "setuptools", ignore_errors=True)
BUILD.mkdir(parents=True, exist_ok=True)
setup(
    version=version(),
    packages=["zel"],
    package_data={"zel": ["py.typed", "*.pyi"]},
    ext_modules=[Extension("zel._core", sources=[])],
    cmdclass={"build_ext": BuildWithCMake, "sdist": NoSourceArchive},
    options={"build": {"build_base": str(BUILD / "setuptools")}, "egg_info": {"egg_base": str(BUILD)}},
    zip_safe=False,
)
