"""Memory: views outlive their mesh, snapshots stay, and nothing leaks."""
import gc
import subprocess
import sys

import numpy as np
import pytest

import zef


def test_views_live_on_without_the_mesh(cloud):
    mesh = zef.reconstruct(cloud)
    vertices, triangles = mesh
    expected = vertices.copy(), triangles.copy()
    part = vertices[::7, 1]
    del mesh, vertices
    gc.collect()
    for _ in range(5):  # would take the memory if it were free
        zef.reconstruct(cloud + 1.0)
    assert np.array_equal(part, expected[0][::7, 1]) and np.array_equal(triangles, expected[1])


def test_views_share_memory_and_cannot_be_written(mesh):
    for name, kind in (("vertices", np.float64), ("triangles", np.int32)):
        view = getattr(mesh, name)
        assert view.dtype == kind and view.shape[1] == 3 and view.flags.c_contiguous
        assert np.shares_memory(view, getattr(mesh, name))
        with pytest.raises(ValueError):
            view[0] = 0
        with pytest.raises(ValueError):
            view.setflags(write=True)


def test_a_view_shows_the_mesh_as_it_was(cloud):
    mesh = zef.reconstruct(cloud)
    before = mesh.vertices
    copy = before.copy()
    zef.smooth(mesh, 3)
    assert np.array_equal(before, copy)
    assert not np.array_equal(before, mesh.vertices)


def test_what_is_handed_out_once_can_be_written(cloud, cube, tmp_path):
    zef.write_points(tmp_path / "cloud.xyz", cloud)
    for array in (zef.read_points(tmp_path / "cloud.xyz").points, zef.to_cloud(cube, 0.5), zef.sample_surface(9)):
        array += 1.0


LEAK_PROGRAM = """
import gc, numpy as np, zef
points = zef.sample_surface(300)
def resident():
    gc.collect()
    return int(open("/proc/self/statm").read().split()[1]) * 4096
def turn(i):
    report = zef.Report()
    mesh = zef.finish(zef.reconstruct(points, report=report), points, progress=lambda name, part: None)
    vertices, triangles = mesh
    zef.check((vertices, triangles)); zef.border_loops(mesh); zef.flips(mesh)
    for wrong in (lambda: zef.reconstruct(points, spacingFactor=-1), lambda: zef.reconstruct(points, progress=[].pop)):
        try:
            wrong()
        except (zef.Error, TypeError):
            pass
for i in range(100):
    turn(i)
before = resident()
for i in range(1000):
    turn(i)
print(resident() - before)
"""


def test_a_thousand_calls_leak_nothing():
    grown = int(subprocess.run([sys.executable, "-c", LEAK_PROGRAM], check=True, capture_output=True).stdout)
    # A call that kept its points would take 7 MB, one that kept its mesh 50 MB.
    assert grown < 4_000_000
