#!/bin/sh
# The build option for an outside PLY library, if the sources of that library stand beside the project: the tool
# makes the same mesh of a PLY in both builds, and the package finds the library again.
lane="outside PLY library"
. "$(dirname "$0")/lane.sh"

source=../shared/third_party/tinyply
if [ ! -d "$source" ]; then
    echo "no sources of the library in $source: nothing to check"
    exit 0
fi
scripts/install_deps.sh
cmake -S "$source" -B "$scratch/tinyply" -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$scratch/prefix" \
    -DCMAKE_POSITION_INDEPENDENT_CODE=ON
cmake --build "$scratch/tinyply" --target install >/dev/null
cmake --preset release
cmake --build --preset release --target zef_tool
cmake -S . -B build/system_tinyply -G Ninja -DCMAKE_BUILD_TYPE=Release -DZEF_WERROR=ON -DZEF_USE_SYSTEM_TINYPLY=ON \
    -DCMAKE_PREFIX_PATH="$scratch/prefix" -DZEF_BUILD_TESTS=OFF -DZEF_BUILD_BENCHMARKS=OFF -DZEF_BUILD_EXAMPLES=OFF
cmake --build build/system_tinyply --target zef_tool

for tool in release system_tinyply; do
    zef=build/$tool/bin/zef
    "$zef" artificial123.xyz "$scratch/$tool.ply" -q
    "$zef" "$scratch/$tool.ply" "$scratch/$tool.ascii.ply" --mesh --ascii -q
    for ply in "$scratch/$tool.ply" "$scratch/$tool.ascii.ply"; do
        "$zef" "$ply" "$ply.mesh.obj" --mesh -q
        "$zef" "$ply" "$ply.points.xyz" -q --convert
    done
done
for result in ply.mesh.obj ply.points.xyz ascii.ply.mesh.obj ascii.ply.points.xyz; do
    cmp "$scratch/release.$result" "$scratch/system_tinyply.$result" || fail "$result differs"
done
