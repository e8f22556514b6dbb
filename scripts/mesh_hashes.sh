#!/bin/sh
# mesh_hashes.sh COMMAND...: lets the tool, called as COMMAND, make a set of meshes and prints a hash and a
# name for each. Two builds whose outputs are equal make the same meshes, bit for bit. COMMAND may hold
# options for the tool, or an emulator: mesh_hashes.sh build/release/bin/zef --threads 3
#
# Coordinates of the inputs made here are whole numbers and halves, quarters and so on: every awk prints them
# alike.
set -eu

# A command named by a path must be found from the temporary folder, too.
top=$(cd "$(dirname "$0")/.." && pwd)
data=$top/../shared/data
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
start=$PWD

# A wavy sheet of 150 x 150 points; the height is a polynomial in sixty-fourths.
awk 'BEGIN { for (x = -75; x < 75; ++x) for (y = -75; y < 75; ++y)
    printf "%d %d %.6f\n", x, y, (x * x - y * y) / 64 + (x * y % 7) / 8 }' >"$scratch/saddle.xyz"

# The surface of a box of 40 x 30 x 20 cells, edges and corners once.
awk 'BEGIN { for (x = 0; x <= 40; ++x) for (y = 0; y <= 30; ++y) for (z = 0; z <= 20; ++z)
    if (x == 0 || x == 40 || y == 0 || y == 30 || z == 0 || z == 20) print x, y, z }' >"$scratch/box.xyz"

# Two sheets that cross, uneven steps.
awk 'BEGIN { for (i = 0; i < 80; ++i) for (k = 0; k < 80; ++k) {
    print i + (k % 3) / 4, k + (i % 5) / 8, i / 2 - 20; print i + (k % 2) / 4, k, 20 - i / 2 + (k % 4) / 16 } }' \
    >"$scratch/crossing.xyz"

# An L of six rectangles a side: a text STL with sharp edges.
awk '
function corner(u, v, w) { printf "vertex %.3f %.3f %.3f\n", u, v, w }
function triangle(a, b, c, d, e, f, g, h, i) {
    print "facet normal 0 0 0\nouter loop"; corner(a, b, c); corner(d, e, f); corner(g, h, i)
    print "endloop\nendfacet" }
function rectangle(ax, ay, az, bx, by, bz, cx, cy, cz, dx, dy, dz) {
    triangle(ax, ay, az, bx, by, bz, cx, cy, cz); triangle(ax, ay, az, cx, cy, cz, dx, dy, dz) }
BEGIN {
    print "solid L"
    split("0 0 8 0 8 4 4 4 4 8 0 8", p, " ")
    for (i = 0; i < 6; ++i) {
        x = p[2 * i + 1]; y = p[2 * i + 2]; u = p[(2 * i + 2) % 12 + 1]; v = p[(2 * i + 3) % 12 + 1]
        rectangle(x, y, 0, u, v, 0, u, v, 3, x, y, 3) }
    rectangle(0, 0, 0, 0, 4, 0, 8, 4, 0, 8, 0, 0); rectangle(0, 4, 0, 0, 8, 0, 4, 8, 0, 4, 4, 0)
    rectangle(0, 0, 3, 8, 0, 3, 8, 4, 3, 0, 4, 3); rectangle(0, 4, 3, 4, 4, 3, 4, 8, 3, 0, 8, 3)
    print "endsolid L" }' >"$scratch/ell.stl"

# hash_of NAME IN OUT OPTIONS...: relative names, which an emulator of another system understands as well.
hash_of() {
    name=$1
    in=$2
    out=$3
    shift 3
    rm -f "$scratch/$out"
    # The words of the command come first, quoted by the caller's call of run().
    if (cd "$scratch" && run "$in" "$out" -q "$@" >log.txt 2>&1) && [ -s "$scratch/$out" ]; then
        echo "$(sha256sum <"$scratch/$out" | cut -c1-32)  $name"
    else
        echo "no mesh: $name" >&2
        cat "$scratch/log.txt" >&2
        exit 1
    fi
}

# The command, its relative paths made absolute.
command_line=""
for word in "$@"; do
    case $word in
    /*) ;;
    */*) [ ! -e "$start/$word" ] || word=$start/$word ;;
    esac
    command_line="$command_line '$word'"
done
run() {
    eval "$command_line \"\$@\""
}

hash_of "sample cloud" artificial123.xyz mesh.stl
hash_of "sample cloud, float" artificial123.xyz mesh.ply
hash_of "sample cloud, smoothed, coarser" artificial123.xyz mesh.stl -s -f 1.5
hash_of "sample cloud, flips" artificial123.xyz mesh.stl -f 2 --flips
hash_of "sample cloud, reduced" artificial123.xyz mesh.stl --reduce 3c,20
hash_of "sample cloud, laplace" artificial123.xyz mesh.stl -f 2 --laplace 2
hash_of "sample cloud, all steps" artificial123.xyz mesh.stl -f 4 --reduce 2c --anneal --laplace 1
hash_of "saddle" saddle.xyz mesh.stl
hash_of "box" box.xyz mesh.stl -f 1.25
hash_of "crossing sheets" crossing.xyz mesh.stl -a 1.5 --flips
hash_of "L, remeshed" ell.stl mesh.stl -m --plain -a 0.25
hash_of "L, remeshed, no feature" ell.stl mesh.ply -m --plain -a 0.3 --feature-angle 361 --reduce 3c,20
hash_of "L, sampled" ell.stl points.bin -m -a 0.25 --cloud
if [ -d "$data" ]; then
    for file in "kitten.xyz" "lamppost.xyz -s" "gearwheel.stl -m --plain -a 0.8" "fandisk.ply -m --plain -a 0.03"; do
        # shellcheck disable=SC2086 # a name and options
        set -- $file
        [ -e "$data/$1" ] || continue
        cp "$data/$1" "$scratch"
        name=$1
        shift
        hash_of "$name${*:+ $*}" "$name" mesh.stl "$@"
    done
fi
