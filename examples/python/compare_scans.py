#!/usr/bin/env python3
"""compare_scans.py BEFORE AFTER PICTURE.png: where two scans of one thing differ, as a picture.

Both are made meshes; the second one is drawn, each place in the colour of its distance from the first.
"""
import argparse
import sys

import matplotlib

matplotlib.use("Agg")  # no display is needed
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402

import zef  # noqa: E402


def make_mesh(path, spacing):
    cloud = zef.read_points(path)
    return zef.finish(zef.reconstruct(cloud, spacingAbs=spacing), cloud)


def draw(mesh, distances, scale, picture):
    """scale  distance of the darkest colour"""
    vertices, triangles = mesh
    figure = plt.figure(figsize=(9, 7))
    axes = figure.add_subplot(projection="3d")
    surface = axes.plot_trisurf(*vertices.T, triangles=triangles, cmap="viridis", linewidth=0.0, antialiased=False)
    surface.set_array(distances[triangles].mean(axis=1))
    surface.set_clim(0.0, scale)
    axes.set_box_aspect(np.ptp(vertices, axis=0))
    figure.colorbar(surface, shrink=0.6, label="distance, in units of the points")
    figure.savefig(picture, dpi=120)
    plt.close(figure)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("before")
    parser.add_argument("after")
    parser.add_argument("picture")
    options = parser.parse_args()
    try:
        # One spacing for both, so that they differ by what was scanned alone.
        spacing = max(zef.spacing(zef.read_points(path)) for path in (options.before, options.after))
        before, after = (make_mesh(path, spacing) for path in (options.before, options.after))
        found = zef.compare(after, before)
    except zef.Error as error:
        sys.exit(str(error))
    for title, distances in (("after to before", found.toSecond), ("before to after", found.toFirst)):
        place = ", ".join(f"{x:.4g}" for x in distances.largestPlace)
        print(f"{title}: mean {distances.mean:.4g}, 99 % {distances.percentile99:.4g}, "
              f"largest {distances.largest:.4g} at {place}")
    draw(after, found.toSecond.atPoints, max(found.toSecond.percentile99, spacing / 100), options.picture)
    return 0


if __name__ == "__main__":
    sys.exit(main())
