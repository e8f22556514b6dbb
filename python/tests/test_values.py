"""The calls give what the command line tool gives, bit for bit, and what they promise."""
import numpy as np
import pytest
from conftest import same_bits

import zef


def make_plain(points):
    return zef.reconstruct(points, spacingFactor=1.25)


def make_smoothed(points):
    return zef.reconstruct(points, bSmooth=True, spacingAbs=0.05)


def make_finished(points):
    return zef.finish(zef.reconstruct(points), points, bRoundToFloat=True)


def make_auto(points):
    return zef.finish(zef.auto_reconstruct(points), points, bRoundToFloat=True, longestHole=24)


def make_better(points):
    mesh = zef.reconstruct(points)
    zef.flips(mesh)
    zef.reduce(mesh, 0.1, 20)
    zef.smooth(mesh, 2)
    zef.anneal(mesh)
    return mesh


CLOUD_CASES = {
    "factor": (make_plain, ["--plain", "-f", "1.25"]),
    "smoothed, spacing": (make_smoothed, ["--plain", "-s", "-a", "0.05"]),
    "finished": (make_finished, []),
    "auto": (make_auto, ["--auto"]),
    "in place": (make_better, ["--plain", "--flips", "--reduce", "0.1,20", "--laplace", "2", "--anneal"]),
}


@pytest.mark.parametrize("case", CLOUD_CASES)
def test_points_give_the_mesh_of_the_tool(case, cloud, run_tool, tmp_path):
    make, options = CLOUD_CASES[case]
    zef.write_points(tmp_path / "cloud.bin", cloud)
    run_tool(tmp_path / "cloud.bin", tmp_path / "tool.obj", *options)
    assert same_bits(make(cloud), zef.read_triangles(tmp_path / "tool.obj").unpack())


SOUP_CASES = {
    "remesh": (lambda soup: zef.remesh(soup, length=0.3), ["-a", "0.3"]),
    "outer hull": (lambda soup: zef.outer_hull(soup, length=0.3), ["-a", "0.3", "--outer"]),
    "melt": (lambda soup: zef.melt(soup, 0.3, 30.0), ["-a", "0.3", "--plain", "--feature-angle", "30"]),
}


@pytest.mark.parametrize("case", SOUP_CASES)
def test_triangles_give_the_mesh_of_the_tool(case, cube, run_tool, tmp_path):
    make, options = SOUP_CASES[case]
    vertices, triangles = cube.reshape(-1, 3), np.arange(36).reshape(-1, 3)
    zef.write_mesh(tmp_path / "cube.obj", (vertices, triangles))
    run_tool(tmp_path / "cube.obj", tmp_path / "tool.obj", "-m", *options)
    from_tool = zef.read_triangles(tmp_path / "tool.obj").unpack()
    assert same_bits(make(cube), from_tool)
    assert same_bits(make((vertices, triangles)), from_tool)


def test_sample_points_are_those_of_the_tool(cube, run_tool, tmp_path):
    zef.write_mesh(tmp_path / "cube.off", (cube.reshape(-1, 3), np.arange(36).reshape(-1, 3)))
    run_tool(tmp_path / "cube.off", tmp_path / "tool.bin", "-m", "--cloud", "-a", "0.25", "--feature-angle", "40")
    assert zef.to_cloud(cube, 0.25, 40.0).tobytes() == zef.read_points(tmp_path / "tool.bin").points.tobytes()


def test_a_finished_mesh_is_sound_and_closed(mesh, cloud):
    check = zef.check(mesh)
    assert check.isSound and check.isClosed and check.eulerNumber == 2
    assert check.numTriangles == len(mesh.triangles)
    distances = zef.compare(mesh, mesh).toFirst
    assert not distances.atPoints.any() and distances.largest < 1e-15
    assert zef.spacing(cloud) == pytest.approx(mesh.averageEdgeLength, rel=0.3)


def test_faults_are_told_with_their_place(mesh):
    vertices, triangles = mesh
    check = zef.check((vertices, np.vstack([triangles, triangles[7]])))
    assert not check.isSound and check["numDuplicates"] == 1
    fault = next(fault for fault in check.faults if fault.kind == "DUPLICATE")
    assert {fault.triangle, fault.otherTriangle} == {7, len(triangles)}
    assert np.allclose(fault.place, vertices[triangles[7]].mean(axis=0))


def test_chosen_holes_are_filled(open_mesh):
    loops = zef.border_loops(open_mesh)
    assert [loop.bRim for loop in loops] == [False] * 3
    report = zef.Report()
    once = zef.fill(open_mesh, loops[:1], report=report)
    assert report.fills[0].bFilled and report.numBorderLoops == 2
    assert np.array_equal(once.triangles[: len(open_mesh.triangles)], open_mesh.triangles)
    assert zef.check(zef.fill(open_mesh)).isClosed
    with pytest.raises(zef.BadArgument):
        zef.fill(open_mesh, [{"vertices": [0, 1, 2]}])


