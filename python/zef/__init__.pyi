# The public interface with its types; what things mean is told where they are made. Defaults that are left open here
# are the library's, shown by help().
import os
from typing import Any, Callable, Dict, Iterable, Iterator, List, Optional, Tuple, Union

import numpy as np

__version__: str

_Points = Any  # (n, 3) numbers, or an object that has points
_MeshLike = Any  # a Mesh, (vertices, triangles), or a mesh of another library
_Soup = Any  # (3 m, 3) or (m, 3, 3) numbers, or _MeshLike
_Progress = Union[Callable[[str, float], object], bool, None]
_Path = Union[str, bytes, os.PathLike[str], os.PathLike[bytes]]

class Error(Exception): ...
class BadArgument(Error, ValueError): ...
class UnusablePoints(Error, ValueError): ...
class TooManyPoints(Error, ValueError): ...
class BadFile(Error, ValueError): ...
class Refused(Error, RuntimeError): ...
class Bug(Error, RuntimeError): ...
class OutOfMemory(Error, MemoryError): ...

class OverMemoryLimit(Error, MemoryError):
    forecast: int
    fittingSpacing: float
    def __init__(self, text: str, forecast: int = ..., fittingSpacing: float = ...) -> None: ...

class Figures(Dict[str, Any]):
    def __getattr__(self, name: str) -> Any: ...
    def __dir__(self) -> List[str]: ...

class Report(Figures): ...

class Mesh:
    def __init__(self, mesh: _MeshLike) -> None: ...
    @property
    def vertices(self) -> np.ndarray: ...
    @property
    def triangles(self) -> np.ndarray: ...
    @property
    def averageEdgeLength(self) -> float: ...
    def __iter__(self) -> Iterator[np.ndarray]: ...
    def __bool__(self) -> bool: ...
    def to_trimesh(self) -> Any: ...
    def to_open3d(self) -> Any: ...
    def to_pyvista(self) -> Any: ...
    def to_meshio(self) -> Any: ...

class PointData:
    points: np.ndarray
    normals: Optional[np.ndarray]
    colors: Optional[np.ndarray]
    intensities: Optional[np.ndarray]
    format: str
    numSkipped: int
    notes: List[str]
    def __init__(self, **members: Any) -> None: ...
    def __array__(self, dtype: Any = ...) -> np.ndarray: ...
    def __len__(self) -> int: ...

class TriangleData:
    vertices: np.ndarray
    triangles: np.ndarray
    colors: Optional[np.ndarray]
    format: str
    numSkipped: int
    notes: List[str]
    def __init__(self, surface: Any, **members: Any) -> None: ...
    def unpack(self) -> Tuple[np.ndarray, np.ndarray]: ...

