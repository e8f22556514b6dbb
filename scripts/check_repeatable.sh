#!/bin/sh
# The same input gives the same mesh file, bit for bit: in a second run, for 1, 2 and 4 threads, with and
# without randomised addresses, without optimization (preset dev), and from clang where it is installed.
# Clouds may be named; the built-in one and, if they are there, two small scans serve if not.
set -eu
cd "$(dirname "$0")/.."

cmake --preset release >/dev/null
cmake --build --preset release --target zef_tool
cmake --preset dev >/dev/null
cmake --build --preset dev --target zef_tool
tools="build/release/bin/zef build/dev/bin/zef"
if command -v clang++ >/dev/null 2>&1; then
    cmake -S . -B build/clang -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Release \
        -DZEF_BUILD_TESTS=OFF -DZEF_BUILD_BENCHMARKS=OFF -DZEF_BUILD_EXAMPLES=OFF >/dev/null
    cmake --build build/clang --target zef_tool
    tools="$tools build/clang/bin/zef"
fi

if [ $# -eq 0 ]; then
    set -- artificial123.xyz
    for scan in ../shared/data/kitten.xyz ../shared/data/lamppost.xyz; do
        [ ! -e "$scan" ] || set -- "$@" "$scan"
    done
fi

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failed=0

# compare LABEL CLOUD COMMAND...: the mesh that the command makes against the first one of the cloud.
compare() {
    label=$1
    cloud=$2
    shift 2
    "$@" "$cloud" "$folder/mesh.stl" -q
    if [ ! -e "$folder/first.stl" ]; then
        mv "$folder/mesh.stl" "$folder/first.stl"
    elif ! cmp -s "$folder/mesh.stl" "$folder/first.stl"; then
        echo "different mesh: $cloud, $label"
        failed=1
    fi
}

for cloud in "$@"; do
    rm -f "$folder/first.stl"
    for tool in $tools; do
        for threads in 2 2 1 4; do
            compare "$tool, $threads threads" "$cloud" "$tool" --threads "$threads"
        done
        if setarch -R true 2>/dev/null; then
            compare "$tool, fixed addresses" "$cloud" setarch -R "$tool"
        fi
    done
    echo "compared: $cloud"
done
exit $failed
