import logging
import os
import subprocess
from pathlib import Path

import numpy as np
import pytest

import zef


@pytest.fixture(scope="session")
def cloud():
    """Points of a closed surface. Tests must leave it as it is, and so must the calls."""
    points = zef.sample_surface(5000)
    points.setflags(write=False)
    return points


@pytest.fixture(scope="session")
def large_cloud():
    """Enough points for a call to last well above a second."""
    return zef.sample_surface(400_000)


@pytest.fixture(scope="session")
def mesh(cloud):
    """Never changed in place: queries and calls that make a new mesh only."""
    return zef.finish(zef.reconstruct(cloud), cloud)


@pytest.fixture(scope="session")
def open_mesh(mesh):
    """The same without the triangles around three vertices: three holes."""
    vertices, triangles = mesh
    corners = [np.argmin(vertices @ direction) for direction in ([1, 0, 0], [0, 1, 0], [0, 0, 1])]
    return zef.Mesh((vertices, triangles[~np.isin(triangles, corners).any(axis=1)]))


@pytest.fixture(scope="session")
def cube():
    """The triangles of a cube of edge 2, (12, 3, 3)."""
    corners = np.array([[x, y, z] for x in (-1, 1) for y in (-1, 1) for z in (-1, 1)], float)
    faces = [(0, 1, 3, 2), (4, 6, 7, 5), (0, 4, 5, 1), (2, 3, 7, 6), (0, 2, 6, 4), (1, 5, 7, 3)]
    return np.array([corners[[a, b, c]] for f in faces for a, b, c in ((f[0], f[1], f[2]), (f[0], f[2], f[3]))])


@pytest.fixture(scope="session")
def run_tool():
    """Runs the command line tool of the same library, which ZEF_TOOL names."""
    tool = Path(os.environ["ZEF_TOOL"])

    def run(*arguments):
        subprocess.run([tool, *map(str, arguments), "-q"], check=True, stdin=subprocess.DEVNULL)

    return run


@pytest.fixture
def messages(caplog):
    """What the library says during the test: a list of (level, text)."""
    caplog.set_level(logging.INFO, "zef")
    return lambda: [(record.levelname, record.getMessage()) for record in caplog.records if record.name == "zef"]


def same_bits(first, second):
    """Whether two meshes have the same vertices and triangles, bit for bit and in the same order."""
    return all(a.dtype == b.dtype and a.tobytes() == b.tobytes() for a, b in zip(first, second))