def test_a_loop_runs_along_border_edges_of_the_mesh(open_mesh):
    edges = {(a, b) for t in open_mesh.triangles.tolist() for a, b in zip(t, t[1:] + t[:1])}
    for loop in zef.border_loops(open_mesh):
        around = list(zip(loop.vertices, np.roll(loop.vertices, -1)))
        lengths = [np.linalg.norm(open_mesh.vertices[a] - open_mesh.vertices[b]) for a, b in around]
        assert loop.length == pytest.approx(sum(lengths))
        assert all((a, b) in edges and (b, a) not in edges for a, b in around)


def test_distances_are_those_of_a_shift(cube):
    flat = (cube[:2].reshape(-1, 3), [[0, 1, 2], [3, 4, 5]])
    shifted = (flat[0] + [0.25, 0.0, 0.0], flat[1])
    found = zef.compare(flat, shifted, numSamples=1000)
    assert found.toFirst.mean == found.toSecond.largest == 0.25
    assert found.toSecond.atPoints.tolist() == [0.25] * 6


def test_attributes_follow_to_the_vertices(cloud, mesh):
    sources = zef.source_indices(mesh, cloud)
    assert sources.dtype == np.int64 and sources.shape == (len(mesh.vertices),)
    distances = np.linalg.norm(cloud[sources] - mesh.vertices, axis=1)
    some = slice(None, None, 50)
    nearest = np.linalg.norm(mesh.vertices[some, None] - cloud[None], axis=2).min(axis=1)
    assert np.array_equal(distances[some], nearest)
    assert (zef.source_indices(mesh, np.empty((0, 3))) == -1).all()


def test_report_adds_up(cloud):
    report = zef.Report(old=1)
    dirty = np.vstack([cloud, np.full((3, 3), np.nan)])
    mesh = zef.reconstruct(dirty, report=report)
    assert "old" not in report and report.bFinished and report["call"] == "reconstruct_auto"
    assert (report.numPoints, report.numNotFinite) == (len(dirty), 3)
    assert report.numT == len(mesh.triangles)
    assert report.numT == report.numRawT + sum(p.numAddedT - p.numKilledT for p in report.passes)
    zef.auto_reconstruct(cloud, report=report)
    assert report.choice.trials[0].factor == 1.0 and report.choice.reason
    with pytest.raises(AttributeError, match="numPoints"):
        report.numPiontz


def test_report_of_a_refused_call_tells_so(cloud):
    report = zef.Report()
    with pytest.raises(zef.BadArgument):
        zef.reconstruct(cloud, spacingFactor=0.0, report=report)
    assert report.call == "reconstruct_auto" and not report.bFinished


def test_forecast_and_limit(cloud):
    bytes_needed = zef.forecast(cloud)
    assert bytes_needed > zef.forecast(cloud, spacingAbs=0.2) > 0
    with pytest.raises(zef.OverMemoryLimit) as refused:
        zef.reconstruct(cloud, memoryLimit=bytes_needed // 2)
    assert refused.value.forecast == bytes_needed
    fitting = refused.value.fittingSpacing
    assert zef.reconstruct(cloud, spacingAbs=fitting, memoryLimit=bytes_needed // 2)
    assert zef.forecast_soup(cloud[:300], 0.01) > 0
    with pytest.raises(ValueError):
        zef.forecast_soup(cloud[:300], 0.01, call="finish")


@pytest.mark.parametrize("extension", ["ply", "xyz", "pcd", "csv"])
def test_points_and_their_attributes_survive_a_file(extension, cloud, tmp_path):
    colors = np.arange(3 * len(cloud), dtype=np.int64).reshape(-1, 3) % 256
    path = tmp_path / f"cloud.{extension}"
    zef.write_points(path, cloud, colors=colors)
    again = zef.read_points(path)
    assert np.array_equal(again.points, cloud) and np.array_equal(again.colors, colors)
    zef.write_points(tmp_path / f"copy.{extension}", again)
    assert path.read_bytes() == (tmp_path / f"copy.{extension}").read_bytes()


def test_options_of_reading_count(tmp_path):
    path = tmp_path / "swapped.txt"
    path.write_text("1 2 3\n4 5 6\n")
    assert zef.read_points(path, columns="z,y,x").points.tolist() == [[3, 2, 1], [6, 5, 4]]


def test_meshes_survive_a_file(mesh, tmp_path):
    for extension in ("ply", "obj", "off"):
        zef.write_mesh(tmp_path / f"mesh.{extension}", mesh)
        assert same_bits(mesh, zef.read_triangles(tmp_path / f"mesh.{extension}").unpack())
    assert zef.holds_triangles(tmp_path / "mesh.ply")
    assert len(zef.read_mesh(tmp_path / "mesh.ply").triangles) == len(mesh.triangles)
    assert zef.format_use("a.las").bReadsPoints and not zef.format_use("a.las").bReadsTriangles


def test_names_of_files_may_be_any_bytes(cloud, tmp_path):
    name = bytes(tmp_path) + b"/\xff\xe4.xyz"
    zef.write_points(name, cloud[:5])
    assert len(zef.read_points(name)) == 5
    with pytest.raises(zef.BadFile, match="no_such"):
        zef.read_points(bytes(tmp_path) + b"/\xff_no_such.xyz")
