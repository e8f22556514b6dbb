#!/bin/sh
# test.sh [PRESET]: installs what is missing, builds everything, and runs all tests. The preset is release if
# none is named; or dev, clang, asan, tsan.
preset=${1:-release}
lane="all tests, preset $preset"
. "$(dirname "$0")/lane.sh"

case $preset in
clang) scripts/install_deps.sh clang ;;
asan | tsan) scripts/install_deps.sh clang libclang-rt-14-dev ;;
*) scripts/install_deps.sh ;;
esac
cmake --preset "$preset"
cmake --build --preset "$preset"
ctest --preset "$preset"