def reconstruct(
    points: _Points,
    *,
    bSmooth: bool = ...,
    spacingFactor: float = ...,
    spacingAbs: Optional[float] = ...,
    memoryLimit: Optional[int] = ...,
    progress: _Progress = ...,
    report: Optional[Report] = ...,
) -> Mesh: ...
def auto_reconstruct(
    points: _Points,
    *,
    largestFactor: float = ...,
    largestFactorOfOpen: float = ...,
    bMaySmooth: bool = ...,
    leastNoiseToSmooth: float = ...,
    mostEdgesOfHole: int = ...,
    mostFaultsLeft: float = ...,
    bTellSheetsApart: bool = ...,
    memoryLimit: Optional[int] = ...,
    progress: _Progress = ...,
    report: Optional[Report] = ...,
) -> Mesh: ...
def melt(
    soup: _Soup,
    spacingAbs: float,
    featureAngle: float = ...,
    *,
    memoryLimit: Optional[int] = ...,
    progress: _Progress = ...,
    report: Optional[Report] = ...,
) -> Mesh: ...
def to_cloud(
    soup: _Soup,
    spacingAbs: float,
    featureAngle: float = ...,
    *,
    memoryLimit: Optional[int] = ...,
    progress: _Progress = ...,
    report: Optional[Report] = ...,
) -> np.ndarray: ...
def remesh(
    soup: _Soup,
    *,
    length: float = ...,
    lengthFactor: float = ...,
    maxTriangles: int = ...,
    featureAngle: float = ...,
    tolerance: float = ...,
    weldTolerance: float = ...,
    bCoarse: bool = ...,
    bOuter: bool = ...,
    numBridgedCells: int = ...,
    progress: _Progress = ...,
    report: Optional[Report] = ...,
) -> Mesh: ...
def outer_hull(
    soup: _Soup,
    *,
    length: float = ...,
    lengthFactor: float = ...,
    maxTriangles: int = ...,
    featureAngle: float = ...,
    tolerance: float = ...,
    weldTolerance: float = ...,
    bCoarse: bool = ...,
    numBridgedCells: int = ...,
    progress: _Progress = ...,
    report: Optional[Report] = ...,
) -> Mesh: ...
def spacing(points: _Points, *, progress: _Progress = ...) -> float: ...
def forecast(
    points: _Points,
    *,
    bSmooth: bool = ...,
    spacingFactor: float = ...,
    spacingAbs: Optional[float] = ...,
    progress: _Progress = ...,
) -> int: ...
def forecast_soup(soup: _Soup, spacingAbs: float, *, call: str = ..., progress: _Progress = ...) -> int: ...
def sample_surface(num: int = ..., seed: int = ...) -> np.ndarray: ...
def finish(
    mesh: _MeshLike,
    points: Optional[_Points] = ...,
    *,
    bEvenTriangles: bool = ...,
    bFitToPoints: bool = ...,
    bKeepCreases: bool = ...,
    maxMove: float = ...,
    longestHole: int = ...,
    cellSize: float = ...,
    bRoundToFloat: bool = ...,
    progress: _Progress = ...,
    report: Optional[Report] = ...,
) -> Mesh: ...
def flips(mesh: Mesh, *, progress: _Progress = ..., report: Optional[Report] = ...) -> None: ...
def anneal(mesh: Mesh, *, progress: _Progress = ..., report: Optional[Report] = ...) -> None: ...
def reduce(
    mesh: Mesh,
    maxEdgeLength: float,
    maxDevAngle: float = ...,
    bKeepTopology: bool = ...,
    *,
    progress: _Progress = ...,
    report: Optional[Report] = ...,
) -> int: ...
def smooth(
    mesh: Mesh, numIterations: int = ..., *, progress: _Progress = ..., report: Optional[Report] = ...
) -> None: ...
def fill(
    mesh: _MeshLike,
    loops: Optional[Iterable[Any]] = ...,
    *,
    bRefine: bool = ...,
    bFair: bool = ...,
    progress: _Progress = ...,
    report: Optional[Report] = ...,
) -> Mesh: ...
def check(
    mesh: _MeshLike,
    *,
    maxPlaces: int = ...,
    bJoinEqualPoints: bool = ...,
    bFindIntersections: bool = ...,
    maxPairs: int = ...,
    progress: _Progress = ...,
) -> Figures: ...
def border_loops(mesh: _MeshLike, *, progress: _Progress = ...) -> List[Figures]: ...
def compare(
    first: _MeshLike, second: _MeshLike, *, numSamples: int = ..., progress: _Progress = ...
) -> Figures: ...
def source_indices(mesh: _MeshLike, points: _Points, *, progress: _Progress = ...) -> np.ndarray: ...
def read_points(
    path: _Path,
    *,
    columns: str = ...,
    vClasses: List[int] = ...,
    bLastReturns: bool = ...,
    progress: _Progress = ...,
) -> PointData: ...
def read_triangles(path: _Path, *, progress: _Progress = ...) -> TriangleData: ...
def read_mesh(path: _Path, *, progress: _Progress = ...) -> Mesh: ...
def write_points(
    path: _Path,
    points: _Points,
    *,
    normals: Any = ...,
    colors: Any = ...,
    intensities: Any = ...,
    bASCII: bool = ...,
    spacing: float = ...,
    bCompressed: bool = ...,
    bYUp: bool = ...,
    progress: _Progress = ...,
) -> None: ...
def write_mesh(
    path: _Path,
    mesh: _MeshLike,
    *,
    colors: Any = ...,
    bASCII: bool = ...,
    spacing: float = ...,
    bCompressed: bool = ...,
    bYUp: bool = ...,
    progress: _Progress = ...,
) -> None: ...
def holds_triangles(path: _Path) -> bool: ...
def format_use(path: _Path) -> Figures: ...
