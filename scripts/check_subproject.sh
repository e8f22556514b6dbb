#!/bin/sh
# The library as a part of another project, by add_subdirectory and by FetchContent, static and shared: the
# host builds and runs, and nothing is forced on it.
lane="part of another project"
. "$(dirname "$0")/lane.sh"

scripts/install_deps.sh
top=$PWD

# check_host FOLDER: what a host may expect of its own build.
check_host() {
    ninja -C "$1" -t targets all >"$scratch/targets"
    for stranger in zef_tests zef_tool zef_benchmarks zef_quickstart; do
        ! grep -q "^$stranger:" "$scratch/targets" || fail "the host must build $stranger"
    done
    ! grep -q -e '-Werror' "$1/compile_commands.json" || fail "warnings are errors for the host"
    ! grep -q 'ZEF_INSTALL:BOOL=ON' "$1/CMakeCache.txt" || fail "ZEF_INSTALL is on in the host"
    ! grep -q '^BUILD_SHARED_LIBS:BOOL' "$1/CMakeCache.txt" || fail "an option of the host was set"
    ! grep -q '^CMAKE_BUILD_TYPE:STRING=.' "$1/CMakeCache.txt" || fail "a build type was set"
    test -x "$1/host" || fail "the host's program is not where the host puts it"
    test ! -e "$1/bin" || fail "there is a folder of programs that the host did not ask for"
    cmake --install "$1" --prefix "$scratch/prefix" >/dev/null
    test -z "$(find "$scratch/prefix" ! -type d 2>/dev/null)" || fail "the host installs the library"
    # The host's own program is compiled with the host's flags only.
    grep -F 'main.cpp' "$1/compile_commands.json" | grep '"command"' >"$scratch/command"
    ! grep -qE -e '-Wall|-ffp-contract|-std=(c|gnu)\+\+20' "$scratch/command" ||
        fail "the host's program is compiled with options of the library"
}

for way in add_subdirectory FetchContent; do
    for kind in static shared; do
        # As deep as the other builds, so that their objects serve through ccache.
        folder=build/subproject-$way-$kind
        rm -rf "$folder"
        shared=""
        [ $kind = static ] || shared=-DHOST_SHARED=ON
        # ccache is the host's business; here it spares compiling the same sources four times.
        cmake -S examples/subproject -B "$folder" -G Ninja -DHOST_WAY=$way $shared -DHOST_ZEF="$top" \
            -DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null
        cmake --build "$folder"
        "$folder/host" "$scratch/mesh.ply"
        check_host "$folder"
        echo "passed: $way, $kind"
    done
done
