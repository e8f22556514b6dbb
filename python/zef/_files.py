"""Files of points and of triangles, told apart by what they hold."""
from __future__ import annotations

import os
from typing import Any, List, Optional, Tuple, Union

import numpy as np

from . import _zef
from ._arrays import as_colors, as_column, as_points, as_surface, as_vectors
from ._call import Progress, running, with_options
from ._figures import Figures
from ._mesh import Mesh

Path = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]


class PointData:
    """Points of a file, and what it tells about each of them. Goes wherever points are wanted.

    Attributes:
        points: (n, 3) float64.
        normals: (n, 3) float64 as the file has them, or None.
        colors: (n, 3) uint8, red, green, blue, or None.
        intensities: (n,) float64, or None.
        format: name of the format of the file.
        numSkipped: rows or records that were left out.
        notes: texts for the user: what was left out, or taken for what.
    """

    points: np.ndarray
    normals: Optional[np.ndarray]
    colors: Optional[np.ndarray]
    intensities: Optional[np.ndarray]
    format: str
    numSkipped: int
    notes: List[str]

    def __init__(self, **members: Any) -> None:
        self.__dict__.update(members)

    def __array__(self, dtype: Any = None) -> np.ndarray:
        return np.asarray(self.points, dtype)

    def __len__(self) -> int:
        return len(self.points)

    def __repr__(self) -> str:
        return f"<zef.PointData: {len(self.points)} points of a {self.format} file>"


class TriangleData:
    """Triangles of a file, as they are there. Goes wherever a mesh or a soup is wanted.

    Attributes:
        vertices: (n, 3) float64, a view that cannot be written to.
        triangles: (m, 3) int32, likewise; faces of more than three corners are cut into triangles.
        colors: (n, 3) uint8, or None.
        format, numSkipped, notes: as of PointData.
    """

    vertices: np.ndarray
    triangles: np.ndarray
    colors: Optional[np.ndarray]
    format: str
    numSkipped: int
    notes: List[str]

    def __init__(self, surface: Any, **members: Any) -> None:
        self._native = surface
        self.vertices = surface.vertices
        self.triangles = surface.triangles
        self.__dict__.update(members)

    def unpack(self) -> Tuple[np.ndarray, np.ndarray]:
        """vertices and triangles"""
        return self.vertices, self.triangles

    def __repr__(self) -> str:
        return f"<zef.TriangleData: {len(self.triangles)} triangles of a {self.format} file>"


@with_options("ReadOptions")
def read_points(path: Path, *, progress: Progress = None, **options: Any) -> PointData:
    """Reads points of PLY, OBJ, OFF, PCD, LAS, BIN, and text in columns (XYZ, ASC, CSV, TXT, PTS, PTX).

    Args:
        path: name of the file, of any kind that open() takes.
        progress: as for reconstruct().

    Raises:
        BadFile: the file cannot be read; the text tells file, line or byte, and the reason.
    """
    name = os.fsencode(path)
    with running(progress) as call:
        return PointData(**_zef.read_points(name, options, call))


def read_triangles(path: Path, *, progress: Progress = None) -> TriangleData:
    """Reads PLY, STL, OBJ, OFF and GLB as they are: Mesh() makes a mesh of the result, remesh() another one.

    Arguments and errors are those of read_points().
    """
    name = os.fsencode(path)
    with running(progress) as call:
        return TriangleData(**_zef.read_triangles(name, call))


def read_mesh(path: Path, *, progress: Progress = None) -> Mesh:
    """Reads triangles as read_triangles() does, and makes a mesh of them as Mesh() does."""
    return Mesh(read_triangles(path, progress=progress))


@with_options("WriteOptions")
def write_points(
    path: Path,
    points: Any,
    *,
    normals: Any = None,
    colors: Any = None,
    intensities: Any = None,
    progress: Progress = None,
    **options: Any,
) -> None:
    """Writes points by extension: PLY, OBJ, OFF, PCD, LAS, BIN, XYZ, ASC, TXT, CSV, PTS, PTX.

    Args:
        path: as for read_points().
        points: (n, 3).
        normals: (n, 3); colors: (n, 3) from 0 to 255; intensities: (n,). They go along where the format has a place
            for them; without, those of a PointData do.

    Raises:
        BadFile: the file cannot be written; then no half of it stays.
    """
    name = os.fsencode(path)
    array = as_points(points)
    if isinstance(points, PointData):
        normals = points.normals if normals is None else normals
        colors = points.colors if colors is None else colors
        intensities = points.intensities if intensities is None else intensities
    attributes = (
        None if normals is None else as_vectors(normals, "normals", len(array)),
        None if colors is None else as_colors(colors, len(array)),
        None if intensities is None else as_column(intensities, "intensities", len(array)),
    )
    with running(progress) as call:
        _zef.write_points(name, array, *attributes, options, call)


@with_options("WriteOptions")
def write_mesh(path: Path, mesh: Any, *, colors: Any = None, progress: Progress = None, **options: Any) -> None:
    """Writes a mesh by extension: PLY, STL, OBJ, OFF, GLB.

    Args:
        path: as for read_points().
        mesh: a Mesh, or anything that is one.
        colors: (n, 3) from 0 to 255, one for each vertex.

    Raises:
        BadFile: as write_points(). BadArgument: a triangle names a vertex that is not there.
    """
    name = os.fsencode(path)
    surface = as_surface(mesh)
    rows = None if colors is None else as_colors(colors, len(surface.vertices))
    with running(progress) as call:
        _zef.write_triangles(name, surface, rows, options, call)


def holds_triangles(path: Path) -> bool:
    """Whether a file holds triangles, as far as its format and head tell."""
    return _zef.holds_triangles(os.fsencode(path))


def format_use(path: Path) -> Figures:
    """What an extension stands for: ``bReadsPoints``, ``bReadsTriangles``, ``bWritesPoints``, ``bWritesTriangles``."""
    return Figures(_zef.format_use(os.fsencode(path)))
