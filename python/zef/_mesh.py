"""The mesh that the calls hand out and take."""
from __future__ import annotations

import importlib
from collections.abc import Iterator
from typing import Any

import numpy as np

from . import _zef
from ._arrays import as_surface


class Mesh:
    """A finished triangle mesh.

    Mesh(mesh) takes anything that is a mesh: a pair (vertices, triangles), or an object of open3d, trimesh, pyvista or
    meshio. Corners at one place become one vertex; triangles with a corner that is not finite, or with two corners at
    one place, are left out. Nothing is repaired: finish() does that.

    ``vertices, triangles = mesh`` unpacks it.

    Calls on one mesh from several threads wait for each other.
    """

    def __init__(self, mesh: Any) -> None:
        self._native = mesh if isinstance(mesh, _zef.Mesh) else _zef.Mesh(as_surface(mesh))

    @property
    def vertices(self) -> np.ndarray:
        """Coordinates (n, 3) float64, in units of the points; those that triangles use.

        A view on memory of the mesh that cannot be written to, and lives as long as the view does. After flips(),
        anneal(), reduce() and smooth() a view that was taken before shows the mesh as it was.
        """
        return self._native.surface().vertices

    @property
    def triangles(self) -> np.ndarray:
        """Indices (m, 3) int32 into vertices, counter-clockwise seen from outside; a view as vertices is."""
        return self._native.surface().triangles

    @property
    def averageEdgeLength(self) -> float:
        """Mean length of the edges, in units of the points; -1.0 without any."""
        return self._native.averageEdgeLength()

    def __iter__(self) -> Iterator[np.ndarray]:
        surface = self._native.surface()
        return iter((surface.vertices, surface.triangles))

    def __bool__(self) -> bool:
        """Whether there are triangles."""
        return len(self.triangles) > 0

    def __repr__(self) -> str:
        vertices, triangles = self
        return f"<zef.Mesh: {len(vertices)} vertices, {len(triangles)} triangles>"

    def to_trimesh(self) -> Any:
        """A trimesh.Trimesh with the same vertices and triangles in the same order. Needs trimesh."""
        vertices, triangles = self
        return importlib.import_module("trimesh").Trimesh(vertices=vertices, faces=triangles, process=False)

    def to_open3d(self) -> Any:
        """An open3d.geometry.TriangleMesh. Needs open3d."""
        open3d = importlib.import_module("open3d")
        vertices, triangles = self
        return open3d.geometry.TriangleMesh(
            open3d.utility.Vector3dVector(vertices), open3d.utility.Vector3iVector(triangles)
        )

    def to_pyvista(self) -> Any:
        """A pyvista.PolyData. Needs pyvista."""
        vertices, triangles = self
        padded = np.insert(triangles, 0, 3, axis=1)
        return importlib.import_module("pyvista").PolyData(vertices, padded.reshape(-1))

    def to_meshio(self) -> Any:
        """A meshio.Mesh. Needs meshio."""
        vertices, triangles = self
        return importlib.import_module("meshio").Mesh(vertices, [("triangle", triangles)])


def as_mesh(mesh: Any) -> Mesh:
    """The mesh itself, or one made of something that is a mesh."""
    return mesh if isinstance(mesh, Mesh) else Mesh(mesh)


def get_own(mesh: Any, call: str) -> Any:
    """The library's mesh of a zef.Mesh that is to be changed in place."""
    if not isinstance(mesh, Mesh):
        raise TypeError(f"{call}() changes a mesh in place: make a zef.Mesh of the {type(mesh).__name__} first")
    return mesh._native


