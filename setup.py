"""Builds the Python package with CMake; its libraries go into the package.

CORVANE_BUILD names a build tree that is to be taken as it is, in place of a new one.
"""

import os
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

SOURCE = Path(__file__).resolve().parent


class CMakeBuild(build_ext):
    def build_extension(self, ext):
        package = Path(self.get_ext_fullpath(ext.name)).resolve().parent
        build = os.environ.get("CORVANE_BUILD") or self.built()
        for part in ("Corvane_Runtime", "Corvane_Python"):
            subprocess.check_call(
                ["cmake", "--install", build, "--component", part, "--prefix", f"{self.build_temp}/{part}", "--strip"]
            )
        module = next(Path(self.build_temp, "Corvane_Python").rglob("_core*.so"))
        shutil.copytree(module.parent, package, dirs_exist_ok=True)
        shutil.copytree(Path(self.build_temp, "Corvane_Runtime/lib"), package / "lib", dirs_exist_ok=True)

    def built(self):
        options = {
            "CMAKE_BUILD_TYPE": "Release",
            "CMAKE_INSTALL_LIBDIR": "lib",
            "CORVANE_BUILDS_ALL": "ON",
            "CORVANE_PYTHON": "ON",
            "CORVANE_TESTS": "OFF",
            "Python_EXECUTABLE": sys.executable,
        }
        build = f"{self.build_temp}/cmake"
        given = [f"-D{name}={value}" for name, value in options.items()]
        subprocess.check_call(["cmake", "-S", SOURCE, "-B", build, "-G", "Ninja", *given])
        subprocess.check_call(["cmake", "--build", build, "--target", "corvane_python"])
        return build


setup(
    packages=[],
    ext_modules=[Extension("corvane._core", sources=[])],
    cmdclass={"build_ext": CMakeBuild},
)
