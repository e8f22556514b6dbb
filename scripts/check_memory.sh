#!/bin/sh
# check_memory.sh [NUMBER]: lets requests for memory fail inside every public call, with one thread and two, under the
# address sanitizer: each request in turn on small inputs, NUMBER of them (1000 if not given) on larger ones. The call
# must end with std::bad_alloc or its usual result, leak nothing, and leave the next call as it always is. Takes about
# an hour; the tests do a small part of it each time.
num=${1:-1000}
lane="failing memory, $num places a call"
. "$(dirname "$0")/lane.sh"

scripts/install_deps.sh clang libclang-rt-14-dev
cmake --preset asan
cmake --build --preset asan --target zef_memory_tests
ZEF_MEMORY_FAILURES=$num build/asan/bin/zef_memory_tests
