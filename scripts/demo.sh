#!/bin/sh
# Installs what is missing, builds the tool, and reconstructs the built-in sample cloud: the mesh and
# pictures of it land in demo/.
set -eu
cd "$(dirname "$0")/.."

scripts/install_deps.sh
cmake --preset release
cmake --build --preset release --target zef_tool

mkdir -p demo
build/release/bin/zef artificial123.xyz demo/artificial123.ply \
    --png demo/artificial123.png --png-cloud demo/artificial123_points.png
