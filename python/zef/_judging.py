"""What can be asked of a mesh."""
from __future__ import annotations

from typing import Any, List

import numpy as np

from . import _zef
from ._arrays import as_points, as_surface
from ._call import Progress, running, with_options
from ._figures import Figures, as_figures


@with_options("CheckOptions")
def check(mesh: Any, *, progress: Progress = None, **options: Any) -> Figures:
    """Judges a mesh exactly: no tolerance, no rounding.

    Args:
        mesh: a Mesh, or anything that is one; it is judged as it is.
        progress: as for reconstruct().

    Returns:
        ``isSound``, ``isClosed``, ``isManifold``, ``isOriented``, ``isFreeOfIntersections``; counts of all kinds of
        faults, as ``numIntersections``; ``numPieces``, ``eulerNumber``, ``numBorderLoops`` and more; and ``faults``,
        a list of places with ``kind``, ``triangle``, ``otherTriangle`` and ``place``.

    Raises:
        BadArgument: a triangle names a vertex that is not there.
    """
    surface = as_surface(mesh)
    with running(progress) as call:
        return as_figures(_zef.check(surface, options, call))


def border_loops(mesh: Any, *, progress: Progress = None) -> List[Figures]:
    """The borders of a mesh in order: rims of open sheets, and holes.

    Returns:
        Of each border: ``vertices`` (indices, int32), ``length`` and ``area`` in units of the points, ``bRim``,
        ``bClosed``, ``piece``, and the ``reason`` why it counts as a rim or a hole.

    Raises:
        BadArgument: a triangle names a vertex that is not there.
    """
    surface = as_surface(mesh)
    with running(progress) as call:
        return as_figures(_zef.border_loops(surface, call))


@with_options("CompareOptions")
def compare(first: Any, second: Any, *, progress: Progress = None, **options: Any) -> Figures:
    """How far two surfaces are apart, both ways: a part that only one of them has shows in one direction alone.

    Args:
        first, second: a Mesh each, or anything that is one.
        progress: as for reconstruct().

    Returns:
        ``toSecond`` (measured on the first, to the second) and ``toFirst``, each with ``mean``, ``rms``,
        ``percentile99``, ``largest`` and the two places of that, ``largestPlace`` and ``nearestToThere``; and
        ``atPoints``, the distance of each vertex, (n,) float64. All in units of the points.

    Raises:
        BadArgument: a surface has no triangle, or a triangle names a vertex that is not there.
    """
    surfaces = as_surface(first), as_surface(second)
    with running(progress) as call:
        return as_figures(_zef.compare(*surfaces, options, call))


def source_indices(mesh: Any, points: Any, *, progress: Progress = None) -> np.ndarray:
    """Which point of its cloud each vertex stands for: ``colors[source_indices(mesh, points)]`` are those of vertices.

    Args:
        mesh: a Mesh, or anything that is one.
        points: the cloud, (n, 3).
        progress: as for reconstruct().

    Returns:
        (number of vertices,) int64: the index of the nearest point, of several the first; -1 if there is none.

    Raises:
        BadArgument: mesh and points together have an extent outside 1e-100 to 1e100.
    """
    surface, cloud = as_surface(mesh), as_points(points)
    with running(progress) as call:
        return _zef.source_indices(surface, cloud, call)
