#!/bin/sh
# make_gallery.sh [ZEF]: makes docs/gallery.md and its pictures with the tool, from clouds that are made here. Run it
# after a change of what pictures show, and look at them.
set -eu
cd "$(dirname "$0")/.."
zef=$(realpath "${1:-build/release/bin/zef}")
page=$PWD/docs/gallery.md
pictures=$PWD/docs/images/gallery
max_bytes=150000
max_total=1500000
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# --- Clouds and triangles -----------------------------------------------------------------------------------
# The same numbers everywhere: jitter comes from a sine, not from a generator of the system.

# Hills with a pond where nothing was measured.
make_terrain() {
    awk 'function jitter(n) { n = sin(n * 12.9898) * 43758.5453; return n - int(n) }
    BEGIN {
        for (i = 0; i < 200; ++i)
            for (k = 0; k < 150; ++k) {
                x = i + 0.6 * jitter(i * 150 + k + 1); y = k + 0.6 * jitter(i * 150 + k + 50000)
                if ((x - 120) ^ 2 / 2 + (y - 60) ^ 2 < 150) continue
                printf "%.4f %.4f %.4f\n", x, y, 12 * sin(x / 31) * cos(y / 23) + 3 * sin(x / 9 + y / 13)
            }
    }'
}

# A ring, a ball in it, and a box beside: rows of points with some noise.
make_bodies() {
    awk 'function jitter(n) { n = sin(n * 12.9898) * 43758.5453; return 0.01 * (n - int(n)) }
    function put(x, y, z) { ++n; printf "%.5f %.5f %.5f\n", x + jitter(n), y + jitter(n + 0.3), z + jitter(n + 0.6) }
    BEGIN {
        pi = atan2(0, -1)
        for (i = 0; i < 240; ++i)
            for (k = 0; k < 72; ++k) {
                a = 2 * pi * i / 240; b = 2 * pi * k / 72
                put((3 + 0.8 * cos(b)) * cos(a), (3 + 0.8 * cos(b)) * sin(a), 0.8 * sin(b))
            }
        for (i = 0; i < 14000; ++i) {
            z = 1 - (2 * i + 1) / 14000; r = sqrt(1 - z * z)
            put(1.3 * r * cos(2.399963 * i), 1.3 * r * sin(2.399963 * i), 1.3 * z)
        }
        for (side = 0; side < 6; ++side)
            for (i = 0; i <= 30; ++i)
                for (k = 0; k <= 30; ++k) {
                    u = i / 15 - 1; v = k / 15 - 1; w = side % 2 ? 1 : -1
                    if (side < 2) put(5.6 + u, v, w)
                    else if (side < 4) put(5.6 + u, w, v)
                    else put(5.6 + w, u, v)
                }
    }'
}

# Five bars that cross each other, each closed in itself.
make_bars() {
    awk 'function bar(a, tilt,    i, x, y, z, s, c, t, u) {
        s = sin(a); c = cos(a); t = sin(tilt); u = cos(tilt)
        for (i = 0; i < 8; ++i) {
            x = (i % 2 ? 2 : -2); y = (int(i / 2) % 2 ? 0.25 : -0.25); z = (i > 3 ? 0.25 : -0.25)
            printf "v %.6f %.6f %.6f\n", c * (u * x - t * z) - s * y, s * (u * x - t * z) + c * y, t * x + u * z
        }
        printf "f -8 -6 -5 -7\nf -4 -3 -1 -2\nf -8 -7 -3 -4\nf -6 -2 -1 -5\nf -8 -4 -2 -6\nf -7 -5 -1 -3\n"
    }
    BEGIN { for (b = 0; b < 5; ++b) bar(0.65 * b, 0.5 * sin(2 * b + 1)) }'
}

# --- The page -----------------------------------------------------------------------------------------------

# show NAME.png TEXT ARGUMENT...: runs the tool with the arguments, which write NAME.png, and tells how.
show() {
    picture=$1
    text=$2
    shift 2
    (cd "$scratch" && "$zef" "$@" -q)
    mv "$scratch/$picture" "$pictures/$picture"
    # shellcheck disable=SC2016 # the quotes are those of the page
    printf '\n%s\n\n![%s](images/gallery/%s)\n\n```\nzef %s\n```\n' "$text" "$text" "$picture" "$*" >>"$page"
}

mkdir -p "$pictures"
rm -f "$pictures"/*.png
make_terrain >"$scratch/terrain.xyz"
make_bodies >"$scratch/bodies.xyz"
make_bars >"$scratch/bars.obj"
cat >"$page" <<'END'
# Gallery

Each picture was made by the command under it, from clouds and triangles that `scripts/make_gallery.sh` makes; the same script makes this page. `artificial123.xyz` is built into the tool.
END

show ball_points.png "The built-in cloud." \
    artificial123.xyz --png-cloud ball_points.png --size 360,270
show ball.png "Its mesh at the detected spacing." \
    artificial123.xyz ball.ply --png ball.png --size 480,360
show ball_curvature.png "Where it bulges and where it is hollow: mean curvature, with a scale bar." \
    ball.ply --mesh --png ball_curvature.png --paint curvature --scale-bar --size 480,360
show ball_coarse.png "The same cloud at ten times the spacing, with its edges." \
    artificial123.xyz coarse.ply -f 10 --png ball_coarse.png --wire --size 480,360
show ball_apart.png "How far the coarse mesh is from the fine one: blue at 0, red at what 99 % do not exceed." \
    coarse.ply ball.ply --compare --png ball_apart.png --scale-bar --size 480,360
show terrain.png "Hills with a pond that was not measured; borders are red." \
    terrain.xyz terrain.ply --png terrain.png --marks --scale-bar --size 480,360
show terrain_filled.png "The pond filled, the rim left open: distance to the nearest point of the cloud." \
    terrain.xyz filled.ply --fill all-but-rim --png terrain_filled.png --paint distance --marks --size 440,330
show bodies.png "Three bodies of one cloud, each in a color of its own." \
    bodies.xyz bodies.ply --png bodies.png --paint pieces --size 480,360
show bodies_turned_001.png "The second of four pictures around them." \
    bodies.ply --mesh --png bodies_turned.png --turntable 4 --paint pieces --size 480,360
show bars.png "Five bars that cross each other, as they were drawn." \
    bars.obj --png bars.png --wire --size 480,360
show bars_hull.png "One closed surface around all of them." \
    bars.obj hull.stl -m -a 0.1 --outer --png bars_hull.png --wire --size 480,360
cat >>"$page" <<'END'

A page to turn a mesh in any browser is made by `--html`; it is too large for this page.

```
zef bodies.xyz bodies.ply --html bodies.html --paint pieces
```
END

total=0
for picture in "$pictures"/*.png; do
    bytes=$(wc -c <"$picture")
    total=$((total + bytes))
    [ "$bytes" -lt $max_bytes ] || { echo "$picture takes $bytes bytes, more than $max_bytes" >&2; exit 1; }
done
[ $total -lt $max_total ] || { echo "the pictures take $total bytes, more than $max_total" >&2; exit 1; }
echo "$page: $total bytes of pictures"
