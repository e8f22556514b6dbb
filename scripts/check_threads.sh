#!/bin/sh
# The tests that start workers, under the thread sanitizer.
lane="thread sanitizer"
. "$(dirname "$0")/lane.sh"

# Suites whose code runs on the workers, or is told how far it is by them.
threaded='^(WorkerPool|Parallel|SortMT|HilbertSort|Progress|Counters|Reconstruct|Melt|PostProcessing)'
threaded="$threaded|^(CloudIntake|Voro|IsoStore|Smooth|Octree|RTree|EdgeFlips|Reduce|RMesh|Top(Orient|Run|Melt))"
scripts/install_deps.sh clang libclang-rt-14-dev
cmake --preset tsan
cmake --build --preset tsan --target zef_tests
ZEF_THREADS=4 ctest --preset tsan --tests-regex "$threaded"
