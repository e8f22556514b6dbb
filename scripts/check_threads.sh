#!/bin/sh
# The tests that start workers, under the thread sanitizer.
lane="thread sanitizer"
. "$(dirname "$0")/lane.sh"

threaded='WorkerPool|sortMT|SortMT|Progress|PageWarmer|reconstruct|Voro|CellIndex|RTree|Smooth|HilbertSort|Iso|TopMelt'
scripts/install_deps.sh clang libclang-rt-14-dev
cmake --preset tsan
cmake --build --preset tsan --target zef_tests
ZEF_THREADS=4 ctest --preset tsan --tests-regex "$threaded"
