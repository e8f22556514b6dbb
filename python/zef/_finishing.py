"""Meshes to better meshes."""
from __future__ import annotations

from typing import Any, Optional

import numpy as np

from . import _zef
from ._arrays import as_points
from ._call import Progress, add_to, as_number, as_whole_number, running, with_options
from ._figures import Report
from ._judging import border_loops
from ._mesh import Mesh, as_mesh, get_own


@with_options("FinishOptions")
def finish(
    mesh: Any, points: Any = None, *, progress: Progress = None, report: Optional[Report] = None, **options: Any
) -> Mesh:
    """Turns any mesh into a sound one: manifold, consistently oriented, without flat, doubled or intersecting
    triangles. With the points it was made from, its vertices move onto a fit of them, and creases become edges.

    Args:
        mesh: a Mesh, or anything that is one. It is never changed.
        points: (n, 3); None: the surface stays where it is.
        progress: as for reconstruct().
        report: its ``finish`` tells what had to be done.

    Returns:
        A new mesh; check() proves it sound. It can be without triangles.

    Raises:
        BadArgument: an option out of its range.
    """
    cloud = np.empty((0, 3)) if points is None else as_points(points)
    native = as_mesh(mesh)._native
    with running(progress, report) as call:
        finished, done = _zef.finish(native, cloud, options, call)
    add_to(report, "finish", done)
    return Mesh(finished)


def flips(mesh: Mesh, *, progress: Progress = None, report: Optional[Report] = None) -> None:
    """Turns edges where that makes the surface smoother; one pass, in place."""
    native = get_own(mesh, "flips")
    with running(progress, report) as call:
        _zef.flips(native, call)


def anneal(mesh: Mesh, *, progress: Progress = None, report: Optional[Report] = None) -> None:
    """The same as flips() by simulated annealing, in place: some 50 times its time, a little better."""
    native = get_own(mesh, "anneal")
    with running(progress, report) as call:
        _zef.anneal(native, call)


def reduce(
    mesh: Mesh,
    maxEdgeLength: float,
    maxDevAngle: float = 25.0,
    bKeepTopology: bool = True,
    *,
    progress: Progress = None,
    report: Optional[Report] = None,
) -> int:
    """Thins a mesh in place: collapses edges in flat regions, the cheapest first. Run flips() afterwards.

    Args:
        maxEdgeLength: the longest edge that may be collapsed, in units of the points.
        maxDevAngle: degrees by which a triangle may turn in one collapse, about 10 to 30.
        bKeepTopology: whether tunnels stay open; recommended.
        progress, report: as for reconstruct().

    Returns:
        The number of triangles that died with their edges.

    Raises:
        BadArgument: a length or angle that is not a number.
    """
    native = get_own(mesh, "reduce")
    limits = as_number(maxEdgeLength, "maxEdgeLength"), as_number(maxDevAngle, "maxDevAngle"), bool(bKeepTopology)
    with running(progress, report) as call:
        return _zef.reduce(native, *limits, call)


def smooth(mesh: Mesh, numIterations: int = 1, *, progress: Progress = None, report: Optional[Report] = None) -> None:
    """Moves each vertex off the border to the mean of its neighbours, so many times, in place. Closed shapes shrink:
    1 to 3 are usual, more than 10000 a BadArgument."""
    native = get_own(mesh, "smooth")
    number = as_whole_number(numIterations, "numIterations")
    with running(progress, report) as call:
        _zef.smooth(native, number, call)


@with_options("FillOptions")
def fill(
    mesh: Any,
    loops: Any = None,
    *,
    progress: Progress = None,
    report: Optional[Report] = None,
    **options: Any,
) -> Mesh:
    """Closes holes by triangles that bend as little as they can and never cut others.

    Args:
        mesh: a Mesh, or anything that is one. It is never changed.
        loops: those of border_loops(mesh) that are to be closed; None: all that are no rim of an open sheet.
        progress: as for reconstruct().
        report: its ``fills`` tells of each loop what became of it, and why it was left open.

    Returns:
        A new mesh: the vertices keep their numbers, the triangles come first.

    Raises:
        BadArgument: a loop that is none of this mesh.
    """
    whole = as_mesh(mesh)
    chosen = [loop for loop in border_loops(whole) if not loop.bRim] if loops is None else loops
    with running(progress, report) as call:
        filled, fills = _zef.fill(whole._native, [loop["vertices"] for loop in chosen], options, call)
    add_to(report, "fills", fills)
    return Mesh(filled)


