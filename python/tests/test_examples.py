"""The example scripts do what they say."""
import csv
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest

import zef

EXAMPLES = Path(__file__).resolve().parents[2] / "examples" / "python"


def run(name, *arguments, status=0):
    command = [sys.executable, EXAMPLES / name, *map(str, arguments)]
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    assert done.returncode == status, done.stderr
    return done.stdout


def dented(points):
    """A dent of a tenth at the place where x is largest."""
    near = points[:, 0] > 0.9
    return np.where(near[:, None], points * 0.9, points)


def test_scan_to_print(cloud, tmp_path):
    open_scan = cloud[cloud[:, 2] > -0.5]
    zef.write_points(tmp_path / "scan.xyz", open_scan)
    assert "closed: True" in run("scan_to_print.py", tmp_path / "scan.xyz", tmp_path / "part.stl", "--size", 80)
    soup = zef.read_triangles(tmp_path / "part.stl")
    check = zef.check(soup, bJoinEqualPoints=True)
    assert check.isSound and check.isClosed
    assert np.ptp(soup.vertices, axis=0).max() == pytest.approx(80.0, abs=0.01)
    assert soup.vertices[:, 2].min() == pytest.approx(0.0, abs=0.01)


def test_batch_of_a_folder(cloud, tmp_path):
    (tmp_path / "scans").mkdir()
    for name in ("a.xyz", "b.ply"):
        zef.write_points(tmp_path / "scans" / name, cloud)
    (tmp_path / "scans" / "broken.ply").write_bytes(b"ply\nformat nothing\n")
    (tmp_path / "scans" / "notes.md").write_text("no scan")
    table = run("batch_folder.py", tmp_path / "scans", tmp_path / "meshes", status=1)
    rows = {row["scan"]: row for row in csv.DictReader(table.splitlines())}
    assert list(rows) == ["a.xyz", "b.ply", "broken.ply"]
    assert rows["a.xyz"]["isSound"] == rows["b.ply"]["isClosed"] == "True"
    assert "broken.ply" in rows["broken.ply"]["error"]
    meshes = sorted(path.name for path in (tmp_path / "meshes").iterdir())
    assert meshes == ["a.ply", "b.ply"]
    assert zef.check(zef.read_mesh(tmp_path / "meshes" / "a.ply")).isSound


def test_comparison_of_two_scans(cloud, tmp_path):
    zef.write_points(tmp_path / "before.xyz", cloud)
    zef.write_points(tmp_path / "after.xyz", dented(cloud))
    told = run("compare_scans.py", tmp_path / "before.xyz", tmp_path / "after.xyz", tmp_path / "picture.png")
    largest = float(told.split("largest ")[1].split(" at")[0])
    assert 0.05 < largest < 0.15
    image = __import__("matplotlib.image").image.imread(tmp_path / "picture.png")
    assert image.shape[1] > 800 and image[..., :3].std() > 0.05, "the picture must not be blank"
