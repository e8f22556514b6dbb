"""Packs the Python package zef. CMake builds its extension module, by the preset python.

CMAKE_ARGS in the environment adds arguments for CMake.
"""
import os
import re
import shlex
import shutil
import subprocess
import sys
import sysconfig
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

TOP = Path(__file__).resolve().parent


def get_version():
    text = (TOP / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"project\(zef VERSION ([0-9.]+)", text)[1]


class BuildByCMake(build_ext):
    def build_extension(self, ext):
        # One folder for each kind of Python, as deep as other builds are, so that their objects serve through ccache.
        folder = TOP / "build" / f"python-{sysconfig.get_config_var('SOABI')}"
        configure = ["cmake", "--preset", "python", "-B", str(folder), f"-DPython_EXECUTABLE={sys.executable}",
                     "-DZEF_WERROR=OFF", *shlex.split(os.environ.get("CMAKE_ARGS", ""))]
        subprocess.run(configure, cwd=TOP, check=True)
        subprocess.run(["cmake", "--build", str(folder), "--target", "zef_python"], cwd=TOP, check=True)
        target = Path(self.get_ext_fullpath(ext.name))
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(folder / "python" / "zef" / target.name, target)


setup(version=get_version(), ext_modules=[Extension("zef._zef", [])], cmdclass={"build_ext": BuildByCMake})
