#!/bin/sh
# test.sh [PRESET]: installs what is missing, builds everything, and runs all tests. The preset is release if
# none is named; or dev, clang, asan, tsan. ctest gives each test a process of its own; with the release preset they
# run once more in one process, in an order of chance, which no test may notice,
# and the tests of the Python module follow.
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
if [ "$preset" = release ]; then
    ZEF_RANDOM_INPUTS=200 build/release/bin/zef_tests --gtest_shuffle --gtest_brief=1 >"$scratch/log" || {
        grep -E "random seed|FAILED|Failure" -A 8 "$scratch/log"
        exit 1
    }
    scripts/check_python.sh
fi
