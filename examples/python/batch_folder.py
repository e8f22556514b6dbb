#!/usr/bin/env python3
"""batch_folder.py SCANS MESHES [--format ply]: a mesh for each scan of a folder, and a table of them.

A scan that fails does not keep the others from being done; the exit status is 1 then.
"""
import argparse
import csv
import sys
from pathlib import Path

import zef

FIGURES = ["scan", "points", "spacing", "triangles", "isSound", "isClosed", "numBorderLoops", "seconds", "error"]


def make_mesh(scan, target):
    """The figures of one scan; the mesh is written to target."""
    cloud = zef.read_points(scan)
    report, finishing = zef.Report(), zef.Report()
    mesh = zef.reconstruct(cloud, report=report)
    mesh = zef.finish(mesh, cloud, bRoundToFloat=True, report=finishing)
    if not mesh:
        raise ValueError("no surface was found")
    zef.write_mesh(target, mesh, spacing=report.usedSpacing)
    check = zef.check(mesh)
    return {
        "points": report.numUsedPoints,
        "spacing": f"{report.usedSpacing:.4g}",
        "triangles": check.numTriangles,
        "seconds": f"{report.seconds + finishing.seconds:.2f}",
        **{name: check[name] for name in ("isSound", "isClosed", "numBorderLoops")},
    }


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("scans", type=Path)
    parser.add_argument("meshes", type=Path)
    parser.add_argument("--format", default="ply", help="extension of the meshes")
    options = parser.parse_args()
    options.meshes.mkdir(parents=True, exist_ok=True)
    failed = False
    table = csv.DictWriter(sys.stdout, FIGURES, restval="", lineterminator="\n")
    table.writeheader()
    for scan in sorted(options.scans.iterdir()):
        if not zef.format_use(scan).bReadsPoints:
            continue
        row = {"scan": scan.name}
        try:
            row.update(make_mesh(scan, options.meshes / f"{scan.stem}.{options.format}"))
        except ValueError as error:  # refused by the library, too
            row["error"] = error
            failed = True
        table.writerow(row)
        sys.stdout.flush()
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
