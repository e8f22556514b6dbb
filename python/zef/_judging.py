"""What can be asked of a mesh."""
from __future__ import annotations

from typing import Any, List

from . import _zef
from ._arrays import as_surface
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
