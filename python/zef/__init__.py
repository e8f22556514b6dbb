"""ZEF turns scanned point clouds into clean triangle meshes.

    import zef

    cloud = zef.read_points("scan.las")
    mesh = zef.finish(zef.reconstruct(cloud), cloud)
    zef.write_mesh("mesh.ply", mesh)

Points to a mesh        reconstruct, auto_reconstruct; spacing and forecast tell beforehand
Triangles to a mesh     remesh, outer_hull, melt; to_cloud samples them
A mesh to a better one  finish, fill; in place: flips, anneal, reduce, smooth
Questions               check, border_loops, compare, source_indices
Files                   read_points, read_triangles, read_mesh, write_points, write_mesh

Points are arrays (n, 3); wherever a mesh is wanted, a pair (vertices, triangles) or an object of open3d, trimesh,
pyvista or meshio will do. Options have the names of the library's C++ headers. Lengths are in the units of the points,
angles in degrees. The same input gives the same mesh, bit for bit.

All calls let other threads of Python run, stop on Ctrl-C, and take ``progress=``: True, or a callable. Errors derive
from zef.Error and tell what to do. What else the library has to say goes to ``logging.getLogger("zef")``.
"""
from ._errors import (
    BadArgument,
    BadFile,
    Bug,
    Error,
    OutOfMemory,
    OverMemoryLimit,
    Refused,
    TooManyPoints,
    UnusablePoints,
)
from ._figures import Figures, Report
from ._files import (
    PointData,
    TriangleData,
    format_use,
    holds_triangles,
    read_mesh,
    read_points,
    read_triangles,
    write_mesh,
    write_points,
)
from ._finishing import anneal, fill, finish, flips, reduce, smooth
from ._judging import border_loops, check, compare, source_indices
from ._mesh import Mesh
from ._reconstruction import (
    auto_reconstruct,
    forecast,
    forecast_soup,
    melt,
    outer_hull,
    reconstruct,
    remesh,
    sample_surface,
    spacing,
    to_cloud,
)
from ._zef import version as __version__

__all__ = [
    "BadArgument",
    "BadFile",
    "Bug",
    "Error",
    "Figures",
    "Mesh",
    "OutOfMemory",
    "OverMemoryLimit",
    "PointData",
    "Refused",
    "Report",
    "TooManyPoints",
    "TriangleData",
    "UnusablePoints",
    "__version__",
    "anneal",
    "auto_reconstruct",
    "border_loops",
    "check",
    "compare",
    "fill",
    "finish",
    "flips",
    "forecast",
    "forecast_soup",
    "format_use",
    "holds_triangles",
    "melt",
    "outer_hull",
    "read_mesh",
    "read_points",
    "read_triangles",
    "reconstruct",
    "reduce",
    "remesh",
    "sample_surface",
    "smooth",
    "source_indices",
    "spacing",
    "to_cloud",
    "write_mesh",
    "write_points",
]

for _name in __all__:
    if hasattr(globals()[_name], "__module__"):
        globals()[_name].__module__ = __name__  # help() and tracebacks speak of zef.reconstruct
del _name
