"""Points or triangles to meshes."""
from __future__ import annotations

import operator
from typing import Any, Optional

import numpy as np

from . import _zef
from ._arrays import as_corners, as_points
from ._call import Progress, add_to, as_number, running, with_options
from ._errors import BadArgument
from ._figures import Report
from ._mesh import Mesh


def reconstruct(
    points: Any,
    *,
    bSmooth: bool = False,
    spacingFactor: float = 1.0,
    spacingAbs: Optional[float] = None,
    memoryLimit: Optional[int] = None,
    progress: Progress = None,
    report: Optional[Report] = None,
) -> Mesh:
    """Turns a point cloud into a mesh. finish() then makes it sound, even, and true to the points.

    Args:
        points: (n, 3) float64 or float32 of any strides, or whatever numpy sees as numbers; or an object that has
            ``points``. Points with a NaN or infinite coordinate are left out, with a warning.
        bSmooth: whether the points are smoothed first, for noisy scans.
        spacingFactor: factor on the detected mean spacing: 1.0 for even clouds, 1.25 to 1.5 for random ones.
        spacingAbs: the spacing itself, in units of the points; spacingFactor does not count then. Detail below it
            vanishes, gaps above it stay open.
        memoryLimit: in bytes; a call that by forecast would take more raises OverMemoryLimit beforehand.
        progress: True shows it on the error stream; a callable gets a name and a fraction from 0 to 1.
        report: a Report to be filled in.

    Returns:
        The mesh. It has no triangles if nothing could be built: a warning tells why.

    Raises:
        BadArgument: a spacing or factor that is not above 0, or an array of another shape.
        UnusablePoints: the points have no spacing, or lie too far apart for a double.
        TooManyPoints, OverMemoryLimit, OutOfMemory.
        KeyboardInterrupt: within a quarter of a second after Ctrl-C; so with all calls.
    """
    array = as_points(points)
    with running(progress, report, memoryLimit) as call:
        if spacingAbs is not None:
            return Mesh(_zef.reconstruct_abs(array, bool(bSmooth), as_number(spacingAbs, "spacingAbs"), call))
        return Mesh(_zef.reconstruct_auto(array, bool(bSmooth), as_number(spacingFactor, "spacingFactor"), call))


@with_options("AutoOptions")
def auto_reconstruct(
    points: Any,
    *,
    memoryLimit: Optional[int] = None,
    progress: Progress = None,
    report: Optional[Report] = None,
    **options: Any,
) -> Mesh:
    """Turns a cloud of which nothing is known into a mesh: factor and smoothing are chosen from the cloud itself.

    Args:
        points, memoryLimit, progress: as for reconstruct(). Progress goes from 0 to 1 once for each mesh on the way.
        report: its ``choice`` tells what was measured, tried and chosen, and why.

    Returns:
        The mesh that reconstruct() gives for the chosen factor and smoothing; two to four times its time.

    Raises:
        As reconstruct(), and BadArgument for an option out of its range.
    """
    array = as_points(points)
    choice = None
    with running(progress, report, memoryLimit) as call:
        native, choice = _zef.auto_reconstruct(array, options, call)
    add_to(report, "choice", choice)
    return Mesh(native)


def melt(
    soup: Any,
    spacingAbs: float,
    featureAngle: float = 361.0,
    *,
    memoryLimit: Optional[int] = None,
    progress: Progress = None,
    report: Optional[Report] = None,
) -> Mesh:
    """Makes an even mesh of a triangle soup, from cells of that spacing; remesh() keeps to the soup's own surface.

    Args:
        soup: corners (3 m, 3) or (m, 3, 3), three in a row are one triangle; or anything that is a mesh.
        spacingAbs: wanted edge length, in units of the corners.
        featureAngle: degrees between two triangles above which their edge is kept sharp; 361 keeps borders only.
        memoryLimit, progress, report: as for reconstruct().

    Returns:
        The mesh; without triangles if nothing could be built.

    Raises:
        As reconstruct(), and BadArgument for a number of corners that 3 does not divide.
    """
    arguments = as_corners(soup), as_number(spacingAbs, "spacingAbs"), as_number(featureAngle, "featureAngle")
    with running(progress, report, memoryLimit) as call:
        return Mesh(_zef.melt(*arguments, call))


