"""What callers hand in, as the arrays that the library takes. Nothing of the caller's is ever changed."""
from __future__ import annotations

from typing import Any, Tuple

import numpy as np

from . import _zef
from ._errors import BadArgument

_INT32 = np.iinfo(np.int32)


def _as_numbers(value: Any, name: str) -> np.ndarray:
    if isinstance(value, np.ma.MaskedArray) and value.mask.any():
        raise BadArgument(f"{name} has masked entries; drop them, or fill them with NaN to have them left out")
    array = np.asarray(value)
    if array.dtype.kind not in "fiu":
        raise BadArgument(f"{name} must be numbers, not of type {array.dtype}")
    return array


def _as_floats(array: np.ndarray) -> np.ndarray:
    """float64 and float32 as they are, with any strides; all else becomes float64."""
    if array.dtype.isnative and array.dtype in (np.float64, np.float32):
        return array
    return array.astype(np.float64)


def _as_rows(value: Any, name: str) -> np.ndarray:
    array = _as_numbers(value, name)
    if array.shape == (0,):
        array = array.reshape(0, 3)
    if array.ndim != 2 or array.shape[1] != 3:
        raise BadArgument(f"{name} must have the shape (n, 3), not {array.shape}")
    return _as_floats(array)


def as_points(value: Any, name: str = "points") -> np.ndarray:
    """Coordinates (n, 3): of anything that numpy can see as such, or that has ``points`` or ``vertices``."""
    if not isinstance(value, np.ndarray) and not hasattr(value, "__array__"):
        for attribute in ("points", "vertices"):
            if hasattr(value, attribute):
                value = getattr(value, attribute)
                break
    return _as_rows(value, name)


def as_triangles(value: Any, name: str = "triangles") -> np.ndarray:
    """Indices (m, 3) as int32."""
    array = _as_numbers(value, name)
    if array.size == 0:
        return np.empty((0, 3), np.int32)
    if array.ndim != 2 or array.shape[1] != 3:
        raise BadArgument(f"{name} must have the shape (m, 3), not {array.shape}")
    if array.dtype.kind == "f":
        raise BadArgument(f"{name} must be whole numbers, not of type {array.dtype}")
    if array.min() < _INT32.min or array.max() > _INT32.max:
        raise BadArgument(f"{name} has an index that is none of a vertex")
    return array.astype(np.int32, copy=False)


def _of_cells(cells: Any) -> Any:
    """The triangles of a meshio mesh."""
    blocks = [block.data for block in cells if block.type == "triangle"]
    return np.concatenate(blocks) if blocks else np.empty((0, 3), np.int32)


def _of_padded_faces(faces: Any) -> Any:
    """The triangles of a pyvista mesh: one array of 3, a, b, c, 3, ..."""
    padded = np.asarray(faces)
    if padded.size % 4 != 0 or (padded[::4] != 3).any():
        raise BadArgument("the mesh has faces that are no triangles; cut them into triangles first")
    return padded.reshape(-1, 4)[:, 1:]


def get_vertices_and_triangles(mesh: Any) -> Tuple[Any, Any]:
    """Of a pair of both, or of a mesh of open3d, trimesh, pyvista or meshio, told apart by what they have."""
    if isinstance(mesh, (tuple, list)) and len(mesh) == 2:
        return mesh[0], mesh[1]
    if hasattr(mesh, "vertices") and hasattr(mesh, "triangles"):
        return mesh.vertices, mesh.triangles
    if hasattr(mesh, "vertices") and hasattr(mesh, "faces"):
        return mesh.vertices, mesh.faces
    if hasattr(mesh, "points") and hasattr(mesh, "cells") and hasattr(mesh, "cells_dict"):
        return mesh.points, _of_cells(mesh.cells)
    if hasattr(mesh, "points") and hasattr(mesh, "faces"):
        return mesh.points, _of_padded_faces(mesh.faces)
    raise TypeError(
        "a mesh is wanted: a zef.Mesh, a pair (vertices, triangles), or an object that has vertices and triangles, "
        f"vertices and faces, or points and faces or cells; not {type(mesh).__name__}"
    )


def as_surface(mesh: Any) -> _zef.Surface:
    """Vertices and triangles that the library can look at; without a copy of those of a zef.Mesh."""
    native = getattr(mesh, "_native", None)
    if isinstance(native, _zef.Mesh):
        return native.surface()
    if isinstance(native, _zef.Surface):
        return native
    vertices, triangles = get_vertices_and_triangles(mesh)
    return _zef.Surface(_as_rows(vertices, "vertices"), as_triangles(triangles))


def as_corners(soup: Any) -> np.ndarray:
    """Corners (3 m, 3) of a soup: of an array of that shape or of (m, 3, 3), or of anything that is a mesh."""
    is_array = isinstance(soup, np.ndarray) or hasattr(soup, "__array__")
    if not is_array and not isinstance(soup, list):
        surface = as_surface(soup)
        count = len(surface.vertices)
        triangles = surface.triangles
        if triangles.size and (triangles.min() < 0 or triangles.max() >= count):
            raise BadArgument("triangles has an index that is none of a vertex")
        return surface.vertices[triangles.reshape(-1)]
    array = _as_numbers(soup, "triangles")
    if array.ndim == 3 and array.shape[1:] == (3, 3):
        array = array.reshape(-1, 3)
    return _as_rows(array, "triangles")


def as_colors(value: Any, count: int) -> np.ndarray:
    array = _as_numbers(value, "colors")
    if array.shape != (count, 3):
        raise BadArgument(f"colors must have the shape ({count}, 3), not {array.shape}")
    if array.dtype.kind == "f" or (array.size and (array.min() < 0 or array.max() > 255)):
        raise BadArgument("colors must be whole numbers from 0 to 255")
    return array.astype(np.uint8, copy=False)


def as_column(value: Any, name: str, count: int) -> np.ndarray:
    array = _as_numbers(value, name)
    if array.shape != (count,):
        raise BadArgument(f"{name} must have the shape ({count},), not {array.shape}")
    return array.astype(np.float64)


def as_vectors(value: Any, name: str, count: int) -> np.ndarray:
    array = _as_rows(value, name)
    if len(array) != count:
        raise BadArgument(f"{name} must have the shape ({count}, 3), not {array.shape}")
    return array
