#!/bin/sh
# The demo leaves the mesh and both pictures that README.md promises.
lane="demo"
. "$(dirname "$0")/lane.sh"

rm -rf demo
scripts/demo.sh
for file in artificial123.ply artificial123.png artificial123_points.png; do
    test -s "demo/$file" || fail "the demo left no $file"
done