def to_cloud(
    soup: Any,
    spacingAbs: float,
    featureAngle: float = 361.0,
    *,
    memoryLimit: Optional[int] = None,
    progress: Progress = None,
    report: Optional[Report] = None,
) -> np.ndarray:
    """Samples a triangle soup: one point for each cell of that spacing that it crosses.

    Arguments and errors are those of melt().

    Returns:
        The points, (n, 3) float64.
    """
    arguments = as_corners(soup), as_number(spacingAbs, "spacingAbs"), as_number(featureAngle, "featureAngle")
    with running(progress, report, memoryLimit) as call:
        return _zef.to_cloud(*arguments, call)


def _remesh(soup: Any, options: Any, progress: Progress, report: Optional[Report]) -> Mesh:
    corners = as_corners(soup)
    with running(progress, report) as call:
        native, found = _zef.remesh(corners, options, call)
    add_to(report, "remesh", found)
    return Mesh(native)


@with_options("RemeshOptions")
def remesh(soup: Any, *, progress: Progress = None, report: Optional[Report] = None, **options: Any) -> Mesh:
    """Remeshes a triangle soup on its own surface: sharp edges, corners and borders stay where they are, and each part
    becomes one manifold that faces outward.

    Args:
        soup: as for melt(); triangles in any order and turned in any way.
        progress: as for reconstruct().
        report: its ``remesh`` tells length, feature angle and tolerance in use, and what was found.

    Returns:
        The mesh; without triangles if no triangle of the soup has a height.

    Raises:
        BadArgument: an option out of its range, or a length that would make more than maxTriangles.
    """
    return _remesh(soup, options, progress, report)


@with_options("RemeshOptions", without=("bOuter",))
def outer_hull(soup: Any, *, progress: Progress = None, report: Optional[Report] = None, **options: Any) -> Mesh:
    """Makes one closed surface around all that a soup holds: holes are closed, crossing and touching parts become one,
    what lies within goes.

    Arguments, result and errors are those of remesh().
    """
    return _remesh(soup, {**options, "bOuter": True}, progress, report)


def spacing(points: Any, *, progress: Progress = None) -> float:
    """The mean spacing that reconstruct() would detect, in units of the points; -1.0, with a warning, without points.

    Raises:
        UnusablePoints: as reconstruct().
    """
    array = as_points(points)
    with running(progress) as call:
        return _zef.spacing(array, call)


def forecast(
    points: Any,
    *,
    bSmooth: bool = False,
    spacingFactor: float = 1.0,
    spacingAbs: Optional[float] = None,
    progress: Progress = None,
) -> int:
    """The most bytes that reconstruct() will hold at a time, beside the points; its result counts.

    Arguments are those of reconstruct(). The true peak lies within about a quarter of it. It takes a tenth of the call.

    Raises:
        What reconstruct() would.
    """
    array = as_points(points)
    kind = "RECONSTRUCT_AUTO" if spacingAbs is None else "RECONSTRUCT_ABS"
    what = kind + ("_SMOOTHED" if bSmooth else "")
    length = as_number(spacingFactor, "spacingFactor") if spacingAbs is None else as_number(spacingAbs, "spacingAbs")
    with running(progress) as call:
        return _zef.forecast(array, length, what, call)


def forecast_soup(soup: Any, spacingAbs: float, *, call: str = "melt", progress: Progress = None) -> int:
    """The same for melt() or to_cloud(), as ``call`` tells."""
    if call not in ("melt", "to_cloud"):
        raise ValueError(f"call must be 'melt' or 'to_cloud', not {call!r}")
    corners = as_corners(soup)
    with running(progress) as running_call:
        return _zef.forecast(corners, as_number(spacingAbs, "spacingAbs"), call.upper(), running_call)


def sample_surface(num: int = 100_000, seed: int = 123) -> np.ndarray:
    """Points (num, 3) of a closed sample surface, evenly spread with some jitter; the same on every system."""
    if num < 0 or not 0 <= seed < 2**32:
        raise BadArgument("the number of points must be at least 0, the seed from 0 to 2^32 - 1")
    return _zef.sample_surface(operator.index(num), operator.index(seed))
