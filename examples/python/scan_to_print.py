#!/usr/bin/env python3
"""scan_to_print.py SCAN OUT.stl [--size MM]: a watertight file for a 3D printer from a scan.

The mesh is made, its holes are closed, it is thinned where it is flat, put onto the plate, and judged once more.
"""
import argparse
import sys

import numpy as np

import zef


def make_closed(scan, progress):
    """The mesh of a scan without holes; an open bottom, which is a rim, is closed, too."""
    report = zef.Report()
    mesh = zef.auto_reconstruct(scan, progress=progress, report=report)
    print(report.choice.reason)
    mesh = zef.finish(mesh, scan, progress=progress)
    return zef.fill(mesh, zef.border_loops(mesh))


def make_printable(mesh, size):
    """Thinned, as long as told in its longest direction, in the middle of the plate and upon it."""
    length = mesh.averageEdgeLength
    zef.reduce(mesh, 3 * length, 15.0)
    zef.flips(mesh)
    vertices, triangles = zef.finish(mesh, bEvenTriangles=False)
    lowest, highest = vertices.min(axis=0), vertices.max(axis=0)
    foot = np.append((lowest + highest)[:2] / 2, lowest[2])
    # Floats are what the file holds: the mesh must be sound with these.
    placed = ((vertices - foot) * (size / (highest - lowest).max())).astype(np.float32)
    return zef.finish((placed, triangles), bEvenTriangles=False, bRoundToFloat=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("scan")
    parser.add_argument("out")
    parser.add_argument("--size", type=float, default=100.0, help="longest side in millimetres")
    options = parser.parse_args()
    try:
        scan = zef.read_points(options.scan)
        mesh = make_printable(make_closed(scan, progress=sys.stderr.isatty()), options.size)
        zef.write_mesh(options.out, mesh)
    except zef.Error as error:
        sys.exit(f"{options.scan}: {error}")
    check = zef.check(mesh)
    print(f"{len(mesh.triangles)} triangles, sound: {check.isSound}, closed: {check.isClosed}")
    return 0 if check.isSound and check.isClosed else 3


if __name__ == "__main__":
    sys.exit(main())
