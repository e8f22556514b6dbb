#!/bin/sh
# check_random.sh [NUMBER] [FIRST]: small clouds and soups of chance keep every promise: 100,000 of each if no number is
# told, from number 0 on. A failure names its input; with that one as FIRST and NUMBER 1 it comes again.
number=${1:-100000}
first=${2:-0}
lane="random input, $number of each from $first on"
. "$(dirname "$0")/lane.sh"

cmake --preset release >/dev/null
cmake --build --preset release --target zef_tests
ZEF_RANDOM_INPUTS=$number ZEF_RANDOM_FIRST=$first build/release/bin/zef_tests --gtest_filter='RandomInput.*'
