#!/bin/sh
# Installs the library, once static and once shared, under a folder of its own, and builds and runs the
# consumer project against it: through find_package, and through pkg-config.
lane="installed package"
. "$(dirname "$0")/lane.sh"

scripts/install_deps.sh
top=$PWD
work=$top/build/consumer
rm -rf "$work"

run_consumer()
{
    "$1" "$work/mesh.ply" >"$work/output.txt" || { cat "$work/output.txt"; echo "failed: $1"; exit 1; }
    rm "$work/mesh.ply"
    echo "passed: $1"
}

for kind in static shared; do
    shared=OFF
    [ $kind = static ] || shared=ON
    prefix=$work/$kind/prefix
    # As deep as the other builds, so that their objects serve through ccache.
    library=build/consumer-$kind
    rm -rf "$library"
    cmake -S . -B "$library" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=$shared \
        -DZEF_WERROR=ON -DZEF_BUILD_TESTS=OFF -DZEF_BUILD_BENCHMARKS=OFF -DZEF_BUILD_EXAMPLES=OFF \
        -DCMAKE_INSTALL_PREFIX="$prefix"
    cmake --build "$library"
    cmake --install "$library" >/dev/null
    "$prefix/bin/zef" --version

    # A moved tree must still work.
    mv "$prefix" "$work/$kind/moved"
    prefix=$work/$kind/moved
    cmake -S examples/consumer -B "$work/$kind/project" -G Ninja -DCMAKE_PREFIX_PATH="$prefix"
    cmake --build "$work/$kind/project"
    run_consumer "$work/$kind/project/consumer"

    libdir=$(dirname "$(dirname "$(find "$prefix" -name zef.pc)")")
    export PKG_CONFIG_PATH="$libdir/pkgconfig"
    # shellcheck disable=SC2046 # lists of words
    g++ -std=c++17 -Wall -Wextra -Werror examples/consumer/main.cpp -o "$work/$kind/with_pkg_config" \
        $(pkg-config --cflags --libs zef) -Wl,-rpath,"$libdir"
    run_consumer "$work/$kind/with_pkg_config"
done
