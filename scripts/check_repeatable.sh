#!/bin/sh
# The same input gives the same mesh, bit for bit: for 1, 2, 3 and 8 workers, in a second run, with and
# without randomised addresses, without optimization, and from clang++.
lane="same meshes from every build and number of workers"
. "$(dirname "$0")/lane.sh"

scripts/install_deps.sh clang
cmake --preset release >/dev/null
cmake --build --preset release --target zef_tool
cmake --preset clang >/dev/null
cmake --build --preset clang --target zef_tool
# No build type: the compiler's own default, which is -O0.
cmake -S . -B build/plain -G Ninja -DCMAKE_BUILD_TYPE=None -DZEF_BUILD_TESTS=OFF -DZEF_BUILD_BENCHMARKS=OFF \
    -DZEF_BUILD_EXAMPLES=OFF >/dev/null
cmake --build build/plain --target zef_tool

compare() {
    label=$1
    shift
    scripts/mesh_hashes.sh "$@" >"$scratch/hashes"
    diff "$scratch/first" "$scratch/hashes" || fail "different meshes: $label"
    echo "same meshes: $label"
}

scripts/mesh_hashes.sh build/release/bin/zef --threads 2 >"$scratch/first"
cat "$scratch/first"
for threads in 1 2 3 8; do
    compare "$threads workers" build/release/bin/zef --threads $threads
done
if setarch -R true 2>/dev/null; then
    compare "fixed addresses" setarch -R build/release/bin/zef
fi
compare "clang++, -O2" build/clang/bin/zef --threads 2
compare "g++, -O0" build/plain/bin/zef --threads 2
