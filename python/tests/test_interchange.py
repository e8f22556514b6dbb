"""Meshes from and to other libraries, which need not be there: objects of the same form stand for them."""
import sys
import types

import numpy as np
import pytest
from conftest import same_bits

import zef


class Vector:
    """As the vectors of open3d: numpy sees it, and it can be made of an array."""

    def __init__(self, values):
        self.values = np.array(values)

    def __array__(self, dtype=None):
        return np.asarray(self.values, dtype)

    def __len__(self):
        return len(self.values)


class Open3dMesh:
    def __init__(self, vertices, triangles):
        self.vertices, self.triangles = vertices, triangles


class Trimesh:
    def __init__(self, vertices, faces, process):
        assert process is False, "it would merge and reorder"
        self.vertices, self.faces = vertices, faces


class PolyData:
    def __init__(self, points, faces):
        self.points, self.faces = np.asarray(points), np.asarray(faces)


class MeshioMesh:
    def __init__(self, points, cells):
        self.points = points
        self.cells = [types.SimpleNamespace(type=kind, data=data) for kind, data in cells]
        self.cells_dict = dict(cells)


MODULES = {
    "open3d": types.SimpleNamespace(
        geometry=types.SimpleNamespace(TriangleMesh=Open3dMesh),
        utility=types.SimpleNamespace(Vector3dVector=Vector, Vector3iVector=Vector),
    ),
    "trimesh": types.SimpleNamespace(Trimesh=Trimesh),
    "pyvista": types.SimpleNamespace(PolyData=PolyData),
    "meshio": types.SimpleNamespace(Mesh=MeshioMesh),
}


@pytest.mark.parametrize("library", MODULES)
def test_there_and_back(library, mesh, monkeypatch):
    monkeypatch.setitem(sys.modules, library, MODULES[library])
    theirs = getattr(mesh, f"to_{library}")()
    assert zef.check(theirs).isSound
    assert not zef.compare(theirs, mesh, numSamples=1000).toFirst.atPoints.any()
    assert same_bits(zef.finish(theirs, bEvenTriangles=False), zef.finish(zef.Mesh(mesh), bEvenTriangles=False))


@pytest.mark.parametrize("library", MODULES)
def test_a_library_that_is_not_there_is_named(library, mesh, monkeypatch):
    monkeypatch.setitem(sys.modules, library, None)
    with pytest.raises(ImportError, match=library):
        getattr(mesh, f"to_{library}")()


def test_clouds_of_others_are_points(cloud):
    expected = zef.reconstruct(cloud)
    assert same_bits(zef.reconstruct(types.SimpleNamespace(points=Vector(cloud))), expected)
    assert same_bits(zef.reconstruct(types.SimpleNamespace(vertices=cloud)), expected)


def test_faces_that_are_no_triangles_are_refused():
    with pytest.raises(zef.BadArgument, match="no triangles"):
        zef.check(PolyData(np.eye(4, 3), [4, 0, 1, 2, 3]))
    with pytest.raises(zef.BadArgument, match="shape"):
        zef.check((np.eye(4, 3), [[0, 1, 2, 3]]))
    square = MeshioMesh(np.eye(4, 3), [("quad", np.array([[0, 1, 2, 3]])), ("triangle", np.array([[0, 1, 2]]))])
    assert zef.check(square).numTriangles == 1
