#!/bin/sh
# check_portability.sh [mingw64] [aarch64]: builds tool and tests for Windows and for 64-bit ARM (both if
# none is named), runs the tests under wine and qemu, and compares the meshes with those of the native tool.
targets=${*:-mingw64 aarch64}
lane="other systems: $targets"
. "$(dirname "$0")/lane.sh"

top=$PWD
export WINEPREFIX="$top/build/wine" WINEDEBUG=-all

# The two halves of the emulated call: the program that emulates, and the ending of programs.
emulator_of() {
    case $1 in
    mingw64) echo /usr/lib/wine/wine64 ;;
    aarch64) echo qemu-aarch64 -L /usr/aarch64-linux-gnu ;;
    *) fail "no such target: $1" ;;
    esac
}
packages_of() {
    case $1 in
    mingw64) echo g++-mingw-w64-x86-64-posix wine64 ;;
    aarch64) echo g++-aarch64-linux-gnu qemu-user ;;
    esac
}

# build_dependencies TARGET: GoogleTest compiled for the target, and CLI11, which is headers only, away from
# the native headers beside which it is installed.
build_dependencies() {
    deps=$top/build/$1-deps
    [ ! -e "$deps/done" ] || return 0
    cmake -S /usr/src/googletest -B "$deps/googletest" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_GMOCK=OFF \
        -DCMAKE_TOOLCHAIN_FILE="$top/cmake/toolchains/$1.cmake" -DCMAKE_INSTALL_PREFIX="$deps" \
        -DCMAKE_INSTALL_LIBDIR=lib >/dev/null
    cmake --build "$deps/googletest"
    cmake --install "$deps/googletest" >/dev/null
    mkdir -p "$deps/include" "$deps/share/cmake"
    cp -r /usr/include/CLI "$deps/include"
    cp -r /usr/share/cmake/CLI11 "$deps/share/cmake"
    touch "$deps/done"
}

build_target() {
    cmake -S . -B "build/$1" -G Ninja -DCMAKE_BUILD_TYPE=Release -DZEF_WERROR=ON -DZEF_PRECOMPILE=ON \
        -DCMAKE_TOOLCHAIN_FILE="$top/cmake/toolchains/$1.cmake" -DZEF_TOOL_PICTURES=OFF \
        -DZEF_BUILD_BENCHMARKS=OFF -DZEF_BUILD_EXAMPLES=OFF -DCLI11_DIR="$deps/share/cmake/CLI11" \
        -DGTest_DIR="$deps/lib/cmake/GTest" >/dev/null
    cmake --build "build/$1" --target zef_tool zef_tests
}

scripts/install_deps.sh googletest
cmake --preset release >/dev/null
cmake --build --preset release --target zef_tool
scripts/mesh_hashes.sh build/release/bin/zef >"$scratch/native"

failed=""
for target in $targets; do
    emulator=$(emulator_of "$target")
    # shellcheck disable=SC2046 # a list of words
    scripts/install_deps.sh $(packages_of "$target")
    build_dependencies "$target"
    build_target "$target"

    program=build/$target/bin/zef
    tests=build/$target/bin/zef_tests
    [ -e "$program" ] || { program=$program.exe && tests=$tests.exe; }
    # shellcheck disable=SC2086 # an emulator with its options
    scripts/mesh_hashes.sh $emulator "$program" >"$scratch/$target" || failed="$failed meshes of $target,"
    if diff "$scratch/native" "$scratch/$target"; then
        echo "same meshes as the native tool: $target"
    else
        failed="$failed meshes of $target,"
    fi
    # Each suite in a process of its own: the first cell size of a process decides for all later clouds in it.
    # shellcheck disable=SC2086 # an emulator with its options
    for suite in $($emulator "$tests" --gtest_list_tests | tr -d '\r' | sed -n 's/^\([A-Za-z0-9_]*\)\.$/\1/p'); do
        $emulator "$tests" --gtest_brief=1 --gtest_filter="$suite.*" || failed="$failed $suite on $target,"
    done
done
[ -z "$failed" ] || fail "failed:$failed"
